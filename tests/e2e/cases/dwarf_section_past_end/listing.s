10000000: <f>: mfspr r0,8
