10000000: <node>: addi r3,r0,1
10000004: <node+4>: nop
