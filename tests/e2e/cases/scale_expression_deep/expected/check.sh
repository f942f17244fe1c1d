# The stored value prints on one line: 50,000 opening parentheses, r3, and
# 50,000 times "+1)".
awk -v depth=50000 '
index($0, "ASSERT PMEM[0+r9]=") == 1 {
    found++
    value = substr($0, 19)
    if (value !~ /^\(+r3(\+1\))+$/) { print "value of the wrong shape"; bad = 1 }
    opening = gsub(/\(/, "(", value)
    steps = gsub(/\+1\)/, "+1)", value)
    if (opening != depth || steps != depth) { print "depth " opening "/" steps ", expected " depth; bad = 1 }
}
END {
    if (found != 1) { print found + 0 " lines for PMEM[0+r9], expected 1"; bad = 1 }
    exit bad
}' a_stdout0
