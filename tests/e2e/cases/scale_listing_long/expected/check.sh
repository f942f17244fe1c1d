# Counts by section: the two fields each block only reads keep their value
# (1,960 preservation lines); the transition sets the two it writes (1,960
# cells); 980 propositions and their 980 ties; each of the 3,920 fields is
# mapped, primed and unprimed. In the last block (fields at 15664 to 15676)
# the third field is set under NOT p980 last, and the fourth, stored after
# the join, holds the register that the else side incremented. Standard
# error has one line per tie, then the return's.
awk '
/^%BEGIN-ASSERTS/ { section = "asserts" }
/^%----------------Proposition Values/ { section = "propositions" }
/^%BEGIN-UNEQUALITIES/ { section = "unequalities" }
/^%BEGIN-MAPPING/ { section = "mapping" }
/^%END-/ { section = "" }
section == "asserts" && /^ %FORM addVARS$/ { preserved++ }
section == "asserts" && /^(ASSERT )?PMEM\[[0-9]+\+r3\] = \(IF / { written++ }
section == "asserts" && /^ASSERT PMEM\[15672\+r3\] = \(IF \( NOT p980\) THEN $/ { last_diamond++ }
section == "asserts" && /^ASSERT PMEM\[15676\+r3\] = \(IF \( NOT p980\) THEN $/ { last_join++ }
section == "propositions" && /^ASSERT p[0-9]+=/ { propositions++ }
section == "unequalities" && /^ASSERT / { ties++ }
section == "mapping" && /^ASSERT MEM\[[0-9]+\+C_\]=MEM\[[0-9]+\+r3\];$/ { mapped++ }
section == "mapping" && /^ASSERT PMEM\[[0-9]+\+C_\]=PMEM\[[0-9]+\+r3\];$/ { mapped_primed++ }
END {
    got = preserved + 0 " " written + 0 " " last_diamond + 0 " " last_join + 0
    got = got " " propositions + 0 " " ties + 0 " " mapped + 0 " " mapped_primed + 0
    want = "1960 1960 1 1 980 980 3920 3920"
    if (got == want) exit 0
    print "preserved, written, last diamond, last join, propositions, ties, mapped, primed:"
    print got ", expected " want; exit 1
}' a_stdout0 || exit 1
awk '
$0 == "AddAssertion here 1" && !returned { ties++; next }
$0 == "AAAAAA!!!!" && !returned { returned = 1; next }
{ other++ }
END {
    if (ties != 980 || !returned || other) { print "standard error: " ties + 0 " ties, return " returned + 0 ", " other + 0 " other lines"; exit 1 }
}' stderr.actual
