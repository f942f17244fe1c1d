10000000: <step>: mfspr r3,8
