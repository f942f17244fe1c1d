100: <node+0>: cmpi 7,r4,0
104: <node+4>: addi r2,r5,-4
108: <node+8>: bc 12,30,<node+16>
10c: <node+12>: neg r0,r2
110: <node+16>: andc r6,r0,r2
114: <node+20>: rlwinm r7,r6,0,0,0
118: <node+24>: stw r7,0(r3)
11c: <node+28>: bclr 20,0
