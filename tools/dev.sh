#!/bin/sh
# Set-up, build and run for developers and CI, on a Debian machine.
#   tools/dev.sh example   build velcor (build-example/) and run it on the
#                          bundled example
#   tools/dev.sh check     build (build/) and run every test, then again under
#                          AddressSanitizer and UndefinedBehaviorSanitizer
#                          (build-sanitize/), then fuzz each target
#   tools/dev.sh build     build only (build/)
# The example and the check use build directories of their own, so neither
# finds the other's settings; the check fails when a pass runs no test.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
jobs=$(nproc 2>/dev/null || echo 2)

# Installs what the build needs when it is missing (as root, with apt-get).
install_missing() {
    missing=""
    command -v cmake >/dev/null 2>&1 || missing="$missing cmake"
    command -v g++ >/dev/null 2>&1 || missing="$missing g++"
    command -v make >/dev/null 2>&1 || missing="$missing make"
    command -v flex >/dev/null 2>&1 || missing="$missing flex"
    command -v bison >/dev/null 2>&1 || missing="$missing bison"
    command -v pkg-config >/dev/null 2>&1 || missing="$missing pkg-config"
    [ -f /usr/include/gtest/gtest.h ] || missing="$missing libgtest-dev"
    [ -f /usr/include/elfutils/libdw.h ] || missing="$missing libdw-dev"
    # The cross compiler and its binutils, for the compiled example and the
    # tests that compile step functions and compare with objdump; for the
    # check, also what the instruction checks need (python3 runs them, z3
    # and cvc5 decide them, qemu-ppc runs their code). Without them (and
    # without root to install them) those are left out, visibly.
    optional=""
    command -v powerpc-linux-gnu-gcc >/dev/null 2>&1 || optional="$optional gcc-powerpc-linux-gnu"
    command -v powerpc-linux-gnu-objdump >/dev/null 2>&1 || optional="$optional binutils-powerpc-linux-gnu"
    if [ "${1:-}" = check ]; then
        command -v python3 >/dev/null 2>&1 || optional="$optional python3"
        command -v z3 >/dev/null 2>&1 || optional="$optional z3"
        command -v cvc5 >/dev/null 2>&1 || optional="$optional cvc5"
        command -v qemu-ppc >/dev/null 2>&1 || optional="$optional qemu-user"
    fi
    if [ -n "$optional" ]; then
        if [ "$(id -u)" = 0 ]; then missing="$missing$optional"; else echo "not root: left uninstalled:$optional" >&2; fi
    fi
    if [ "${1:-}" = check ]; then
        command -v groff >/dev/null 2>&1 || missing="$missing groff-base"
        command -v clang++ >/dev/null 2>&1 || missing="$missing clang"
        ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a >/dev/null 2>&1 ||
            missing="$missing libclang-rt-dev"
    fi
    if [ -n "$missing" ]; then
        echo "Installing:$missing"
        if [ "$(id -u)" != 0 ]; then echo "run as root to install:$missing" >&2; exit 1; fi
        apt-get update
        DEBIAN_FRONTEND=noninteractive apt-get install -y $missing
    fi
}

# build DIR [cmake options...]
build() {
    dir=$1; shift
    cmake -S "$top" -B "$dir" "$@" >/dev/null
    cmake --build "$dir" -j "$jobs"
}

case "${1:-}" in
example)
    install_missing
    build build-example -DVELCOR_TESTS=OFF
    sh examples/run.sh "$top/build-example/velcor" "$top/build-example/example"
    ;;
check)
    install_missing check
    build build -DVELCOR_TESTS=ON
    (cd build && ctest --output-on-failure --no-tests=error -j "$jobs")
    build build-sanitize -DVELCOR_TESTS=ON -DVELCOR_SANITIZE=ON
    # The step functions' validation spends its minutes in the solvers and
    # runs velcor once per node: the first pass covers it.
    (cd build-sanitize && ctest --output-on-failure --no-tests=error -j "$jobs" -E '^semantic\.nodes\.')
    if [ -f fuzz/run.sh ]; then sh fuzz/run.sh "${FUZZ_SECONDS:-60}"; fi
    echo "All tests passed."
    ;;
build)
    install_missing
    build build
    ;;
*)
    echo "usage: tools/dev.sh example | check | build" >&2
    exit 2
    ;;
esac
