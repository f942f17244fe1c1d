100: <node+0>: lwzu r9,24(r9)
104: <node+4>: stw r9,0(r3)
108: <node+8>: bclr 20,0
