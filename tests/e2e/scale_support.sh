# Shared by the generated scale cases: their setup.sh and expected/check.sh
# source this file and run in the case's working directory.

# The unit node.c with the declarations read from standard input and the
# node "step" taking a pointer to S, built into exe; the arguments, when
# given, are the lines of listing.s.
scale_node() {
    { echo "unit node.c"; cat; printf '  subroutine step\n    parameter s pointer S\n  end\nend\n'; } > node.dwarf
    "$MKDWARF" node.dwarf exe || exit 1
    [ $# = 0 ] || printf '%s\n' "$@" > listing.s
}

# S reaches int through $1 typedefs (T0 to T$1-1), stored to by the listing.
scale_typedef_chain() {
    awk -v levels="$1" 'BEGIN {
        print "  typedef S T0"
        for (i = 0; i + 1 < levels; i++)
            print "  typedef T" i " T" i + 1
        print "  typedef T" levels - 1 " int"
    }' | scale_node '10000000: <step>: stw r4,0(r3)'
}

# One pair for each of the $1 ints of the node's structure, primed and
# unprimed, at the offsets 0, 4, ..., each once; all but the stored one keep
# their value.
scale_check_int_pairs() {
    awk -v ints="$1" '
    /^ASSERT MEM\[[0-9]+\+C_\]=MEM\[[0-9]+\+r3\];$/ {
        split($0, parts, /[[+]/)
        offset = parts[2]
        if ($0 != "ASSERT MEM[" offset "+C_]=MEM[" offset "+r3];" || offset % 4 || offset >= 4 * ints || seen[offset]++)
            { print "unexpected pair: " $0; bad = 1 }
        pairs++
    }
    /^ASSERT PMEM\[[0-9]+\+C_\]=PMEM\[[0-9]+\+r3\];$/ { primed++ }
    /^ %FORM addVARS$/ { preserved++ }
    END {
        if (pairs != ints || primed != ints || preserved != ints - 1) {
            print pairs + 0 " pairs, " primed + 0 " primed, " preserved + 0 " preserved"; bad = 1
        }
        exit bad
    }' a_stdout0
}
