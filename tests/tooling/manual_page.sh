#!/bin/sh
# The manual page renders without a single groff warning, has the sections a
# manual page is expected to have, in order, and describes every option and
# exit status that --help lists.
#   manual_page.sh PAGE VELCOR
set -eu
page=$1 velcor=$2
if ! command -v groff >/dev/null 2>&1; then
    echo "SKIPPED: groff is not installed (Debian: groff-base)"
    exit 77
fi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "FAIL: $*"; exit 1; }

groff -man -Tutf8 -ww "$page" >"$scratch/rendered" 2>"$scratch/warnings" || fail "groff failed"
if [ -s "$scratch/warnings" ]; then
    cat "$scratch/warnings"
    fail "groff warned"
fi
# The terminal rendering overstrikes bold and underlined letters.
sed 's/.\x08//g' "$scratch/rendered" >"$scratch/page"

headings=$(grep -E '^[A-Z][A-Z ]*[A-Z]$' "$scratch/page" | tr '\n' '/')
expected_order="NAME/SYNOPSIS/DESCRIPTION/OPTIONS/FILES/EXIT STATUS/EXAMPLES/SEE ALSO/"
remaining=$expected_order
for heading in $(echo "$headings" | tr ' /' '_ '); do
    heading=$(echo "$heading" | tr '_' ' ')
    case $remaining in
    "$heading/"*) remaining=${remaining#"$heading/"} ;;
    esac
done
[ -z "$remaining" ] || fail "sections missing or out of order: wanted $expected_order in $headings"

# One section of the rendered page, without its heading.
section() { sed -n "/^$1\$/,/^[A-Z]/p" "$scratch/page" | sed '1d;$d'; }
section OPTIONS >"$scratch/options"
section "EXIT STATUS" >"$scratch/statuses"

"$velcor" --help >"$scratch/help"
sed -n '/^Options:$/,/^$/p' "$scratch/help" | sed '1d;$d' | sed 's/^  //; s/  .*//' >"$scratch/labels"
[ -s "$scratch/labels" ] || fail "--help lists no options"
while IFS= read -r label; do
    grep -q -E "^       $label( |\$)" "$scratch/options" || fail "the OPTIONS section lacks $label"
done <"$scratch/labels"
sed -n '/^Exit status:$/,$p' "$scratch/help" | sed '1d' | awk '{print $1}' >"$scratch/codes"
while IFS= read -r code; do
    grep -q -E "^       $code " "$scratch/statuses" || fail "the EXIT STATUS section lacks $code"
done <"$scratch/codes"
echo "the manual page renders without warnings and lists $(wc -l <"$scratch/labels") options"
