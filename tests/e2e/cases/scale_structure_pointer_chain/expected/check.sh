# Level i's cells are named through i pointers: MEM[0+MEM[4+...MEM[4+C_]...]]
# on the source side, the same with r3 on the target side. 301 ints and 300
# pointers: 601 pairs, the deepest int's named through all 300 pointers.
awk '
BEGIN {
    source = "C_"; target = "r3"
    for (i = 0; i < 300; i++) { source = "MEM[4+" source "]"; target = "MEM[4+" target "]" }
    deepest = "ASSERT MEM[0+" source "]=MEM[0+" target "];"
}
/^ASSERT MEM\[.*C_.*\]=MEM\[.*r3.*\];$/ { pairs++ }
/^ASSERT PMEM\[.*C_.*\]=PMEM\[.*r3.*\];$/ { primed++ }
$0 == deepest { found++ }
END {
    if (pairs != 601 || primed != 601 || found != 1) {
        print pairs + 0 " pairs, " primed + 0 " primed, deepest found " found + 0 " times"; exit 1
    }
}' a_stdout0
