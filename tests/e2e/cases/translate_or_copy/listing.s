10000000: <node>: or r5,r3,r3
10000004: <node+4>: or r6,r3,r4
10000008: <node+8>: stw r5,0(r9)
1000000c: <node+12>: stw r6,4(r9)
