# Assembles the node (written in assembly so that its layout is certain).
for tool in powerpc-linux-gnu-as powerpc-linux-gnu-ld; do
    command -v $tool >/dev/null 2>&1 || { echo "skipped: $tool (Debian binutils-powerpc-linux-gnu) is not installed"; exit 77; }
done
powerpc-linux-gnu-as -mregnames -o step.o step.asm && powerpc-linux-gnu-ld -e step -o prog step.o
