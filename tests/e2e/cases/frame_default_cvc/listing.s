10000000: <node>: mfspr r0,8
