# 10,000 nested type levels, the most the walk follows.
. "${0%/*}/../../scale_support.sh"
scale_typedef_chain 10000
