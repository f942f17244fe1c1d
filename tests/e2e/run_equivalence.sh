#!/usr/bin/env bash
# Runs velcor on one equivalence case: the same structure described twice,
# once by the cross compiler (DWARF 2, 4 and the default 5, each at -O0,
# -O1, -O2 and -Os) and once in DWARF 1 by the test-executable builder. For
# every output syntax, the output file with the compiled executable must be
# the one with the DWARF 1 executable, byte for byte.
#
# A case directory holds node.c (the unit node.c, its node "step"),
# node.dwarf (the DWARF 1 description of the same types) and listing.s.
#   run_equivalence.sh VELCOR MKDWARF CASE_DIR
set -u
velcor=$1
builder=$2
case_dir=$3
. "$(dirname "$0")/cross_compile.sh"
skip_without_cross_compiler

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$case_dir"/node.c "$case_dir"/node.dwarf "$case_dir"/listing.s "$work/"
cd "$work" || exit 1
"$builder" node.dwarf dwarf1.elf || { echo "builder failed on node.dwarf"; exit 1; }

failed=0
# run EXECUTABLE SYNTAX: velcor's output file, kept as out.EXECUTABLE.SYNTAX
run() {
    rm -f a_stdout0
    if ! "$velcor" listing.s -d "$1" -u node.c -n step "-$2" >stdout.txt 2>stderr.txt; then
        echo "FAIL: velcor -d $1 -$2 ended with status $?:"
        head -n 5 stderr.txt
        failed=1
        return 1
    fi
    mv a_stdout0 "out.$1.$2"
}

for syntax in cvc tlv ics; do
    run dwarf1.elf $syntax || exit 1
    grep -q 'MEM\[' "out.dwarf1.elf.$syntax" || { echo "FAIL: the DWARF 1 executable maps nothing"; exit 1; }
done
compiled=0
for level in -O0 -O1 -O2 -Os; do
    for format in -gdwarf-2 -gdwarf-4 -g; do
        # The compiler records the source's path as typed: relative for
        # some builds, absolute for others (the unit is then found by its
        # file name).
        source=node.c
        [ $((compiled % 2)) = 1 ] && source=$work/node.c
        compiled=$((compiled + 1))
        exe=exe$level$format
        compile_node "$source" "$exe" step "$level" "$format" || { echo "FAIL: $level $format does not compile"; exit 1; }
        for syntax in cvc tlv ics; do
            run "$exe" $syntax || continue
            if ! cmp -s "out.dwarf1.elf.$syntax" "out.$exe.$syntax"; then
                echo "FAIL: $level $format -$syntax differs from DWARF 1"
                diff -u "out.dwarf1.elf.$syntax" "out.$exe.$syntax" | head -n 40
                failed=1
            fi
        done
    done
done
[ "$failed" = 0 ] && echo "$compiled executables x 3 syntaxes: the same output as DWARF 1"
exit $failed
