. "${0%/*}/../../../scale_support.sh"
scale_check_int_pairs 5000
