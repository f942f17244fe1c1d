# The run on the executable is the run on the listing velcor-disasm prints.
mkdir listing && cp exe listing/ && cd listing || exit 1
"$DISASM" ../prog step > prog || { echo "velcor-disasm failed"; exit 1; }
grep -q '^% copy of the shared tail at <step+16>' prog || { echo "the listing shows no copy"; cat prog; exit 1; }
"$VELCOR" prog -d exe -u node.c -n step -cvc > stdout 2> stderr
[ $? = 0 ] || { echo "velcor failed on the listing"; exit 1; }
cmp -s stdout ../stdout.actual && cmp -s stderr ../stderr.actual && cmp -s a_stdout0 ../a_stdout0 ||
    { echo "the runs on the executable and on its listing differ"; exit 1; }
