10000000: <node>: cntlzw r5,r3
10000004: <node+4>: rlwinm r4,r5,27,5,31
10000008: <node+8>: stw r4,0(r9)
1000000c: <node+12>: rlwinm r6,r7,27,5,31
10000010: <node+16>: stw r6,4(r9)
10000014: <node+20>: rlwinm r8,r7,0,16,31
10000018: <node+24>: stw r8,8(r9)
