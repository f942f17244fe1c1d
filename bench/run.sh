#!/bin/sh
# Benchmark: builds velcor (the default optimized build) and the benchmark
# tools in build-bench, generates step-function listings of 1,000, 5,000,
# 10,000 and 50,000 lines with their node's executable, runs velcor on each
# and prints one table row per size.
#   bench/run.sh [SIZES...]     e.g. bench/run.sh 1000 100000
# Each size runs three times; the row shows the median wall time and the
# largest peak resident memory of the three.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
dir=$top/build-bench
jobs=$(nproc 2>/dev/null || echo 2)
[ "$jobs" -gt 2 ] && jobs=2
sizes=${*:-1000 5000 10000 50000}

cmake -S "$top" -B "$dir" -DVELCOR_TESTS=OFF >/dev/null
cmake --build "$dir" -j "$jobs" --target velcor mkdwarf gen_listing measure >/dev/null

work=$dir/runs
mkdir -p "$work"
printf '%8s %10s %14s %10s %14s %14s\n' lines "wall (s)" "s/1000 lines" "peak (MB)" "a_stdout0 (B)" "growth"
previous_lines=""
previous_time=""
for lines in $sizes; do
    case_dir=$work/$lines
    mkdir -p "$case_dir"
    "$dir/bench/gen_listing" "$lines" "$case_dir/step.s" "$case_dir/node.dwarf"
    "$dir/tools/mkdwarf" "$case_dir/node.dwarf" "$case_dir/node.elf"
    results=""
    for attempt in 1 2 3; do
        result=$(cd "$case_dir" && "$dir/bench/measure" stdout stderr "$dir/velcor" step.s -d node.elf -u node.c -n step -cvc)
        set -- $result
        if [ "$3" != 0 ]; then
            echo "velcor failed on $lines lines (status $3); see $case_dir/stderr" >&2
            exit 1
        fi
        results="$results$1 $2
"
    done
    time=$(printf '%s' "$results" | sort -n | sed -n 2p | cut -d' ' -f1)
    peak_kb=$(printf '%s' "$results" | sort -n -k2 | tail -n 1 | cut -d' ' -f2)
    bytes=$(wc -c <"$case_dir/a_stdout0" | tr -d ' ')
    growth=""
    if [ -n "$previous_lines" ]; then
        growth=$(awk -v l="$lines" -v pl="$previous_lines" -v t="$time" -v pt="$previous_time" \
            'BEGIN { if (pt > 0) printf "x%.1f for x%.1f", t / pt, l / pl; else printf "-" }')
    fi
    awk -v l="$lines" -v t="$time" -v k="$peak_kb" -v b="$bytes" -v g="$growth" \
        'BEGIN { printf "%8d %10.3f %14.4f %10.1f %14d %14s\n", l, t, t * 1000 / l, k / 1024, b, g }'
    previous_lines=$lines
    previous_time=$time
done
