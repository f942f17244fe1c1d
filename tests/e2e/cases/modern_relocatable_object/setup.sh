# The node compiled by the cross compiler but not linked.
. "${0%/*}/../../cross_compile.sh"
skip_without_cross_compiler
"$CROSS_CC" -O1 -g -c -o exe node.c
