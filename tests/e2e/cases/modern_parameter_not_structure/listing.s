10000400: <step>: lwz r9,0(r3)
10000404: <step+4>: stw r9,4(r3)
10000408: <step+8>: bclr 20,0
