% a comment line in column one
10000000: <node>: addi r3,r0,5
10000004 node+4: addi r4,r3,0
% another comment line
10000008: <node+8>: stw r3,0(r9)
