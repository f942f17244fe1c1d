#!/usr/bin/env bash
# Runs velcor on one end-to-end case and compares what it produced with the
# case's expectations.
#
# A case directory holds:
#   args               the command line after the program name, one argument
#                      a line ($CASE stands for the case directory)
#   *.s, other inputs  copied into a fresh working directory
#   *.dwarf            executable descriptions, built with the test-executable
#                      builder into the file of the same name without .dwarf
#   setup.sh           run in the working directory before velcor, with
#                      MKDWARF naming the builder (for generated descriptions)
#                      and DISASM naming velcor-disasm; exit status 77 skips
#                      the case (a tool it needs is absent), after a line
#                      saying why
#   expected/status    exit status (0 when absent)
#   expected/a_stdout0 the whole output file; expected/no_a_stdout0 when the
#                      run must not create it
#   expected/stdout, expected/stderr   compared whole when present
#   expected/stdout_has, expected/stderr_has, expected/a_stdout0_has
#                      lines that must appear, in order
#   expected/mode      permission bits of a_stdout0 (the run uses umask 0)
#   expected/check.sh  run in the working directory after velcor, for what a
#                      generated case can only describe (sizes, counts, long
#                      lines, a second run to compare with); it prints what is
#                      wrong and fails. VELCOR, DISASM and MKDWARF name the
#                      tools.
#
# run_case.sh VELCOR CASE_DIR [MKDWARF [DISASM]]
set -u
velcor=$1
case_dir=$2
builder=${3:-}
disasm=${4:-}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0
fail() { echo "FAIL: $*"; failed=1; }

for f in "$case_dir"/*; do
    [ -f "$f" ] && cp "$f" "$work/"
done
for description in "$work"/*.dwarf; do
    [ -e "$description" ] || continue
    if [ -z "$builder" ]; then echo "no executable builder given"; exit 1; fi
    "$builder" "$description" "${description%.dwarf}" || { echo "builder failed on $description"; exit 1; }
done

if [ -f "$case_dir/setup.sh" ]; then
    (cd "$work" && MKDWARF=$builder DISASM=$disasm sh "$case_dir/setup.sh")
    setup_status=$?
    if [ "$setup_status" = 77 ]; then echo "SKIPPED"; exit 77; fi
    [ "$setup_status" = 0 ] || { echo "setup failed"; exit 1; }
fi

args=()
if [ -f "$case_dir/args" ]; then
    while IFS= read -r line || [ -n "$line" ]; do
        args+=("${line//\$CASE/$case_dir}")
    done < "$case_dir/args"
fi

(cd "$work" && umask 0 && exec -a velcor "$velcor" "${args[@]}" >stdout.actual 2>stderr.actual)
status=$?

expected=$case_dir/expected
want_status=0
[ -f "$expected/status" ] && want_status=$(cat "$expected/status")
[ "$status" = "$want_status" ] || fail "exit status $status, expected $want_status"

compare() { # expected-file actual-file label
    if ! cmp -s "$1" "$2"; then
        fail "$3 differs"
        diff -u "$1" "$2" | head -n 60
    fi
}
contains_in_order() { # expected-lines actual-file label
    local from=1 line found
    while IFS= read -r line || [ -n "$line" ]; do
        found=$(tail -n +"$from" "$2" | grep -n -F -x -m1 -- "$line" | cut -d: -f1)
        if [ -z "$found" ]; then fail "$3 lacks (in order): $line"; return; fi
        from=$((from + found))
    done < "$1"
}

[ -f "$expected/a_stdout0" ] && {
    if [ -f "$work/a_stdout0" ]; then compare "$expected/a_stdout0" "$work/a_stdout0" a_stdout0
    else fail "a_stdout0 was not created"; fi
}
[ -f "$expected/no_a_stdout0" ] && [ -e "$work/a_stdout0" ] && fail "a_stdout0 was created"
[ -f "$expected/stdout" ] && compare "$expected/stdout" "$work/stdout.actual" stdout
[ -f "$expected/stderr" ] && compare "$expected/stderr" "$work/stderr.actual" stderr
[ -f "$expected/stdout_has" ] && contains_in_order "$expected/stdout_has" "$work/stdout.actual" stdout
[ -f "$expected/stderr_has" ] && contains_in_order "$expected/stderr_has" "$work/stderr.actual" stderr
[ -f "$expected/a_stdout0_has" ] && contains_in_order "$expected/a_stdout0_has" "$work/a_stdout0" a_stdout0
[ -f "$expected/mode" ] && {
    mode=$(stat -c %a "$work/a_stdout0" 2>/dev/null)
    [ "$mode" = "$(cat "$expected/mode")" ] || fail "a_stdout0 mode $mode, expected $(cat "$expected/mode")"
}
[ -f "$expected/check.sh" ] && {
    (cd "$work" && VELCOR=$velcor DISASM=$disasm MKDWARF=$builder sh "$expected/check.sh") || fail "check.sh"
}
if [ "$failed" != 0 ]; then
    echo "--- stderr of the run:"; head -n 20 "$work/stderr.actual"
fi
exit $failed
