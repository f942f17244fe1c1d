# FILE holds the output that a_stdout0 would have; the temporary file is gone.
expected=$(dirname "$0")/obligations.cvc
cmp out/obligations.cvc "$expected" || { echo "out/obligations.cvc differs"; exit 1; }
[ "$(ls -A out)" = obligations.cvc ] || { echo "out/ holds more:"; ls -A out; exit 1; }
mode=$(stat -c %a out/obligations.cvc)
[ "$mode" = 664 ] || { echo "mode $mode, expected 664"; exit 1; }
