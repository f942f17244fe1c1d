# The run stops inside the walk: the mapping is never finished.
! grep -q 'MAPPING DONE' a_stdout0 || { echo "the mapping was finished"; exit 1; }
