#!/bin/sh
# Builds the fuzz targets with clang (libFuzzer, AddressSanitizer,
# UndefinedBehaviorSanitizer) in build-fuzz and runs each for SECONDS.
#   fuzz/run.sh [SECONDS]      default 60
# Seeds: the listings and executables of the end-to-end cases and the
# example, executables compiled from the tests' C step functions, and, for
# the listing, the executables whose node's code the cases read and the code
# of the instruction checks. Any crash,
# sanitizer report, leak, timeout or memory blow-up
# fails the script; the input that caused it is left in build-fuzz/artifacts.
set -eu
seconds=${1:-60}
top=$(cd "$(dirname "$0")/.." && pwd)
dir=$top/build-fuzz
jobs=$(nproc 2>/dev/null || echo 2)
[ "$jobs" -gt 2 ] && jobs=2

cmake -S "$top" -B "$dir" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DVELCOR_FUZZ=ON -DVELCOR_TESTS=OFF >/dev/null
cmake --build "$dir" -j "$jobs" --target fuzz_listing fuzz_executable mkdwarf

# Seed corpora, made afresh; what a run adds stays in the corpus directory.
seeds=$dir/seeds
rm -rf "$seeds"
mkdir -p "$seeds/listing" "$seeds/executable" "$dir/corpus/listing" "$dir/corpus/executable" "$dir/artifacts"
n=0
for listing in "$top"/tests/e2e/cases/*/*.s "$top"/examples/*.s "$top"/fuzz/seeds/*.s; do
    [ -f "$listing" ] || continue
    n=$((n + 1))
    cp "$listing" "$seeds/listing/$n.s"
done
# The code of the instruction checks, one listing a file, for the exact
# syntax (branches left out: their targets are offsets within one check).
for checks in "$top"/tests/semantic/instructions/*.checks; do
    [ -f "$checks" ] || continue
    n=$((n + 1))
    awk '$1 == "code" && $0 !~ /</ {
        sub(/^ *code +/, "")
        printf "%08x: <node+%d>: %s\n", 268435456 + offset, offset, $0
        offset += 4
    }' "$checks" >"$seeds/listing/$n.s"
done
# Executables given as the listing: the node's code is read from them.
for description in "$top"/tests/e2e/cases/executable_*/prog.dwarf; do
    [ -f "$description" ] || continue
    n=$((n + 1))
    "$dir/tools/mkdwarf" "$description" "$seeds/listing/$n.elf" 2>/dev/null || true
done
if command -v powerpc-linux-gnu-as >/dev/null 2>&1 && command -v powerpc-linux-gnu-ld >/dev/null 2>&1; then
    for source in "$top"/tests/e2e/cases/*/*.asm; do
        [ -f "$source" ] || continue
        n=$((n + 1))
        powerpc-linux-gnu-as -mregnames -o "$seeds/$n.o" "$source" &&
            powerpc-linux-gnu-ld -e step -o "$seeds/listing/$n.elf" "$seeds/$n.o" || true
        rm -f "$seeds/$n.o"
    done
fi
for description in "$top"/tests/e2e/cases/*/*.dwarf "$top"/examples/*.dwarf "$top"/fuzz/seeds/*.dwarf; do
    [ -f "$description" ] || continue
    n=$((n + 1))
    # Descriptions of deliberately broken files are seeds as well; one the
    # builder refuses is simply left out.
    "$dir/tools/mkdwarf" "$description" "$seeds/executable/$n.elf" 2>/dev/null || true
done
# Executables with DWARF 2, 4 and 5 compiled from the tests' C step
# functions, where the cross compiler is installed.
. "$top/tests/e2e/cross_compile.sh"
if command -v "$CROSS_CC" >/dev/null 2>&1; then
    for source in "$top"/tests/e2e/equivalence/*/node.c "$top"/tests/e2e/cases/modern_*/node.c; do
        [ -f "$source" ] || continue
        for format in -gdwarf-2 -gdwarf-4 -g; do
            n=$((n + 1))
            # Compiled as "node.c", the unit's name that the target tries
            # (a node that is not external links with a warning: quiet).
            (cd "$seeds" && cp "$source" node.c &&
                compile_node node.c "executable/$n.elf" step -O1 "$format" 2>/dev/null) || true
        done
    done
    rm -f "$seeds/node.c"
else
    echo "No $CROSS_CC: the executable is fuzzed without DWARF 2 to 5 seeds"
fi
for executable in "$top"/tests/e2e/cases/*/exe; do
    [ -f "$executable" ] || continue
    n=$((n + 1))
    cp "$executable" "$seeds/executable/$n.elf"
done

# The targets choose the syntax (and the loop bound) from an input's size,
# so each seed goes in once for each choice, made longer by what changes
# nothing: a comment line before a listing (2, 3 or 5 bytes: every size
# modulo 4), zero bytes after an executable's contents.
for seed in "$seeds"/listing/*; do
    case $seed in
    *.s) for comment in % %. %...; do
             { printf '%s\n' "$comment"; cat "$seed"; } >"$seed.$comment"
         done ;;
    *) for extra in 1 2 3; do
           { cat "$seed"; head -c "$extra" /dev/zero; } >"$seed.$extra"
       done ;;
    esac
done
for seed in "$seeds"/executable/*; do
    for extra in 1 2 3 4 5; do
        { cat "$seed"; head -c "$extra" /dev/zero; } >"$seed.$extra"
    done
done

status=0
# CPU seconds (user and system) of the script's finished children so far
# (times in this shell itself: a subshell would count only its own).
child_seconds() {
    times >"$dir/times"
    awk 'NR == 2 {
        total = 0
        for (i = 1; i <= 2; i++) { split($i, part, "m"); total += part[1] * 60 + part[2] }
        printf "%.2f\n", total }' "$dir/times"
}
# The CPU seconds between the counts in cpu0 and cpu1.
cpu_since() { awk 'NR == FNR { start = $1; next } { print $1 - start }' "$dir/cpu0" "$dir/cpu1"; }
now() { date +%s.%N; }
# final_stat NAME: a value of the fuzzer's final statistics in $log.
final_stat() { awk -v name="stat::$1:" '$1 == name { print $2 }' "$log"; }
# rate COUNT SECONDS: executions per second, as a whole number.
rate() { awk -v count="$1" -v seconds="$2" 'BEGIN { printf "%d", (seconds > 0 ? count / seconds : 0) }'; }
run() { # target corpus max-len [libFuzzer options...]
    target=$1 corpus=$2 max_len=$3
    shift 3
    # Memory: 512 MB at most, and no single allocation above it (the
    # fuzzer's malloc limit follows the RSS limit). Time: the targets bound
    # the work of one input, so 10 s is a hang.
    limits="-timeout=10 -rss_limit_mb=512 -max_len=$max_len"
    log=$dir/$target.log

    # The seed corpus alone, each input run three times in a row.
    seeds_n=$(ls "$seeds/$corpus" | wc -l)
    child_seconds >"$dir/cpu0"
    t0=$(now)
    (cd "$dir/artifacts" && "$dir/fuzz/$target" $limits -runs=3 "$@" "$seeds/$corpus"/* >"$log.seeds" 2>&1) || {
        echo "FAIL: $target on its seeds (see $log.seeds)"
        tail -n 40 "$log.seeds"
        status=1
        return
    }
    t1=$(now)
    child_seconds >"$dir/cpu1"
    count=$((seeds_n * 3))
    wall=$(awk -v a="$t0" -v b="$t1" 'BEGIN { print b - a }')
    cpu=$(cpu_since)
    echo "$target: seeds: $count executions, $(rate "$count" "$wall") exec/s ($(rate "$count" "$cpu") per CPU second)"

    echo "Fuzzing $target for $seconds s"
    child_seconds >"$dir/cpu0"
    (cd "$dir/artifacts" &&
        "$dir/fuzz/$target" -max_total_time="$seconds" $limits -print_final_stats=1 \
            -artifact_prefix="$dir/artifacts/$target-" "$@" \
            "$dir/corpus/$corpus" "$seeds/$corpus" >"$log" 2>&1) || {
        echo "FAIL: $target (see $log and $dir/artifacts)"
        tail -n 40 "$log"
        status=1
    }
    child_seconds >"$dir/cpu1"
    count=$(final_stat number_of_executed_units)
    [ -n "$count" ] || return 0
    cpu=$(cpu_since)
    echo "$target: $count executions, $(final_stat average_exec_per_sec) exec/s ($(rate "$count" "$cpu") per CPU" \
        "second), peak RSS $(final_stat peak_rss_mb) MB, $(final_stat new_units_added) new units," \
        "slowest $(final_stat slowest_unit_time_sec) s"
}
run fuzz_listing listing 8192 -dict="$top/fuzz/listing.dict"
run fuzz_executable executable 4096
exit $status
