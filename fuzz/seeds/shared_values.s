% Values that share their parts: doubling chains, conditionals over them,
% and bit selections that copy conditionals.
10000000: <step>: lwz r3,0(r3)
10000004: <step+4>: add r3,r3,r3
10000008: <step+8>: add r3,r3,r3
1000000c: <step+12>: add r3,r3,r3
10000010: <step+16>: cmpi 0,r3,4
10000014: <step+20>: bc 12,2,<step+32>
10000018: <step+24>: add r3,r3,r3
1000001c: <step+28>: andc r4,r3,r3
10000020: <step+32>: rlwinm r5,r3,0,31,31
10000024: <step+36>: rlwinm r6,r4,1,0,0
10000028: <step+40>: stw r5,4(r9)
1000002c: <step+44>: stw r3,8(r3)
10000030: <step+48>: bclr 20,0
