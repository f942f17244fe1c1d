printf "the output of an earlier run\n" | cmp - obligations.cvc || { echo "obligations.cvc changed"; exit 1; }
left=$(ls -A | grep -v -x -e args -e listing.s -e exe.dwarf -e exe -e setup.sh -e obligations.cvc \
    -e stdout.actual -e stderr.actual)
[ -z "$left" ] || { echo "left behind: $left"; exit 1; }
