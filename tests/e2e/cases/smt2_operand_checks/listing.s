10000000: <node>: lwz r3,40000(r4)
10000004: <node+4>: add r3,r4,5
10000008: <node+8>: cmpi 8,r3,0
1000000c: <node+12>: stw r3
10000010: <node+16>: lwzu r3,4(r3)
10000014: <node+20>: b <node+6>
10000018: <node+24>: bclr 20,0
