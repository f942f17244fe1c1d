% Mnemonics beyond the listing format's table: cmp and cmpl compare like
% cmpi and cmpli with a register; lbz, xor and bcctrl assign nothing, but
% their path conditions are still taken.
10000000: <node>: cmp 7,r3,r4
10000004: <node+4>: cmpl 0,r4,r3
10000008: <node+8>: lbz r5,0(r3)
1000000c: <node+12>: bc 12,28,<node+16>
10000010: <node+16>: bc 12,1,<node+20>
10000014: <node+20>: xor r6,r3,r4
10000018: <node+24>: bcctrl 20,0
1000001c: <node+28>: stw r3,0(r9)
