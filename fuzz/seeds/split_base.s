% A base register that is one of two values after a diamond, and stores on
% the stack.
10000000: <step>: cmpi 0,r4,0
10000004: <step+4>: bc 12,2,<step+16>
10000008: <step+8>: or r9,r3,r3
1000000c: <step+12>: b <step+20>
10000010: <step+16>: or r9,r5,r5
10000014: <step+20>: stw r4,4(r9)
10000018: <step+24>: lwz r6,8(r9)
1000001c: <step+28>: stwu r6,-16(r1)
10000020: <step+32>: stw r6,8(r1)
10000024: <step+36>: bclr 20,0
