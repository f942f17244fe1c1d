[ "$(ls -A out)" = kept ] || { echo "out/ changed:"; ls -A out; exit 1; }
