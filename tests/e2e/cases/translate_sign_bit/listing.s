10000000: <node>: neg r5,r3
10000004: <node+4>: andc r6,r5,r3
10000008: <node+8>: rlwinm r7,r6,1,31,31
1000000c: <node+12>: stw r7,0(r9)
10000010: <node+16>: andc r8,r4,r3
10000014: <node+20>: rlwinm r10,r8,1,31,31
10000018: <node+24>: stw r10,4(r9)
