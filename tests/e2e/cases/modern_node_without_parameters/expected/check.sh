# Nothing is mapped: the mapping section holds the driver's line alone, and
# no cell is asserted unchanged.
mapping=$(sed -n '/BEGIN-MAPPING/,/END-MAPPING/p' a_stdout0)
expected='%BEGIN-MAPPING
ASSERT r3=C_;
%END-MAPPING'
[ "$mapping" = "$expected" ] || { echo "mapping section:"; echo "$mapping"; exit 1; }
if grep -q 'addVARS' a_stdout0; then echo "a preservation line"; exit 1; fi
