#!/bin/sh
# Runs velcor on the bundled example: examples/run.sh VELCOR WORKDIR
set -eu
velcor=$1
work=$2
examples=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$work"
cd "$work"
"$velcor" "$examples/counter.s" -d "$examples/counter.elf" -u counter.c -n counter_step -cvc >velcor.stdout
echo "velcor ran on examples/counter.s; output file: $work/a_stdout0 (progress lines: $work/velcor.stdout)"
