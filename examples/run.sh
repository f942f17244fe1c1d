#!/bin/sh
# Runs velcor on the bundled example: examples/run.sh VELCOR WORKDIR [MKDWARF]
# The example's executable is built first from its description counter.dwarf
# with the test-executable builder, by default the one of velcor's build tree.
set -eu
velcor=$1
work=$2
builder=${3:-$(dirname "$velcor")/tools/mkdwarf}
examples=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$work"
"$builder" "$examples/counter.dwarf" "$work/counter.elf"
cd "$work"
"$velcor" "$examples/counter.s" -d counter.elf -u counter.c -n counter_step -cvc >velcor.stdout 2>velcor.stderr
echo "velcor ran on examples/counter.s; output file: $work/a_stdout0 (progress lines: $work/velcor.stdout, traces: $work/velcor.stderr)"
