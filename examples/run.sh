#!/bin/sh
# Runs velcor on the bundled example: examples/run.sh VELCOR WORKDIR [MKDWARF]
# The example's executable is built first from its description counter.dwarf
# with the test-executable builder, by default the one of velcor's build tree.
# Then, when the cross compiler is installed, velcor reads the same node
# straight from an executable compiled from counter.c, and velcor-disasm
# (beside velcor) prints the listing it read.
set -eu
velcor=$1
work=$2
builder=${3:-$(dirname "$velcor")/tools/mkdwarf}
disasm=$(dirname "$velcor")/velcor-disasm
examples=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$work"
"$builder" "$examples/counter.dwarf" "$work/counter.elf"
cd "$work"
"$velcor" "$examples/counter.s" -d counter.elf -u counter.c -n counter_step -cvc >velcor.stdout 2>velcor.stderr
echo "velcor ran on examples/counter.s; output file: $work/a_stdout0 (progress lines: $work/velcor.stdout, traces: $work/velcor.stderr)"

if ! command -v powerpc-linux-gnu-gcc >/dev/null 2>&1; then
    echo "powerpc-linux-gnu-gcc (Debian gcc-powerpc-linux-gnu) is not installed: the compiled example is left out"
    exit 0
fi
mkdir -p compiled
cd compiled
# The node alone, without a C library: it is all the executable needs.
powerpc-linux-gnu-gcc -O1 -g -nostdlib -Wl,-e,counter_step -o counter "$examples/counter.c"
"$disasm" counter counter_step >counter.listing
"$velcor" counter -d counter -u counter.c -n counter_step -cvc >velcor.stdout 2>velcor.stderr
echo "velcor ran on the executable compiled from examples/counter.c; output file: $work/compiled/a_stdout0 (the code it read: $work/compiled/counter.listing)"
