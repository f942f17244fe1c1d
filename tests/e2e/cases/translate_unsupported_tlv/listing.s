10000000: <node>: ori r3,r3,1
10000004: <node+4>: mtspr 8,r0
10000008: <node+8>: mfspr r0,8
1000000c: <node+12>: stmw r30,8(r1)
10000010: <node+16>: lmw r30,8(r1)
