# The node compiled by the cross compiler, then its ".debug_info" cut
# after 40 bytes, inside its first entries.
. "${0%/*}/../../cross_compile.sh"
skip_without_cross_compiler
compile_node node.c whole step -O1 -g
"$CROSS_OBJCOPY" --dump-section .debug_info=info.bin whole copy
head -c 40 info.bin > short.bin
"$CROSS_OBJCOPY" --update-section .debug_info=short.bin whole exe
