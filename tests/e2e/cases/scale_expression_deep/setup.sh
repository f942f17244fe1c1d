# 50,000 additions to r3, then r3 stored: a value nested 50,000 deep, which
# the run builds, prints, compares and frees.
awk 'BEGIN {
    for (i = 0; i < 50000; i++)
        printf "%08x: <step+%d>: addi r3,r3,1\n", 268435456 + 4 * i, 4 * i
    printf "%08x: <step+%d>: stw r3,0(r9)\n", 268435456 + 4 * i, 4 * i
}' > listing.s
