#!/bin/sh
# velcor-disasm agrees with objdump, instruction by instruction.
#   objdump_agreement.sh VELCOR_DISASM
#
# Builds with the cross tools every_mnemonic.asm (every mnemonic the decoder
# prints, with edge fields) and the step functions *.c of this directory at
# -O0, -O1, -O2 and -Os, and compares, for every function of them, each
# line velcor-disasm prints (copies of shared tails included) with the line
# that `powerpc-linux-gnu-objdump -d -M raw --no-show-raw-insn` prints for
# the same address. It also checks that every_mnemonic.asm reaches every
# mnemonic of the opcode table.
#
# Normalisation of objdump's text into velcor-disasm's forms:
#   - condition fields and bits as numbers: cr7 -> 7, 4*cr7+eq -> 30,
#     lt gt eq so -> 0 1 2 3;
#   - dropped: the L operand of cmp, cmpl, cmpi and cmpli; a zero branch
#     hint (third operand of bclr, bclrl, bcctr, bcctrl); the field operand
#     objdump adds to mfcr; the two zero operands of sync;
#   - the (rA|0) field written 0 becomes r0: second operand of addi, addis
#     and of the indexed loads and stores, and D(0) -> D(r0);
#   - targets: 100004f0 <step+0x1c> -> <step+28>, 10000054 <step> -> <step>;
#   - .long 0x0 -> .long 0x00000000.
# Normalisation of velcor-disasm's targets into objdump's: <NODE+K> names
# the listing's line at offset K (a line of a copy when the branch was
# redirected to one); it becomes <NODE+D>, D the distance of that line's
# address from the node's start.
#
# Exit status 77 (skipped) when the cross tools are absent.
set -u
disasm=$1
here=$(cd "$(dirname "$0")" && pwd)
top=$(cd "$here/../.." && pwd)
for tool in powerpc-linux-gnu-gcc powerpc-linux-gnu-as powerpc-linux-gnu-ld powerpc-linux-gnu-objdump; do
    if ! command -v $tool >/dev/null 2>&1; then
        echo "skipped: $tool is not installed (Debian gcc-powerpc-linux-gnu, binutils-powerpc-linux-gnu)"
        exit 77
    fi
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

# hex2dec in awk, for both normalisers.
awk_hex='function hex2dec(h,    i, v) { v = 0; h = tolower(h); for (i = 1; i <= length(h); i++) v = v * 16 + index("0123456789abcdef", substr(h, i, 1)) - 1; return v }'

# objdump's lines as "ADDRESS TEXT".
normalise_objdump() {
    awk "$awk_hex"'
    function condition(o,    k) {
        k = index("ltgteqso", substr(o, length(o) - 1)) 
        if (o ~ /^4\*cr[0-7]\+(lt|gt|eq|so)$/) return 4 * substr(o, 5, 1) + (k - 1) / 2
        if (o ~ /^(lt|gt|eq|so)$/) return (index("ltgteqso", o) - 1) / 2
        if (o ~ /^cr[0-7]$/) return substr(o, 3, 1)
        return o
    }
    /^ *[0-9a-f]+:\t/ {
        split($0, part, "\t")
        address = part[1]; sub(/^ +/, "", address); sub(/:$/, "", address)
        address = substr("00000000", 1, 8 - length(address)) address
        text = part[2]; sub(/ +$/, "", text)
        space = index(text, " ")
        if (space == 0) { mnemonic = text; operands = "" }
        else { mnemonic = substr(text, 1, space - 1); operands = substr(text, space); sub(/^ +/, "", operands) }
        if (mnemonic == ".long") {
            digits = substr(operands, 3)
            print address, ".long 0x" substr("00000000", 1, 8 - length(digits)) digits
            next
        }
        if (match(operands, /[0-9a-f]+ <[^>]*>$/)) {
            target = substr(operands, RSTART); sub(/^[0-9a-f]+ </, "", target); sub(/>$/, "", target)
            plus = index(target, "+0x")
            if (plus) target = substr(target, 1, plus - 1) "+" hex2dec(substr(target, plus + 3))
            operands = substr(operands, 1, RSTART - 1) "<" target ">"
        }
        count = operands == "" ? 0 : split(operands, operand, ",")
        for (i = 1; i <= count; i++) operand[i] = condition(operand[i])
        drop = 0
        if (mnemonic ~ /^cmpl?i?$/) drop = 2
        if (mnemonic ~ /^bc(lr|ctr)l?$/ && count == 3 && operand[3] == "0") drop = 3
        if (mnemonic == "mfcr" && count == 2) drop = 2
        if (mnemonic == "sync" && operands == "0,0") count = 0
        if (mnemonic ~ /^(addis?|l[bhw]zu?x|lhau?x|st[bhw]u?x|lf[sd]u?x|stf[sd]u?x|stfiwx)$/ && operand[2] == "0")
            operand[2] = "r0"
        text = mnemonic
        separator = " "
        for (i = 1; i <= count; i++) {
            if (i == drop) continue
            sub(/\(0\)$/, "(r0)", operand[i])
            text = text separator operand[i]; separator = ","
        }
        print address, text
    }'
}

# velcor-disasm's lines as "ADDRESS TEXT", targets by address.
normalise_disasm() {
    awk "$awk_hex"'
    /^%/ { next }
    {
        colon = index($0, ": ")
        address = substr($0, 1, colon - 1)
        rest = substr($0, colon + 2)
        place = substr(rest, 1, index(rest, ">: "))
        text = substr(rest, length(place) + 3)
        offset = place ~ /\+/ ? substr(place, index(place, "+") + 1) : 0
        sub(/>$/, "", offset)
        if (NR == 1 || !started) { node = substr(place, 2); sub(/[+>].*/, "", node); start = hex2dec(address); started = 1 }
        address_at[offset + 0] = address
        line[++lines] = address " " text
    }
    END {
        for (n = 1; n <= lines; n++) {
            text = line[n]
            if (match(text, "<" node "(\\+[0-9]+)?>$")) {
                target = substr(text, RSTART + length(node) + 1); sub(/>$/, "", target)
                target = target == "" ? 0 : substr(target, 2) + 0
                if (target in address_at) {
                    distance = hex2dec(address_at[target]) - start
                    text = substr(text, 1, RSTART - 1) "<" node (distance ? "+" distance : "") ">"
                }
            }
            print text
        }
    }'
}

# compare EXECUTABLE FUNCTION: velcor-disasm's lines against objdump's.
compare() {
    "$disasm" "$1" "$2" > "$work/disasm" 2> "$work/disasm.err" ||
        { echo "FAIL: velcor-disasm $1 $2: $(cat "$work/disasm.err")"; failed=1; return; }
    powerpc-linux-gnu-objdump -d -M raw --no-show-raw-insn --disassemble="$2" "$1" | normalise_objdump > "$work/objdump.lines"
    normalise_disasm < "$work/disasm" > "$work/disasm.lines"
    cat "$work/disasm" >> "$work/all.listings"
    if ! awk -v what="$(basename "$1") $2" '
        NR == FNR { line = $0; address = $1; sub(/^[^ ]+ /, "", line); want[address] = line; next }
        {
            line = $0; address = $1; sub(/^[^ ]+ /, "", line); seen[address] = 1
            if (!(address in want)) { print "FAIL: " what " " address ": " line " (objdump has no such line)"; bad = 1 }
            else if (want[address] != line) { print "FAIL: " what " " address ": velcor-disasm \"" line "\", objdump \"" want[address] "\""; bad = 1 }
        }
        END {
            for (address in want) if (!(address in seen)) { print "FAIL: " what " " address ": missing " want[address]; bad = 1 }
            exit bad
        }' "$work/objdump.lines" "$work/disasm.lines"; then
        failed=1
    fi
    [ -s "$work/objdump.lines" ] || { echo "FAIL: objdump shows no function $2 in $1"; failed=1; }
}

powerpc-linux-gnu-as -mregnames -o "$work/every.o" "$here/every_mnemonic.asm" &&
    powerpc-linux-gnu-ld -e every -o "$work/every" "$work/every.o" || { echo "FAIL: cannot assemble every_mnemonic.asm"; exit 1; }
compare "$work/every" every

# Every mnemonic of the opcode table appears in the listing of every.
printed=$(awk '/^%/ { next } { split($0, part, ": "); split(part[3], word, " "); print word[1] }' "$work/disasm" | sort -u)
for mnemonic in addi addis add andc divw mulli mullw stw bclr stwu mfspr stmw lwz lwzu lmw cmpi cmpli bc b subf \
    bl cntlzw rlwinm rlwinm. mfcr mtspr or ori neg lfs fsubs stfs fadds fmuls fcmpu \
    $(sed -n 's/^OPCODE([a-z_]*, "\(.*\)")$/\1/p' "$top/parse/extended_opcodes.def"); do
    echo "$printed" | grep -qxF -- "$mnemonic" || { echo "FAIL: every_mnemonic.asm does not reach $mnemonic"; failed=1; }
done

for source in "$here"/*.c; do
    name=$(basename "$source" .c)
    for level in -O0 -O1 -O2 -Os; do
        executable=$work/$name$level
        powerpc-linux-gnu-gcc $level -g -static -o "$executable" "$source" ||
            { echo "FAIL: cannot compile $name.c at $level"; failed=1; continue; }
        for function in $(sed -n 's/^\(static \)\{0,1\}\(__attribute__((noinline)) \)\{0,1\}[a-z_]* \([a-z_]*\)(.*$/\3/p' "$source"); do
            compare "$executable" "$function"
        done
    done
done
if grep -q '\.long' "$work/all.listings"; then
    echo "FAIL: a compiled function holds a word the decoder does not read"; grep '\.long' "$work/all.listings"; failed=1
fi
[ "$failed" = 0 ] && echo "velcor-disasm agrees with objdump on every line"
exit $failed
