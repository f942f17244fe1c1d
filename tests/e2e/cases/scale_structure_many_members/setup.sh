# The node's structure has 5,000 ints, at 0, 4, ..., 19996.
. "${0%/*}/../../scale_support.sh"
awk 'BEGIN {
    print "  typedef S struct s\n  struct s size 20000"
    for (i = 0; i < 5000; i++)
        print "    member m" i " int at " 4 * i
    print "  end"
}' | scale_node '10000000: <step>: lwz r9,0(r3)' '10000004: <step+4>: stw r9,19996(r3)'
