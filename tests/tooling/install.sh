#!/bin/sh
# Installs the build into a temporary prefix and runs the installed program
# on the bundled example.
#   install.sh BUILD_DIR SOURCE_DIR MKDWARF VELCOR
# The prefix must receive the programs and the manual page and nothing else;
# the installed program must answer --help and write, for the example, the
# same complete output file as the program of the build tree.
set -eu
build=$1 source=$2 mkdwarf=$3 velcor=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "FAIL: $*"; exit 1; }

prefix=$scratch/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
installed=$(cd "$prefix" && find . ! -type d | sort)
[ "$installed" = "./bin/velcor
./bin/velcor-disasm
./share/man/man1/velcor.1" ] || fail "installed files:
$installed"
[ -x "$prefix/bin/velcor" ] || fail "bin/velcor is not executable"
[ -x "$prefix/bin/velcor-disasm" ] || fail "bin/velcor-disasm is not executable"
cmp -s "$build/velcor.1" "$prefix/share/man/man1/velcor.1" || fail "the installed manual page is not the built one"

"$prefix/bin/velcor" --help >"$scratch/help" || fail "installed velcor --help failed"
grep -q '^Usage: velcor ' "$scratch/help" || fail "installed velcor --help printed no usage"

sh "$source/examples/run.sh" "$prefix/bin/velcor" "$scratch/installed" "$mkdwarf" >/dev/null ||
    fail "the installed velcor failed on the example"
output=$scratch/installed/a_stdout0
for mark in BEGIN-COMMON-HEADER END-COMMON-HEADER BEGIN-ASSERTS END-ASSERTS BEGIN-UNEQUALITIES \
    END-UNEQUALITIES BEGIN-MAPPING END-MAPPING; do
    grep -q -x "%$mark" "$output" || fail "the example's output lacks %$mark"
done
[ "$(tail -n 2 "$output" | head -n 1)" = "%* ALL DONE! *" ] || fail "the example's output is not complete"

sh "$source/examples/run.sh" "$velcor" "$scratch/built" "$mkdwarf" >/dev/null
cmp -s "$output" "$scratch/built/a_stdout0" || fail "the installed and the built velcor differ on the example"
echo "installed into a temporary prefix; the installed velcor ran the example"
