#!/bin/sh
# Benchmark: builds velcor (the default optimized build) and the benchmark
# tools in build-bench, generates step-function listings of 1,000, 5,000,
# 10,000, 50,000 and 100,000 lines with their node's executable and the same
# code as assembler source, runs velcor on each listing and the cross objdump
# (-d -M raw) on the assembled code, side by side, and prints one table row
# per size.
#   bench/run.sh [SIZES...]     e.g. bench/run.sh 1000 200000
# Each size runs five times, velcor and objdump in turn; the row shows the
# median processor time (user + system) of each, their ratio, velcor's time
# per 1,000 lines, the largest peak resident memory of velcor's runs, the
# size of a_stdout0, and the growth of velcor's time against the growth of
# size; then, for the exact obligations, the median time of velcor -smt2,
# its ratio to the -cvc time, and the size of its output per listing line. Without the cross assembler and objdump (Debian
# binutils-powerpc-linux-gnu) the objdump columns show "-".
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
dir=$top/build-bench
jobs=$(nproc 2>/dev/null || echo 2)
[ "$jobs" -gt 2 ] && jobs=2
sizes=${*:-1000 5000 10000 50000 100000}
runs=5

cmake -S "$top" -B "$dir" -DVELCOR_TESTS=OFF >/dev/null
cmake --build "$dir" -j "$jobs" --target velcor mkdwarf gen_listing measure >/dev/null

assembler=powerpc-linux-gnu-as
objdump=powerpc-linux-gnu-objdump
cross=yes
if ! command -v "$assembler" >/dev/null 2>&1 || ! command -v "$objdump" >/dev/null 2>&1; then
    echo "($assembler or $objdump not found: objdump is not timed)"
    cross=no
fi

# The median of the numbers on standard input, one a line.
median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

work=$dir/runs
mkdir -p "$work"
printf '%8s %10s %10s %7s %14s %10s %14s %14s %9s %9s %11s\n' lines "velcor (s)" "objdump (s)" ratio "s/1000 lines" "peak (MB)" \
    "a_stdout0 (B)" "growth" "smt2 (s)" "smt2/cvc" "smt2 B/line"
previous_lines=""
previous_time=""
for lines in $sizes; do
    case_dir=$work/$lines
    mkdir -p "$case_dir"
    "$dir/bench/gen_listing" "$lines" "$case_dir/step.s" "$case_dir/node.dwarf" "$case_dir/step.asm"
    "$dir/tools/mkdwarf" "$case_dir/node.dwarf" "$case_dir/node.elf"
    if [ "$cross" = yes ]; then
        "$assembler" -mregnames -o "$case_dir/step.o" "$case_dir/step.asm"
    fi
    velcor_times=""
    objdump_times=""
    smt2_times=""
    peak_kb=0
    attempt=0
    while [ "$attempt" -lt "$runs" ]; do
        attempt=$((attempt + 1))
        result=$(cd "$case_dir" && "$dir/bench/measure" stdout stderr "$dir/velcor" step.s -d node.elf -u node.c -n step -cvc)
        set -- $result
        if [ "$3" != 0 ]; then
            echo "velcor failed on $lines lines (status $3); see $case_dir/stderr" >&2
            exit 1
        fi
        velcor_times="$velcor_times$4
"
        [ "$2" -gt "$peak_kb" ] && peak_kb=$2
        result=$(cd "$case_dir" && "$dir/bench/measure" smt2.stdout smt2.stderr "$dir/velcor" step.s -d node.elf -u node.c \
            -n step -smt2 -o step.smt2)
        set -- $result
        if [ "$3" != 0 ]; then
            echo "velcor -smt2 failed on $lines lines (status $3); see $case_dir/smt2.stderr" >&2
            exit 1
        fi
        smt2_times="$smt2_times$4
"
        if [ "$cross" = yes ]; then
            result=$(cd "$case_dir" && "$dir/bench/measure" objdump.out objdump.err "$objdump" -d -M raw step.o)
            set -- $result
            if [ "$3" != 0 ]; then
                echo "objdump failed on $lines lines (status $3); see $case_dir/objdump.err" >&2
                exit 1
            fi
            objdump_times="$objdump_times$4
"
        fi
    done
    time=$(printf '%s' "$velcor_times" | median)
    objdump_time=-
    ratio=-
    if [ "$cross" = yes ]; then
        objdump_time=$(printf '%s' "$objdump_times" | median)
        ratio=$(awk -v t="$time" -v o="$objdump_time" 'BEGIN { if (o > 0) printf "%.2f", t / o; else printf "-" }')
    fi
    bytes=$(wc -c <"$case_dir/a_stdout0" | tr -d ' ')
    smt2_time=$(printf '%s' "$smt2_times" | median)
    smt2_bytes=$(wc -c <"$case_dir/step.smt2" | tr -d ' ')
    growth=""
    if [ -n "$previous_lines" ]; then
        growth=$(awk -v l="$lines" -v pl="$previous_lines" -v t="$time" -v pt="$previous_time" \
            'BEGIN { if (pt > 0) printf "x%.1f for x%.1f", t / pt, l / pl; else printf "-" }')
    fi
    awk -v l="$lines" -v t="$time" -v o="$objdump_time" -v r="$ratio" -v k="$peak_kb" -v b="$bytes" -v g="$growth" \
        -v st="$smt2_time" -v sb="$smt2_bytes" \
        'BEGIN { printf "%8d %10.3f %10s %7s %14.4f %10.1f %14d %14s %9.3f %9.2f %11.1f\n", l, t, o, r, t * 1000 / l,
                 k / 1024, b, g, st, (t > 0 ? st / t : 0), sb / l }'
    previous_lines=$lines
    previous_time=$time
done
