10000000: <node>: addi r3,r0,1
% trailing comment