10000000: <node>: rlwinm. r4,r3,0,16,31
10000004: <node+4>: bc 12,2,<node+12>
10000008: <node+8>: stw r4,0(r9)
1000000c: <node+12>: bclr 20,0
