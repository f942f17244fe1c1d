#!/bin/sh
# velcor on an executable writes what it writes on the listing that
# velcor-disasm prints of that executable.
#   same_as_listing.sh VELCOR VELCOR_DISASM MKDWARF
#
# For each step function *.c of this directory, compiled with
# powerpc-linux-gnu-gcc at -O0, -O1, -O2 and -Os, each with -gdwarf-2,
# -gdwarf-4 and the default DWARF 5:
# - velcor on the executable and velcor on its listing (under the same name,
#   in another directory), both with NAME.dwarf, the DWARF 1 description of
#   the same structure built with the test-executable builder, end with
#   status 0 and write the same standard output, standard error and
#   a_stdout0: one road from the scanner on;
# - velcor on the executable with the executable's own debugging
#   information (-d prog) ends with status 0 and writes that same a_stdout0.
# The output syntax goes round CVC, TLV and ICS.
#
# Exit status 77 (skipped) when the cross compiler is absent.
set -u
absolute() { echo "$(cd "$(dirname "$1")" && pwd)/$(basename "$1")"; }
velcor=$(absolute "$1")
disasm=$(absolute "$2")
builder=$(absolute "$3")
here=$(cd "$(dirname "$0")" && pwd)
if ! command -v powerpc-linux-gnu-gcc >/dev/null 2>&1; then
    echo "skipped: powerpc-linux-gnu-gcc is not installed (Debian gcc-powerpc-linux-gnu)"
    exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0
runs=0

for source in "$here"/*.c; do
    name=$(basename "$source" .c)
    "$builder" "$here/$name.dwarf" "$work/$name.dwarf1" || { echo "FAIL: cannot build $name.dwarf"; failed=1; continue; }
    syntax=0
    for level in -O0 -O1 -O2 -Os; do
        syntax=$(((syntax + 1) % 3))
        case $syntax in 0) format=-ics ;; 1) format=-cvc ;; 2) format=-tlv ;; esac
        for debug in -gdwarf-2 -gdwarf-4 -g; do
            case=$work/$name$level$debug
            mkdir -p "$case/executable" "$case/listing"
            if ! powerpc-linux-gnu-gcc $level $debug -static -o "$case/executable/prog" "$source"; then
                echo "FAIL: cannot compile $name.c with $level $debug"; failed=1; continue
            fi
            "$disasm" "$case/executable/prog" step > "$case/listing/prog" ||
                { echo "FAIL: velcor-disasm on $name $level $debug"; failed=1; continue; }
            for road in executable listing; do
                cp "$work/$name.dwarf1" "$case/$road/debug"
                (cd "$case/$road" && "$velcor" prog -d debug -u "$name.c" -n step $format >stdout 2>stderr)
                echo $? > "$case/$road/status"
            done
            mkdir -p "$case/modern"
            cp "$case/executable/prog" "$case/modern/prog"
            (cd "$case/modern" && "$velcor" prog -d prog -u "$name.c" -n step $format >stdout 2>stderr)
            echo $? > "$case/modern/status"
            for file in status a_stdout0; do
                if ! cmp -s "$case/modern/$file" "$case/listing/$file"; then
                    echo "FAIL: $name $level $debug $format, -d prog: $file differs from the DWARF 1 run"
                    diff "$case/modern/$file" "$case/listing/$file" | head -n 10
                    failed=1
                fi
            done
            runs=$((runs + 1))
            for file in status stdout stderr a_stdout0; do
                if ! cmp -s "$case/executable/$file" "$case/listing/$file"; then
                    echo "FAIL: $name $level $debug $format: $file differs"
                    diff "$case/executable/$file" "$case/listing/$file" | head -n 10
                    failed=1
                fi
            done
            if [ "$(cat "$case/executable/status")" != 0 ]; then
                echo "FAIL: $name $level $debug $format: status $(cat "$case/executable/status")"
                head -n 5 "$case/executable/stderr"
                failed=1
            fi
        done
    done
done
[ "$failed" = 0 ] && echo "$runs executables: the same runs as on their listings"
exit $failed
