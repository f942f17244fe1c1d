10000000: <node>: addi r3,r0,1
10000004: <node+4>: b <node>
10000008: <node+8>: bc 12,2,<node+8>
1000000c: <node+12>: bl <helper>
10000010: <node+16>: stw r3,0(r9)
