#!/usr/bin/env python3
"""Validates velcor's exact obligations of compiled step functions against
their execution under qemu-ppc.

    validate.py VELCOR LEVEL [NODE.c...]

LEVEL is an optimisation level (O0, O1, O2, Os); without NODE.c, every step
function of this directory. Each node is compiled with powerpc-linux-gnu-gcc
at LEVEL (and the flags of its "cflags:" comment line) and linked with
harness.c into a static executable, which runs the step under qemu-ppc on
VELCOR_SEMANTIC_INPUTS pseudo-random states (20 unless set). velcor writes
the obligations of the executable's step (-smt2, -unroll of the node's
"unroll:" line, else 1), and z3 and cvc5, one process each per node, must
answer, with r3 and r1 as the step got them and the structures' bytes before the step in MEM:
sat to the obligations, and unsat once some byte of the structures in PMEM
differs from what the step wrote (a float that is a NaN after the step only
has to be a NaN: the obligations leave NaN payloads free).

A node that velcor refuses for an instruction without exact meaning is
listed with the reason, which must be one that the README names (float
record forms, tw and twi, special registers other than LR and CTR).

A solver that gives up on a query (unknown, after QUERY_SECONDS), or that
has not answered for every input after NODE_SECONDS, leaves the node not
validated, with that reason; it is no wrong answer.

Prints "N of M functions validated" (M: the nodes at this level), each
other node with its reason, and the distribution of each solver's times per
query. Exit status 1 on a wrong answer or a refusal for a reason the README
does not name, 77 when a tool is absent, 0 otherwise.
"""

import glob
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True
HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.dirname(HERE))
from toolchain import (COMPILER, EMULATOR, SOLVERS, InteractiveSolver, SolverError, SolverTimeout,
                       skip_notice)

LEVELS = ("O0", "O1", "O2", "Os")
DEFAULT_FLAGS = ["-fno-pie"]
# How often the obligations follow a loop round: a node with a loop says
# ("unroll: N") one more than its rounds, which shows each exit and keeps
# the obligations small (they grow with the square of the bound at -O0).
UNROLL = ["1"]
# A solver that gives up on a query (unknown) is asked no more about the
# node: that is no wrong answer, but the node is not validated.
QUERY_SECONDS = 20
# Nor is a node whose inputs take a solver longer than this in all.
NODE_SECONDS = 240
# The bytes of memory besides the structures' (the stack, the rest).
OTHER_BYTES = "other_bytes"
# The instructions the README lists as without exact meaning, as velcor names them.
NAMED_REFUSALS = re.compile(r"no exact semantics for (f[a-z]+\.|tw|twi|m[ft]spr of special register \d+)$")


class NodeFailure(Exception):
    pass


def run(command, cwd, timeout=300):
    done = subprocess.run(command, cwd=cwd, capture_output=True, text=True, timeout=timeout)
    if done.returncode != 0:
        raise NodeFailure("%s ended with status %d:\n%s%s" % (os.path.basename(command[0]), done.returncode,
                                                              done.stdout, done.stderr))
    return done.stdout


def node_setting(source, name, default):
    """The words of the node's comment line "NAME: WORDS", or default."""
    with open(source) as text:
        for line in text:
            found = re.search(r"\b%s:(.*?)(\*/)?$" % name, line)
            if found:
                return found.group(1).split()
    return default


def build(source, level, harness, work):
    """The node's static executable."""
    node = os.path.join(work, "node.o")
    program = os.path.join(work, os.path.basename(source)[:-2] + "." + level)
    run([COMPILER, "-" + level, "-g", "-I", HERE, "-c", "-o", node] + node_setting(source, "cflags", DEFAULT_FLAGS) +
        [source], work)
    run([COMPILER, "-static", "-no-pie", "-o", program, node, harness], work)
    return program


class Layout:
    """Where the structures are and which bytes hold floats, from the
    program's first lines."""

    def __init__(self, lines):
        fields = lines[0].split()
        self.m_state, self.m_state_size = int(fields[1], 16), int(fields[2])
        self.m_other, self.m_other_size = int(fields[3], 16), int(fields[4])
        # address -> (byte count, exponent and significand widths) of each float
        self.m_floats = {}
        for line in lines[1:]:
            _, in_other, offset, kind, count = line.split()
            if kind in "fd":
                size = 4 if kind == "f" else 8
                base = (self.m_other if in_other == "1" else self.m_state) + int(offset)
                for i in range(int(count)):
                    self.m_floats[base + size * i] = (size, (8, 24) if kind == "f" else (11, 53))

    def addresses(self):
        return ([self.m_state + i for i in range(self.m_state_size)] +
                [self.m_other + i for i in range(self.m_other_size)])


class Input:
    def __init__(self, seed, r1, before, after):
        self.m_seed = seed
        self.m_r1 = r1
        self.m_before = before  # bytes of the state, then of the second structure
        self.m_after = after


def execute(program, inputs, work):
    """The layout and the inputs the step ran on, as the program reports them."""
    lines = run([EMULATOR, program, "1", str(inputs)], work).split("\n")
    header = [line for line in lines if line.startswith(("layout", "member"))]
    layout = Layout(header)
    runs = []
    before = None
    for line in lines:
        fields = line.split()
        if not fields:
            continue
        if fields[0] == "before":
            before = bytes.fromhex("".join(fields[1:]))
        elif fields[0] == "input":
            seed, r1 = int(fields[1]), int(fields[2], 16)
        elif fields[0] == "after":
            runs.append(Input(seed, r1, before, bytes.fromhex("".join(fields[1:]))))
    if len(runs) != inputs:
        raise NodeFailure("%s reported %d of %d runs" % (EMULATOR, len(runs), inputs))
    return layout, runs


def obligations(velcor, program, source, work):
    """The obligations' lines, or the reason velcor refused the node."""
    output = os.path.join(work, "obligations.smt2")
    done = subprocess.run([velcor, program, "-d", program, "-u", os.path.basename(source), "-n", "step", "-smt2",
                           "-unroll"] + node_setting(source, "unroll", UNROLL) + ["-q", "-o", output], cwd=work, capture_output=True, text=True, timeout=300)
    if done.returncode == 0 and not done.stderr:
        with open(output) as text:
            return text.read().split("\n"), None
    reasons = [line.split(": ", 2)[-1] for line in done.stderr.split("\n") if "no exact semantics" in line]
    if done.returncode == 1 and reasons:
        return None, sorted(set(reasons))
    raise NodeFailure("velcor ended with status %d:\n%s" % (done.returncode, done.stderr))


def byte_term(memory, address):
    return "(select %s #x%08x)" % (memory, address)


def differs(layout, after):
    """The disjunction: some byte of the structures in PMEM is not the one
    the step wrote (a NaN float: is no NaN)."""
    terms = []
    addresses = layout.addresses()
    index = 0
    while index < len(addresses):
        address = addresses[index]
        found = layout.m_floats.get(address)
        if found and is_nan(after[index:index + found[0]], found[1]):
            size, (exponent, significand) = found
            word = "(concat %s)" % " ".join(byte_term("PMEM", address + i) for i in range(size))
            terms.append("(not (fp.isNaN ((_ to_fp %d %d) %s)))" % (exponent, significand, word))
            index += size
            continue
        terms.append("(not (= %s #x%02x))" % (byte_term("PMEM", address), after[index]))
        index += 1
    return "(or %s)" % " ".join(terms)


def is_nan(data, widths):
    exponent_bits = widths[0]
    value = int.from_bytes(data, "big")
    significand_bits = len(data) * 8 - 1 - exponent_bits
    exponent = (value >> significand_bits) & ((1 << exponent_bits) - 1)
    return exponent == (1 << exponent_bits) - 1 and value & ((1 << significand_bits) - 1) != 0


class Validation:
    """The answers of one solver on one node's inputs."""

    def __init__(self, solver_name):
        self.m_solver = solver_name
        self.m_problems = []  # wrong answers
        self.m_undecided = None  # the first query the solver gave up on
        self.m_times = []

    def run(self, lines, layout, runs):
        # Each query starts from no assertion, for the solvers answer within
        # milliseconds what takes them seconds after an earlier (check-sat)
        # or under push and pop, where they drop their preprocessing; the
        # declarations stay, the assertions (shared subterms' equalities
        # among them) are sent again.
        definitions = [line for line in lines if not line.startswith("(assert")]
        assertions = [line for line in lines if line.startswith("(assert")]
        if any(line.count("(") != line.count(")") for line in assertions):
            raise NodeFailure("an assertion of the obligations spans several lines")
        solver = InteractiveSolver(self.m_solver, QUERY_SECONDS)
        try:
            solver.send(["(set-option :global-declarations true)"] + definitions +
                        ["(declare-const %s (Array (_ BitVec 32) (_ BitVec 8)))" % OTHER_BYTES])
            solver.sync()  # the queries' times leave the parsing out
            started = time.monotonic()
            for number, one in enumerate(runs):
                if not self.m_undecided and time.monotonic() - started > NODE_SECONDS:
                    self.m_undecided = "%s answered for %d of %d inputs in %d s" % (
                        self.m_solver, number, len(runs), NODE_SECONDS)
                if self.m_undecided:
                    break
                self.ask(solver, assertions, layout, one)
        except SolverTimeout as error:
            self.m_undecided = str(error)
        except SolverError as error:
            self.m_problems.append(str(error))
        finally:
            solver.close()

    def ask(self, solver, assertions, layout, one):
        facts = ["(assert (= r3 #x%08x))" % layout.m_state, "(assert (= r1 #x%08x))" % one.m_r1]
        # MEM as the structures' bytes stored over the other bytes: the
        # solvers substitute it and fold the code's arithmetic to constants,
        # which they do not do from facts about single bytes.
        memory = OTHER_BYTES
        for address, byte in zip(layout.addresses(), one.m_before):
            memory = "(store %s #x%08x #x%02x)" % (memory, address, byte)
        facts.append("(assert (= MEM %s))" % memory)
        answer = self.query(solver, assertions + facts, "sat", one, "with the obligations and the state before")
        if answer == "sat":
            answer = self.query(solver, assertions + facts + ["(assert %s)" % differs(layout, one.m_after)], "unsat",
                                one, "when some byte differs")
            if answer == "sat":
                self.m_problems[-1] += self.differing_byte(solver, layout, one)

    def query(self, solver, assertions, expected, one, what):
        """Asks one question afresh; an unexpected answer is a problem, a
        solver that gives up leaves the node undecided."""
        solver.send(["(reset-assertions)"] + assertions)
        answer, seconds = solver.check_sat()
        self.m_times.append(seconds)
        if answer == "unknown":
            self.m_undecided = "input %d: %s gave up within %d s %s" % (one.m_seed, self.m_solver, QUERY_SECONDS, what)
        elif answer != expected:
            self.m_problems.append("input %d: %s answers %s, not %s, %s" % (one.m_seed, self.m_solver, answer,
                                                                            expected, what))
        return answer

    def differing_byte(self, solver, layout, one):
        addresses = layout.addresses()
        values = solver.get_value([byte_term("PMEM", address) for address in addresses])
        # A byte's value as z3 (#xNN) or cvc5 (#bNNNNNNNN) writes it.
        found = [int(hex_digits or bits, 16 if hex_digits else 2)
                 for hex_digits, bits in re.findall(r"#x([0-9a-f]{2})\)|#b([01]{8})\)", values)]
        for address, real, model in zip(addresses, one.m_after, found):
            if model != real:
                return ": PMEM[%08x] = #x%02x, the step wrote #x%02x (before: #x%02x)" % (
                    address, model, real, one.m_before[addresses.index(address)])
        return ": %s" % values[:400]


def validate(source, level, velcor, harness, inputs, times, work):
    """None when the node is validated, else (is_failure, reason)."""
    program = build(source, level, harness, work)
    layout, runs = execute(program, inputs, work)
    lines, refusal = obligations(velcor, program, source, work)
    if refusal:
        unnamed = [reason for reason in refusal if not NAMED_REFUSALS.match(reason)]
        return bool(unnamed), "velcor: %s%s" % ("; ".join(refusal),
                                                " (not a reason the README names)" if unnamed else "")
    problems, undecided = [], []
    for solver in SOLVERS:
        validation = Validation(solver)
        validation.run(lines, layout, runs)
        times[solver] += validation.m_times
        problems += validation.m_problems
        undecided += [validation.m_undecided] if validation.m_undecided else []
    if problems:
        return True, "\n    ".join(problems[:6])
    if undecided:
        return False, "\n    ".join(undecided)
    return None


def distribution(values):
    ordered = sorted(values)
    p90 = ordered[min(len(ordered) - 1, int(0.9 * len(ordered)))]
    return "min %.3f s, median %.3f s, p90 %.3f s, max %.3f s over %d queries" % (
        ordered[0], statistics.median(ordered), p90, ordered[-1], len(ordered))


def main(arguments):
    if len(arguments) < 2 or arguments[1] not in LEVELS:
        print("usage: validate.py VELCOR {%s} [NODE.c...]" % ",".join(LEVELS), file=sys.stderr)
        return 2
    skipped = skip_notice("validating step functions", list(SOLVERS) + [COMPILER, EMULATOR])
    if skipped:
        return skipped
    velcor, level = os.path.abspath(arguments[0]), arguments[1]
    sources = [os.path.abspath(path) for path in arguments[2:]] or sorted(
        path for path in glob.glob(os.path.join(HERE, "*.c")) if os.path.basename(path) != "harness.c")
    inputs = int(os.environ.get("VELCOR_SEMANTIC_INPUTS", "20"))
    times = {solver: [] for solver in SOLVERS}
    validated, others, failed = 0, [], False
    with tempfile.TemporaryDirectory(prefix="velcor-nodes-") as work:
        harness = os.path.join(work, "harness.o")
        run([COMPILER, "-O1", "-fno-pie", "-I", HERE, "-c", "-o", harness, os.path.join(HERE, "harness.c")], work)
        for source in sources:
            name = "%s -%s" % (os.path.basename(source), level)
            started = time.monotonic()
            try:
                outcome = validate(source, level, velcor, harness, inputs, times, work)
            except (NodeFailure, subprocess.TimeoutExpired) as error:
                outcome = True, str(error)
            if outcome is None:
                print("validated %s in %.1f s" % (name, time.monotonic() - started), flush=True)
                validated += 1
                continue
            failed = failed or outcome[0]
            others.append("%s %s: %s" % ("FAILED" if outcome[0] else "not validated", name, outcome[1]))
    print("%d of %d functions validated at -%s (%d inputs each, z3 and cvc5)" % (validated, len(sources), level,
                                                                              inputs))
    for other in others:
        print(other)
    for solver, values in times.items():
        if values:
            print("%s per query: %s" % (solver, distribution(values)))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
