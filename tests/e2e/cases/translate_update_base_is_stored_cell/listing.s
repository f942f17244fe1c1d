100: <node+0>: stwu r5,-8(oldSP)
104: <node+4>: stw oldSP,0(r3)
108: <node+8>: bclr 20,0
