# One pair for each of the 1,000 ints, primed and unprimed, at the offsets
# 0, 4, ..., 3996; all but the stored one keep their value.
awk '
/^ASSERT MEM\[[0-9]+\+C_\]=MEM\[[0-9]+\+r3\];$/ {
    split($0, parts, /[[+]/)
    offset = parts[2]
    if ($0 != "ASSERT MEM[" offset "+C_]=MEM[" offset "+r3];" || offset % 4 || offset > 3996 || seen[offset]++)
        { print "unexpected pair: " $0; bad = 1 }
    pairs++
}
/^ASSERT PMEM\[[0-9]+\+C_\]=PMEM\[[0-9]+\+r3\];$/ { primed++ }
/^ %FORM addVARS$/ { preserved++ }
END {
    if (pairs != 1000 || primed != 1000 || preserved != 999) {
        print pairs + 0 " pairs, " primed + 0 " primed, " preserved + 0 " preserved"; bad = 1
    }
    exit bad
}' a_stdout0
