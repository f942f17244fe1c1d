#!/bin/sh
# Builds the fuzz targets with clang (libFuzzer, AddressSanitizer,
# UndefinedBehaviorSanitizer) in build-fuzz and runs each for SECONDS.
#   fuzz/run.sh [SECONDS]      default 60
# Seeds: the listings and executables of the end-to-end cases and the
# example, executables compiled from the tests' C step functions, and, for
# the listing, the executables whose node's code the cases read. Any crash,
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

status=0
run() { # target corpus max-len [libFuzzer options...]
    target=$1 corpus=$2 max_len=$3
    shift 3
    echo "Fuzzing $target for $seconds s"
    (cd "$dir/artifacts" &&
        "$dir/fuzz/$target" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2048 -max_len="$max_len" \
            -print_final_stats=1 -artifact_prefix="$dir/artifacts/$target-" "$@" \
            "$dir/corpus/$corpus" "$seeds/$corpus" >"$dir/$target.log" 2>&1) || {
        echo "FAIL: $target (see $dir/$target.log and $dir/artifacts)"
        tail -n 40 "$dir/$target.log"
        status=1
    }
    grep -E '^stat::(number_of_executed_units|new_units_added|peak_rss_mb)' "$dir/$target.log" || true
}
run fuzz_listing listing 8192 -dict="$top/fuzz/listing.dict"
run fuzz_executable executable 4096
exit $status
