#!/usr/bin/env python3
"""Every listing that velcor accepts under -smt2 gives a file the solvers
accept.

    accepted.py VELCOR MKDWARF DISASM E2E_DIR EXAMPLES_DIR

Each end-to-end case (E2E_DIR/cases/NAME: its inputs, executables built
from *.dwarf, its setup.sh) is run again with -smt2 in place of its format
option, each equivalence case's listing with its DWARF 1 executable, and
the bundled example; every run that ends with status 0 must write a file
to which z3 and cvc5, with (check-sat) appended, answer sat (files of more
than MAX_BYTES, and files a solver does not answer within SOLVER_SECONDS,
are named instead). Cases without
a format option (wrong command lines) are left out. Exit status 0 when all
answer sat, 1 otherwise, 77 when a solver is absent.
"""

import glob
import os
import shutil
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from toolchain import SKIPPED, SOLVERS, run_solver, skip_notice

FORMATS = ("-cvc", "-tlv", "-ics", "-smt2")
# The stress cases' files (100,000 calls, say) take z3 beyond a quarter of
# an hour: they are counted and named, not solved.
MAX_BYTES = 1000000
# A solver that has not answered by then is named, as no wrong answer.
SOLVER_SECONDS = 30


class Tools:
    def __init__(self, arguments):
        self.m_velcor, self.m_mkdwarf, self.m_disasm = [os.path.abspath(path) for path in arguments[:3]]


def prepare(case_dir, tools, work):
    """The case's inputs in work, as the end-to-end runner lays them out;
    False when its setup skips it."""
    for path in glob.glob(os.path.join(case_dir, "*")):
        if os.path.isfile(path):
            shutil.copy(path, work)
    for description in glob.glob(os.path.join(work, "*.dwarf")):
        subprocess.run([tools.m_mkdwarf, description, description[:-len(".dwarf")]], check=True,
                       capture_output=True)
    setup = os.path.join(case_dir, "setup.sh")
    if os.path.exists(setup):
        environment = dict(os.environ, MKDWARF=tools.m_mkdwarf, DISASM=tools.m_disasm)
        done = subprocess.run(["sh", setup], cwd=work, env=environment, capture_output=True, text=True)
        if done.returncode == SKIPPED:
            return False
        if done.returncode != 0:
            raise RuntimeError("setup failed:\n%s%s" % (done.stdout, done.stderr))
    return True


def case_arguments(case_dir):
    """The case's command line with -smt2 for its format option, or None."""
    with open(os.path.join(case_dir, "args")) as text:
        arguments = [line.rstrip("\n").replace("$CASE", case_dir) for line in text]
    if not any(argument in FORMATS for argument in arguments):
        return None
    return ["-smt2" if argument in FORMATS else argument for argument in arguments]


def obligations(velcor, arguments, work):
    """The path of the file velcor wrote with -smt2, or None when it wrote none."""
    output = os.path.join(work, "accepted.smt2")
    done = subprocess.run([velcor] + arguments + ["-q", "-o", output], cwd=work, capture_output=True, timeout=300)
    # --help and --version end with status 0 and write nothing.
    return output if done.returncode == 0 and os.path.exists(output) else None


def solvers_accept(path):
    """The problems the solvers have with the file and (check-sat), and the
    solvers that did not answer within SOLVER_SECONDS."""
    with open(path, "a") as out:
        out.write("\n(check-sat)\n")
    problems, undecided = [], []
    for solver in SOLVERS:
        try:
            lines, errors, _ = run_solver(solver, path, seconds=SOLVER_SECONDS)
        except subprocess.TimeoutExpired:
            undecided.append(solver)
            continue
        answers = [line.strip() for line in lines if line.strip()]
        if answers != ["sat"]:
            problems.append("%s answers %s %s" % (solver, " ".join(answers)[:300], errors[:300]))
    return problems, undecided


def runs(tools, e2e_dir, examples_dir):
    """(name, directory to prepare, arguments) of every run to make."""
    for case_dir in sorted(glob.glob(os.path.join(e2e_dir, "cases", "*"))):
        arguments = case_arguments(case_dir) if os.path.exists(os.path.join(case_dir, "args")) else None
        if arguments:
            yield "e2e " + os.path.basename(case_dir), case_dir, arguments
    for case_dir in sorted(glob.glob(os.path.join(e2e_dir, "equivalence", "*"))):
        yield ("equivalence " + os.path.basename(case_dir), case_dir,
               ["listing.s", "-d", "node", "-u", "node.c", "-n", "step", "-smt2"])
    yield ("example", examples_dir,
           ["counter.s", "-d", "counter", "-u", "counter.c", "-n", "counter_step", "-smt2"])


def main(arguments):
    if len(arguments) != 5:
        print("usage: accepted.py VELCOR MKDWARF DISASM E2E_DIR EXAMPLES_DIR", file=sys.stderr)
        return 2
    skipped = skip_notice("the solvers' check of the obligations", list(SOLVERS))
    if skipped:
        return skipped
    tools = Tools(arguments)
    e2e_dir, examples_dir = os.path.abspath(arguments[3]), os.path.abspath(arguments[4])
    accepted, refused, failures, too_large, too_slow = 0, 0, [], [], []
    for name, case_dir, case_args in runs(tools, e2e_dir, examples_dir):
        with tempfile.TemporaryDirectory(prefix="velcor-accepted-") as work:
            try:
                if not prepare(case_dir, tools, work):
                    continue
                path = obligations(tools.m_velcor, case_args, work)
            except (RuntimeError, subprocess.CalledProcessError, subprocess.TimeoutExpired) as error:
                failures.append("%s: %s" % (name, error))
                continue
            if path is None:
                refused += 1
                continue
            size = os.path.getsize(path)
            if size > MAX_BYTES:
                too_large.append("%s (%d bytes)" % (name, size))
                continue
            accepted += 1
            problems, undecided = solvers_accept(path)
            failures += ["%s: %s" % (name, problem) for problem in problems]
            too_slow += ["%s (%s)" % (name, " ".join(undecided))] if undecided else []
    print("%d files velcor wrote under -smt2 given to z3 and cvc5 (%d runs wrote none)" % (accepted, refused))
    if too_slow:
        print("no answer within %d s: %s" % (SOLVER_SECONDS, ", ".join(too_slow)))
    if too_large:
        print("not given to the solvers, larger than %d bytes: %s" % (MAX_BYTES, ", ".join(too_large)))
    for failure in failures:
        print("FAILED %s" % failure)
    return 1 if failures or accepted == 0 else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
