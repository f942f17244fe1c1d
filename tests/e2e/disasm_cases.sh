#!/bin/sh
# velcor-disasm's command line: the listing on standard output, and for bad
# input a message on standard error, status 1 and nothing on standard
# output.
#   disasm_cases.sh VELCOR_DISASM MKDWARF
set -u
disasm=$1
builder=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failed=0

# expect STATUS STDOUT STDERR ARGUMENTS...
expect() {
    want_status=$1 want_out=$2 want_err=$3
    shift 3
    "$disasm" "$@" > out 2> err
    status=$?
    printf '%s' "$want_out" > want_out
    printf '%s' "$want_err" > want_err
    if [ "$status" != "$want_status" ] || ! cmp -s out want_out || ! cmp -s err want_err; then
        echo "FAIL: velcor-disasm $*: status $status"
        diff want_out out | head -n 10
        diff want_err err | head -n 10
        failed=1
    fi
}

cat > prog.dwarf <<'END'
section .text address 0x10000000 flags 6
  raw 9421fff0 2c030000 41820008 38600001 38210010 4e800020   # step
  raw 4bffffe9                                               # caller: bl step
symbol step 0x10000000 24
symbol caller 0x10000018 4
END
"$builder" prog.dwarf prog || exit 1
echo '10000000: <step>: bclr 20,0' > listing.s

expect 0 '10000000: <step>: stwu r1,-16(r1)
10000004: <step+4>: cmpi 0,r3,0
10000008: <step+8>: bc 12,2,<step+16>
1000000c: <step+12>: addi r3,r0,1
10000010: <step+16>: addi r1,r1,16
10000014: <step+20>: bclr 20,0
' '' prog step
expect 0 '10000018: <caller>: bl <step>
' '' prog caller
usage='usage: velcor-disasm EXECUTABLE NODE
'
expect 1 '' "$usage"
expect 1 '' "$usage" prog
expect 1 '' "$usage" prog step extra
expect 1 '' 'Cannot open executable file absent
' absent step
expect 1 '' 'Cannot read the code of node step from listing.s: not a 32-bit big-endian PowerPC executable
' listing.s step
expect 1 '' 'Cannot read the code of node other from prog: no function symbol of that name
' prog other
[ "$failed" = 0 ] && echo "velcor-disasm: every case as expected"
exit $failed
