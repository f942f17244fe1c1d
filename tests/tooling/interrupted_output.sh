#!/bin/sh
# A run with -o that a signal ends leaves the earlier FILE as it was and
# removes its temporary file.
#   interrupted_output.sh VELCOR MKDWARF SOURCE_DIR
# The listing is a pipe that gets the first bytes of a line and no more, so
# the run is certain to be waiting in the scanner, with its temporary file
# created, when the signal comes.
set -eu
velcor=$1 mkdwarf=$2 source=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "FAIL: $*"; exit 1; }
cd "$scratch"
"$mkdwarf" "$source/examples/counter.dwarf" counter.elf
mkfifo listing.s
echo "the output of an earlier run" >obligations.cvc

"$velcor" listing.s -d counter.elf -u counter.c -n counter_step -cvc -q -o obligations.cvc &
pid=$!
exec 3>listing.s
# Enough for the run to see that the listing is no executable.
printf '1000' >&3
tries=0
until ls -A | grep -q '^\.obligations\.cvc\.'; do
    tries=$((tries + 1))
    [ $tries -le 200 ] || { kill -KILL $pid; fail "no temporary file appeared"; }
    sleep 0.05
done
kill -TERM $pid
status=0
wait $pid || status=$?
exec 3>&-

[ $status = 143 ] || fail "exit status $status, expected 143 (ended by SIGTERM)"
[ "$(cat obligations.cvc)" = "the output of an earlier run" ] || fail "obligations.cvc changed"
left=$(ls -A | grep -v -x -e counter.elf -e listing.s -e obligations.cvc || true)
[ -z "$left" ] || fail "left behind: $left"
echo "the interrupted run left obligations.cvc as it was"
