100004a0: <main+8>: stwu r1,-32(r1)
