#!/usr/bin/env python3
"""Runs the instruction checks on the emulated processor.

    against_qemu.py FILE.checks...

Every check's code runs under qemu-ppc from its pre-state (what the check
leaves out is zero), and each value after the code that the check expects
(free values aside) must be what the processor computed: the hand-worked
expectations agree with real execution. One static program per file, built
with powerpc-linux-gnu-gcc. Exit status 0 when all agree, 1 otherwise, 77
when the cross compiler or qemu-ppc is absent.
"""

import os
import re
import subprocess
import sys
import tempfile

# Tests leave the source tree as it was: no compiled module beside checks.py.
sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
from checks import LISTING_BASE, CheckError, read_checks
from toolchain import COMPILER, EMULATOR, skip_notice

# A block of low memory, reachable as displacement(0) from any instruction,
# holds the state given to the code, the state it leaves, and what the
# harness saves meanwhile: no register is needed to reach it.
BLOCK = 0x6000
BLOCK_END = 0x8000
STATE_IN = 0x6000
STATE_OUT = 0x6200
SAVED = 0x6400
GPRS, CR, XER, CTR, LR, FPRS = 0x0, 0x80, 0x84, 0x88, 0x8C, 0x100
XER_SO = 0x80000000
XER_CA = 0x20000000


def harness_code(index, check):
    """The assembly of check number index: load the state, run the code,
    store the state, return to the C side."""
    lines = [".globl run_%d" % index, "run_%d:" % index]
    lines += ["stw 1,%d(0)" % SAVED, "stw 2,%d(0)" % (SAVED + 4), "mflr 0", "stw 0,%d(0)" % (SAVED + 8),
              "mfcr 0", "stw 0,%d(0)" % (SAVED + 12), "stmw 13,%d(0)" % (SAVED + 16)]
    lines += ["stfd %d,%d(0)" % (reg, SAVED + 96 + 8 * (reg - 14)) for reg in range(14, 32)]
    lines += ["lfd %d,%d(0)" % (reg, STATE_IN + FPRS + 8 * reg) for reg in range(32)]
    lines += ["lwz 0,%d(0)" % (STATE_IN + XER), "mtxer 0", "lwz 0,%d(0)" % (STATE_IN + CR), "mtcrf 255,0",
              "lwz 0,%d(0)" % (STATE_IN + CTR), "mtctr 0", "lwz 0,%d(0)" % (STATE_IN + LR), "mtlr 0"]
    lines += ["lwz %d,%d(0)" % (reg, STATE_IN + GPRS + 4 * reg) for reg in range(32)]
    lines += [".globl snippet_%d" % index, "snippet_%d:" % index]
    for offset, instruction in enumerate(check.code):
        lines += [".Lcode_%d_%d:" % (index, 4 * offset), translate(index, instruction, 4 * len(check.code))]
    lines += [".globl snippet_end_%d" % index, "snippet_end_%d:" % index,
              ".Lcode_%d_%d:" % (index, 4 * len(check.code))]
    lines += ["stw %d,%d(0)" % (reg, STATE_OUT + GPRS + 4 * reg) for reg in range(32)]
    lines += ["mfcr 0", "stw 0,%d(0)" % (STATE_OUT + CR), "mfxer 0", "stw 0,%d(0)" % (STATE_OUT + XER),
              "mfctr 0", "stw 0,%d(0)" % (STATE_OUT + CTR), "mflr 0", "stw 0,%d(0)" % (STATE_OUT + LR)]
    lines += ["stfd %d,%d(0)" % (reg, STATE_OUT + FPRS + 8 * reg) for reg in range(32)]
    lines += ["lwz 1,%d(0)" % SAVED, "lwz 2,%d(0)" % (SAVED + 4), "lmw 13,%d(0)" % (SAVED + 16)]
    lines += ["lfd %d,%d(0)" % (reg, SAVED + 96 + 8 * (reg - 14)) for reg in range(14, 32)]
    lines += ["lwz 0,%d(0)" % (SAVED + 12), "mtcrf 255,0", "lwz 0,%d(0)" % (SAVED + 8), "mtlr 0", "blr"]
    return "\n".join(("" if line.endswith(":") or line.startswith(".globl") else "\t") + line for line in lines)


def translate(index, instruction, end):
    """A listing line's instruction as the assembler takes it: registers as
    numbers, targets as labels, a return as a branch to the harness's end
    (under the same condition)."""
    text = re.sub(r"<node(?:\+(\d+))?>", lambda m: ".Lcode_%d_%s" % (index, m.group(1) or "0"), instruction)
    text = re.sub(r"\b[rf](\d{1,2})\b", r"\1", text)
    mnemonic, _, operands = text.partition(" ")
    if mnemonic == "bclr":
        fields = operands.split(",")
        text = "bc %s,%s,.Lcode_%d_%d" % (fields[0], fields[1], index, end)
    return text


def memory_items(check):
    return [item for item in check.pre + check.post if item.name == "mem"]


def item_bytes(item):
    return len((item.value or item.alternatives[0]).contents)


def pages_of(check):
    return sorted({(item.address + i) & ~0xFFF for item in memory_items(check) for i in range(item_bytes(item))})


def pre_state_code(check):
    """C statements that give the state block and memory the check's pre-state."""
    out = ["    memset((void *)0x%x, 0, 0x%x);" % (STATE_IN, SAVED - STATE_IN)]
    cr, xer = 0, 0
    for item in check.pre:
        value = item.value.contents
        if item.name == "mem":
            out += ["    BYTE(0x%xu) = 0x%02x;" % ((item.address + i) & 0xFFFFFFFF, byte)
                    for i, byte in enumerate(value)]
        elif item.name[0] == "r":
            out.append("    WORD(0x%x) = 0x%xu;" % (STATE_IN + GPRS + 4 * int(item.name[1:]), value))
        elif item.name[0] == "f":
            at = STATE_IN + FPRS + 8 * int(item.name[1:])
            out += ["    WORD(0x%x) = 0x%xu;" % (at, value >> 32),
                    "    WORD(0x%x) = 0x%xu;" % (at + 4, value & 0xFFFFFFFF)]
        elif item.name.startswith("cr"):
            cr |= value << (31 - int(item.name[2:]))
        elif item.name in ("ca", "so"):
            xer |= (XER_CA if item.name == "ca" else XER_SO) if value else 0
        else:
            out.append("    WORD(0x%x) = 0x%xu;" % (STATE_IN + (LR if item.name == "lr" else CTR), value))
    out += ["    WORD(0x%x) = 0x%xu;" % (STATE_IN + CR, cr), "    WORD(0x%x) = 0x%xu;" % (STATE_IN + XER, xer)]
    return out


def harness_c(checks):
    """The C side: maps the pages the checks use (where the emulator has them
    free), sets each pre-state, runs the code, prints the state after it. A
    check whose pages are not all available is not run."""
    pages = sorted({page for check in checks for page in pages_of(check)})
    out = ["#include <stdint.h>", "#include <stdio.h>", "#include <string.h>", "#include <sys/mman.h>",
           "#define WORD(a) (*(volatile uint32_t *)(uintptr_t)(a))",
           "#define BYTE(a) (*(volatile uint8_t *)(uintptr_t)(a))"]
    for index in range(len(checks)):
        out.append("void run_%d(void); extern char snippet_%d[], snippet_end_%d[];" % (index, index, index))
    out += ["static int mapped(uint32_t a_page)", "{",
            "    /* Only where nothing is mapped yet: the program's own pages stay. */",
            "    void *at = mmap((void *)(uintptr_t)a_page, 0x1000, PROT_READ | PROT_WRITE,",
            "                    MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);",
            "    if (at == (void *)(uintptr_t)a_page) return 1;",
            "    if (at != MAP_FAILED) munmap(at, 0x1000);",
            "    printf(\"unmapped %08x\\n\", (unsigned)a_page);",
            "    return 0;", "}",
            "int main(void)", "{",
            "    if (!mapped(0x%x) || !mapped(0x%x)) return 2;" % (BLOCK, BLOCK + 0x1000),
            "    int available[%d];" % max(1, len(pages))]
    out += ["    available[%d] = mapped(0x%xu);" % (number, page) for number, page in enumerate(pages)]
    for index, check in enumerate(checks):
        needed = ["available[%d]" % pages.index(page) for page in pages_of(check)]
        out.append("    if (%s) {" % (" && ".join(needed) or "1"))
        out += ["    " + line for line in pre_state_code(check)]
        # Named before it runs, so that a crash says which check it was.
        out += ["        printf(\"start %d\\n\");" % index, "        fflush(stdout);", "        run_%d();" % index,
                "        printf(\"check %d %%08x %%08x\\n\", (unsigned)(uintptr_t)snippet_%d,"
                " (unsigned)(uintptr_t)snippet_end_%d);" % (index, index, index),
                "        for (int at = 0x%x; at < 0x%x; at += 4) printf(\"%%08x\\n\", (unsigned)WORD(at));"
                % (STATE_OUT, STATE_OUT + FPRS + 256)]
        for item in check.post:
            if item.name == "mem":
                for i in range(item_bytes(item)):
                    address = (item.address + i) & 0xFFFFFFFF
                    out.append("        printf(\"mem %08x %%02x\\n\", BYTE(0x%xu));" % (address, address))
        out.append("    }")
    out += ["    return 0;", "}"]
    return "\n".join(out) + "\n"


def observed_states(lines):
    """Parses the program's output: each check's observed values by its
    index, the pages that were not available, the last check started."""
    states, unmapped = {}, set()
    current, started = None, None
    for line in lines:
        fields = line.split()
        if not fields:
            continue
        if fields[0] == "unmapped":
            unmapped.add(int(fields[1], 16))
        elif fields[0] == "start":
            started = int(fields[1])
        elif fields[0] == "check":
            current = {"start": int(fields[2], 16), "end": int(fields[3], 16), "mem": {}, "words": []}
            states[int(fields[1])] = current
        elif fields[0] == "mem":
            current["mem"][int(fields[1], 16)] = int(fields[2], 16)
        else:
            current["words"].append(int(fields[0], 16))
    return states, unmapped, started


def code_address(state, value):
    """A real address in the code as the listing's (10000000 on): what
    bcl leaves in LR, and what is copied from there."""
    if state["start"] <= value <= state["end"] + 4:
        return LISTING_BASE + value - state["start"]
    return value


def observed(state, name):
    words = state["words"]
    if name[0] == "r":
        return code_address(state, words[int(name[1:])])
    if name[0] == "f" and not name.startswith("cr"):
        at = FPRS // 4 + 2 * int(name[1:])
        return (words[at] << 32) | words[at + 1]
    if name.startswith("cr"):
        return (words[CR // 4] >> (31 - int(name[2:]))) & 1
    if name in ("ca", "so"):
        return 1 if words[XER // 4] & (XER_CA if name == "ca" else XER_SO) else 0
    return code_address(state, words[(CTR if name == "ctr" else LR) // 4])


def is_nan(bits):
    return (bits >> 52) & 0x7FF == 0x7FF and bits & ((1 << 52) - 1) != 0


def disagreements(check, state):
    found = []
    for item in check.post:
        if item.is_free:
            continue
        expected = item.value.contents
        if item.name == "mem":
            got = [state["mem"][(item.address + i) & 0xFFFFFFFF] for i in range(len(expected))]
            if got != expected:
                found.append("mem[%08x] is %s, not %s" % (item.address, bytes(got).hex(), bytes(expected).hex()))
            continue
        got = observed(state, item.name)
        if item.value.kind == "float" and expected is None:
            if not is_nan(got):
                found.append("%s is %016x, not a NaN" % (item.name, got))
        elif got != expected:
            found.append("%s is %x, not %x" % (item.name, got, expected))
    return found


def run_file(path, work):
    checks = read_checks(path)
    failures = []
    runnable = []
    for check in checks:
        if any(BLOCK <= page < BLOCK_END for page in pages_of(check)):
            failures.append("%s: %s\n  uses memory from %08x to %08x, which the harness keeps" %
                            (check.place(), check.title, BLOCK, BLOCK_END))
        else:
            runnable.append(check)
    with open(os.path.join(work, "code.s"), "w") as out:
        out.write("\t.text\n" + "\n".join(harness_code(index, check) for index, check in enumerate(runnable)) + "\n")
    with open(os.path.join(work, "main.c"), "w") as out:
        out.write(harness_c(runnable))
    program = os.path.join(work, "program")
    built = subprocess.run([COMPILER, "-O1", "-static", "-o", program, os.path.join(work, "main.c"),
                            os.path.join(work, "code.s")], capture_output=True, text=True)
    if built.returncode != 0:
        return failures + ["%s: the program does not build:\n%s" % (path, built.stderr)]
    run = subprocess.run([EMULATOR, program], capture_output=True, text=True, timeout=600)
    states, unmapped, started = observed_states(run.stdout.split("\n"))
    if run.returncode != 0:
        crashed = runnable[started].place() if started is not None and started not in states else path
        return failures + ["%s: the program ended with status %d here: %s" % (crashed, run.returncode, run.stderr)]
    for index, check in enumerate(runnable):
        if index not in states:
            problems = ["its memory (pages %s) is not available under %s" %
                        (" ".join("%08x" % page for page in pages_of(check) if page in unmapped), EMULATOR)]
        else:
            problems = disagreements(check, states[index])
        failures += ["%s: %s\n  %s\n  under %s: %s" % (check.place(), check.title, "\n  ".join(check.listing()),
                                                        EMULATOR, problem) for problem in problems]
    print("%s: %d checks run under %s" % (os.path.basename(path), len(states), EMULATOR))
    return failures


def main(files):
    skipped = skip_notice("running the checks", [COMPILER, EMULATOR])
    if skipped:
        return skipped
    failures = []
    with tempfile.TemporaryDirectory(prefix="velcor-qemu-") as work:
        for path in files:
            try:
                failures += run_file(path, work)
            except CheckError as error:
                failures.append(str(error))
    for failure in failures:
        print("FAILED %s" % failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
