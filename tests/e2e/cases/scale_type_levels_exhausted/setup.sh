# 10,001 nested type levels: one more than the walk follows.
. "${0%/*}/../../scale_support.sh"
scale_typedef_chain 10001
