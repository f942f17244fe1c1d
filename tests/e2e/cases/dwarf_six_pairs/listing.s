10000000: <step>: mfspr r0,8
