# A step function of 980 blocks of 51 lines (49,980 lines), then the return:
# each block reads two fields, tests their sum against 100 in a diamond that
# writes a third field either way, writes a fourth after the join, and
# works on a stack slot. 980 branch propositions; the registry holds 999.
# The executable's structure has the 3,920 int fields the blocks use.
. "${0%/*}/../../scale_support.sh"
awk 'BEGIN {
    blocks = 980
    n = 0
    for (j = 0; j < blocks; j++) {
        a = 16 * j
        base = n
        line("lwz r9," a "(r3)")
        line("lwz r10," a + 4 "(r3)")
        line("add r11,r9,r10")
        line("cmpi 0,r11,100")
        line("bc 4,1,<step+" 4 * (base + 8) ">")
        line("addi r12,r11,-100")
        line("stw r12," a + 8 "(r3)")
        line("b <step+" 4 * (base + 11) ">")
        line("subf r12,r11,r9")
        line("stw r12," a + 8 "(r3)")
        line("addi r12,r12,1")
        line("stw r12," a + 12 "(r3)")
        for (k = 0; k < 13; k++) {
            line("lwz r5," a "(r3)")
            line("mulli r5,r5," k + 2)
            line("stw r5,16(r1)")
        }
    }
    line("bclr 20,0")
    print "  typedef S struct s\n  struct s size " 16 * blocks
    for (f = 0; f < 4 * blocks; f++)
        print "    member f" f " int at " 4 * f
    print "  end"
}
function line(text) {
    printf "%08x: <step+%d>: %s\n", 268435456 + 4 * n, 4 * n, text > "listing.s"
    n++
}' | scale_node
