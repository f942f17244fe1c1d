% counter_step: one step of a counter node (see counter.c)
10000480: <counter_step>: lwz r9,0(r3)
10000484: <counter_step+4>: addi r9,r9,1
10000488: <counter_step+8>: stw r9,0(r3)
1000048c: <counter_step+12>: bclr 20,0
