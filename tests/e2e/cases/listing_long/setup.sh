# 100,000 lines: the parser's stack must not grow with the listing.
awk 'BEGIN { for (i = 0; i < 100000; i++) printf "%08x: <node+%d>: bl <helper>\n", 268435456 + 4 * i, 4 * i }' > listing.s
