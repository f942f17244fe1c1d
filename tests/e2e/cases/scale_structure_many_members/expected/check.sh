# One pair for each of the 5,000 ints, primed and unprimed, every offset
# once; all but the stored one keep their value.
awk '
/^ASSERT MEM\[[0-9]+\+C_\]=MEM\[[0-9]+\+r3\];$/ {
    split($0, parts, /[[+]/)
    offset = parts[2]
    if ($0 != "ASSERT MEM[" offset "+C_]=MEM[" offset "+r3];" || offset % 4 || offset > 19996 || seen[offset]++)
        { print "unexpected pair: " $0; bad = 1 }
    pairs++
}
/^ASSERT PMEM\[[0-9]+\+C_\]=PMEM\[[0-9]+\+r3\];$/ { primed++ }
/^ %FORM addVARS$/ { preserved++ }
END {
    if (pairs != 5000 || primed != 5000 || preserved != 4999) {
        print pairs + 0 " pairs, " primed + 0 " primed, " preserved + 0 " preserved"; bad = 1
    }
    exit bad
}' a_stdout0
