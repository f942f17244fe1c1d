10000000: <node>: cmpi 7,r3,0
10000004: <node+4>: mfcr r0
10000008: <node+8>: rlwinm r4,r0,31,31,31
1000000c: <node+12>: stw r4,0(r9)
