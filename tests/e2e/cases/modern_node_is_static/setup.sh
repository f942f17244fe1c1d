# The node compiled by the cross compiler (DWARF 5).
. "${0%/*}/../../cross_compile.sh"
skip_without_cross_compiler
# The static node is no symbol the linker could start at: "keep" is.
compile_node node.c exe keep -O1 -g
