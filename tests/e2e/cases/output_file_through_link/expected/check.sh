[ "$(readlink link.cvc)" = out/obligations.cvc ] || { echo "link.cvc is no longer the link"; exit 1; }
cmp out/obligations.cvc "$(dirname "$0")/obligations.cvc" || { echo "out/obligations.cvc differs"; exit 1; }
[ "$(ls -A out)" = obligations.cvc ] || { echo "out/ holds more:"; ls -A out; exit 1; }
