# A chain of 300 structures through pointers: level i holds an int at 0 and
# a pointer to level i+1 at 4; level 300 holds the int only.
awk 'BEGIN {
    depth = 300
    print "unit node.c\n  typedef S struct p0"
    for (i = 0; i <= depth; i++) {
        print "  struct p" i " size 8"
        print "    member v int at 0"
        if (i < depth)
            print "    member next pointer struct p" i + 1 " at 4"
        print "  end"
    }
    print "  subroutine step\n    parameter s pointer S\n  end\nend"
}' > node.dwarf
"$MKDWARF" node.dwarf exe
printf '10000000: <step>: lwz r9,4(r3)\n10000004: <step+4>: stw r4,0(r9)\n' > listing.s
