% r5 = 7 + 7 + 7: the loop goes round three times
10000000: <node>: addi r4,r0,3
10000004: <node+4>: addi r5,r0,0
10000008: <node+8>: addi r5,r5,7
1000000c: <node+12>: addi r4,r4,-1
10000010: <node+16>: cmpi 0,r4,0
10000014: <node+20>: bc 4,2,<node+8>
10000018: <node+24>: stw r5,0(r3)
1000001c: <node+28>: bclr 20,0
