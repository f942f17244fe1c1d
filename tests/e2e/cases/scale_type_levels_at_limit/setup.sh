# The parameter's type S reaches int through 10,000 typedefs (T0 to T9999):
# 10,000 nested type levels, the most the walk follows.
awk 'BEGIN {
    levels = 10000
    print "unit node.c\n  typedef S T0"
    for (i = 0; i + 1 < levels; i++)
        print "  typedef T" i " T" i + 1
    print "  typedef T" levels - 1 " int"
    print "  subroutine step\n    parameter s pointer S\n  end\nend"
}' > node.dwarf
"$MKDWARF" node.dwarf exe
printf '10000000: <step>: stw r4,0(r3)\n' > listing.s
