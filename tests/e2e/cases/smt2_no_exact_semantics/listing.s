10000000: <node>: mfspr r0,1
10000004: <node+4>: addi r3,r0,1
10000008: <node+8>: tw 31,r0,r0
1000000c: <node+12>: fadd. f1,f2,f3
10000010: <node+16>: bclr 20,0
