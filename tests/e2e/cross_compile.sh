# Compiling the tests' own C step functions with the PowerPC cross compiler
# (Debian package gcc-powerpc-linux-gnu). Sourced by the runners, the setup
# scripts of the cases and the fuzzing script.
#
# A test that needs the compiler and does not find it is skipped with a
# visible notice (exit status 77, which CTest reports as skipped); CI
# installs the compiler, so it runs them all.
CROSS_CC=${CROSS_CC:-powerpc-linux-gnu-gcc}
CROSS_OBJCOPY=${CROSS_OBJCOPY:-powerpc-linux-gnu-objcopy}
SKIP_STATUS=77

# skip_without_cross_compiler: the notice and status 77 when it is absent.
skip_without_cross_compiler() {
    if ! command -v "$CROSS_CC" >/dev/null 2>&1; then
        echo "SKIPPED: $CROSS_CC not found (install gcc-powerpc-linux-gnu to run this test)"
        exit "$SKIP_STATUS"
    fi
}

# compile_node SOURCE OUTPUT NODE [FLAGS...]: a small executable holding the
# code of SOURCE alone, its node NODE as entry point, no C library.
# (A subshell: its variables stay its own.)
compile_node() (
    source=$1 output=$2 node=$3
    shift 3
    "$CROSS_CC" "$@" -nostdlib -static -Wl,-e,"$node" -Wl,--build-id=none \
        -Wl,-z,max-page-size=0x100 -Wl,-z,common-page-size=0x100 -o "$output" "$source"
)
