10000000: <node>: stw r0,8(r1)
10000004: <node+4>: stw r0,-4(r1)
10000008: <node+8>: stw r5,8(r9)
1000000c: <node+12>: lwz r9,0(r10)
10000010: <node+16>: stw r5,8(r9)
10000014: <node+20>: addi r9,r3,8
10000018: <node+24>: stw r5,8(r9)
