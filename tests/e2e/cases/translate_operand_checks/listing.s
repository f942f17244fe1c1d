10000000: <node>: addi r3,r0
10000004: <node+4>: cmpi 8,r3,0
10000008: <node+8>: bc 12,32,<node+16>
1000000c: <node+12>: rlwinm r4,r3,0,16,32
10000010: <node+16>: rlwinm r4,r3
10000014: <node+20>: cmpli r9,r3,0
10000018: <node+24>: b
1000001c: <node+28>: stw r3,0(r9)
