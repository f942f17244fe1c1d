# The node compiled by the cross compiler (DWARF 5).
. "${0%/*}/../../cross_compile.sh"
skip_without_cross_compiler
compile_node node.c exe step -O1 -g
