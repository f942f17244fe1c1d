# The node's structure nests 1,000 levels deep by value: level i holds an
# int at 0 and level i+1 at 4, so the ints lie at 0, 4, ..., 3996.
awk 'BEGIN {
    depth = 1000
    print "unit node.c\n  typedef S struct l0"
    for (i = 0; i < depth; i++) {
        print "  struct l" i " size " 4 * (depth - i)
        print "    member v int at 0"
        if (i + 1 < depth)
            print "    member in struct l" i + 1 " at 4"
        print "  end"
    }
    print "  subroutine step\n    parameter s pointer S\n  end\nend"
}' > node.dwarf
"$MKDWARF" node.dwarf exe
printf '10000000: <step>: stw r4,3996(r3)\n' > listing.s
