# The node's structure nests 1,000 levels deep by value: level i holds an
# int at 0 and level i+1 at 4, so the ints lie at 0, 4, ..., 3996.
. "${0%/*}/../../scale_support.sh"
awk 'BEGIN {
    print "  typedef S struct l0"
    for (i = 0; i < 1000; i++) {
        print "  struct l" i " size " 4 * (1000 - i) "\n    member v int at 0"
        if (i + 1 < 1000)
            print "    member in struct l" i + 1 " at 4"
        print "  end"
    }
}' | scale_node '10000000: <step>: stw r4,3996(r3)'
