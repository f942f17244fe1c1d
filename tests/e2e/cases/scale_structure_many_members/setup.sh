# The node's structure has 5,000 ints, at 0, 4, ..., 19996.
awk 'BEGIN {
    members = 5000
    print "unit node.c\n  typedef S struct s\n  struct s size " 4 * members
    for (i = 0; i < members; i++)
        print "    member m" i " int at " 4 * i
    print "  end\n  subroutine step\n    parameter s pointer S\n  end\nend"
}' > node.dwarf
"$MKDWARF" node.dwarf exe
printf '10000000: <step>: lwz r9,0(r3)\n10000004: <step+4>: stw r9,19996(r3)\n' > listing.s
