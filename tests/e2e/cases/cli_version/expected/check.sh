# Two lines: "velcor VERSION" and the commit the program was built from.
fail() { echo "$*"; cat stdout.actual; exit 1; }
[ "$(wc -l < stdout.actual)" = 2 ] || fail "--version printed other than two lines"
sed -n 1p stdout.actual | grep -Eqx 'velcor [0-9]+\.[0-9]+\.[0-9]+' || fail "first line is not velcor VERSION"
commit=$(sed -n 2p stdout.actual)
echo "$commit" | grep -Eqx 'commit ([0-9a-f]{40}( \(with uncommitted changes\))?|unknown)' ||
    fail "second line names no commit"
# In a git checkout, the commit is one of the checkout's (the build looks it
# up at every build; HEAD may have moved on since).
source=$(cd "$(dirname "$0")/../../../../.." && pwd)
hash=$(echo "$commit" | sed -n 's/^commit \([0-9a-f]\{40\}\).*/\1/p')
if [ -n "$hash" ] && git -C "$source" rev-parse HEAD >/dev/null 2>&1; then
    git -C "$source" cat-file -e "$hash^{commit}" 2>/dev/null || fail "$hash is no commit of $source"
fi
