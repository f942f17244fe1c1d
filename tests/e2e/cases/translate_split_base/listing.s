10000000: <node>: cmpi 7,r3,0
10000004: <node+4>: bc 12,30,<node+12>
10000008: <node+8>: lwz r9,0(r10)
1000000c: <node+12>: stw r5,4(r9)
10000010: <node+16>: lwz r6,8(r9)
