# Two lines: "velcor VERSION" and the commit the program was built from,
# which is the checkout's HEAD when the source is a git checkout.
fail() { echo "$*"; cat stdout.actual; exit 1; }
[ "$(wc -l < stdout.actual)" = 2 ] || fail "--version printed other than two lines"
sed -n 1p stdout.actual | grep -Eqx 'velcor [0-9]+\.[0-9]+\.[0-9]+' || fail "first line is not velcor VERSION"
commit=$(sed -n 2p stdout.actual)
echo "$commit" | grep -Eqx 'commit ([0-9a-f]{40}( \(with uncommitted changes\))?|unknown)' ||
    fail "second line names no commit"
source=$(cd "$(dirname "$0")/../../../../.." && pwd)
if head=$(git -C "$source" rev-parse HEAD 2>/dev/null) &&
    [ "$(cd "$(git -C "$source" rev-parse --show-toplevel)" && pwd -P)" = "$(cd "$source" && pwd -P)" ]; then
    case $commit in
    "commit $head"*) ;;
    *) fail "the commit is not the checkout's HEAD $head" ;;
    esac
fi
