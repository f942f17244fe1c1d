# A chain of 300 structures through pointers: level i holds an int at 0 and
# a pointer to level i+1 at 4; level 300 holds the int only.
. "${0%/*}/../../scale_support.sh"
awk 'BEGIN {
    print "  typedef S struct p0"
    for (i = 0; i <= 300; i++) {
        print "  struct p" i " size 8\n    member v int at 0"
        if (i < 300)
            print "    member next pointer struct p" i + 1 " at 4"
        print "  end"
    }
}' | scale_node '10000000: <step>: lwz r9,4(r3)' '10000004: <step+4>: stw r4,0(r9)'
