% counter_step (counter.c): r3 points to the counter's state
% r9 = count + 1, r0 = next - bounds.high; past the bound, r9 = bounds.low
10000480: <counter_step>: lwz r9,0(r3)
10000484: <counter_step+4>: lwz r0,8(r3)
10000488: <counter_step+8>: addi r9,r9,1
1000048c: <counter_step+12>: subf r0,r0,r9
10000490: <counter_step+16>: cmpi 0,r0,0
10000494: <counter_step+20>: bc 4,1,<counter_step+36>
10000498: <counter_step+24>: lwz r9,4(r3)
1000049c: <counter_step+28>: addi r0,r0,1
100004a0: <counter_step+32>: stw r0,12(r3)
100004a4: <counter_step+36>: stw r9,0(r3)
100004a8: <counter_step+40>: bclr 20,0
