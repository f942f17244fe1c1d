#!/usr/bin/env python3
"""Checks velcor's exact meaning of single instructions on edge values.

    run_checks.py VELCOR MKDWARF FILE.checks...

For each check (see checks.py for the format) velcor writes the obligations
of its code (-smt2); the pre-state is asserted on top, and z3 and cvc5 must
both answer sat with the pre-state alone, unsat once some expected value
after the code differs, and sat for each possibility of a value that is
deliberately free. One incremental session per solver per file. Exit
status 0 when every check passes, 1 otherwise, 77 when a solver is absent.
"""

import os
import subprocess
import sys
import tempfile

# Tests leave the source tree as it was: no compiled module beside checks.py.
sys.dont_write_bytecode = True
HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.dirname(HERE))
from checks import CheckError, read_checks
from toolchain import MODEL_OPTIONS, SESSION_SECONDS, SOLVERS, run_solver, skip_notice


def word(value):
    return "#x%08x" % value


def state_term(item, after):
    """The term of a state item (for mem: one per byte)."""
    prefix = "P" if after else ""
    if item.name == "mem":
        memory = prefix + "MEM"
        count = len((item.value or item.alternatives[0]).contents)
        return ["(select %s %s)" % (memory, word((item.address + i) & 0xFFFFFFFF)) for i in range(count)]
    return [prefix + item.name]


def value_terms(value):
    if value.kind == "word":
        return [word(value.contents)]
    if value.kind == "bit":
        return ["true" if value.contents else "false"]
    if value.kind == "float":
        return ["((_ to_fp 11 53) #x%016x)" % value.contents]
    return ["#x%02x" % byte for byte in value.contents]


def equalities(item, value, after):
    if value.kind == "float" and value.contents is None:
        return ["(fp.isNaN %s)" % state_term(item, after)[0]]
    return ["(= %s %s)" % pair for pair in zip(state_term(item, after), value_terms(value))]


def conjunction(terms):
    return terms[0] if len(terms) == 1 else "(and %s)" % " ".join(terms)


class Query:
    """One (check-sat) of a session and the answer it must get."""

    def __init__(self, check, what, expected, assertions):
        self.check = check
        self.what = what
        self.expected = expected
        self.assertions = assertions  # asserted on top of the pre-state


class Session:
    """The queries of one file, for one solver run."""

    def __init__(self):
        self.text = ["(set-logic ALL)"]
        self.queries = []
        self.bases = {}  # check -> its obligations and pre-state

    def add(self, check, obligations):
        pre = ["(assert %s)" % term for item in check.pre for term in equalities(item, item.value, False)]
        base = obligations + pre
        self.bases[check] = base
        self.text += base
        self.ask(Query(check, "the pre-state alone", "sat", []))
        fixed = [item for item in check.post if not item.is_free]
        if fixed:
            differs = [term for item in fixed for term in equalities(item, item.value, True)]
            self.ask(Query(check, "some expected value differs", "unsat",
                           ["(assert (not %s))" % conjunction(differs)]))
        for item in check.post:
            for value in item.alternatives:
                what = "%s can be %s" % (item.name, " ".join(value_terms(value)))
                self.ask(Query(check, what, "sat", ["(assert %s)" % conjunction(equalities(item, value, True))]))
        # Starting afresh keeps z3 fast: declarations under a push slow
        # down every later query of the session.
        self.text += ["(reset)", "(set-logic ALL)"]

    def ask(self, query):
        self.queries.append(query)
        if query.assertions:
            self.text += ["(push 1)"] + query.assertions + ["(check-sat)", "(pop 1)"]
        else:
            self.text.append("(check-sat)")


def obligations_of(check, velcor, executable, work):
    """velcor's obligations for the check's code, without the logic line."""
    listing = os.path.join(work, "listing.s")
    output = os.path.join(work, "obligations.smt2")
    with open(listing, "w") as out:
        out.write("\n".join(check.listing()) + "\n")
    run = subprocess.run([velcor, listing, "-d", executable, "-u", "node.c", "-n", "node", "-smt2", "-q", "-o", output],
                         cwd=work, capture_output=True, text=True, timeout=120)
    if run.returncode != 0 or run.stderr or run.stdout:
        raise RuntimeError("velcor ended with status %d:\n%s%s" % (run.returncode, run.stdout, run.stderr))
    with open(output) as text:
        return [line.rstrip("\n") for line in text if not line.startswith("(set-logic")]


def explain(solver, session, query, work):
    """What the solver finds after the code when the query got the wrong answer."""
    if query.expected != "unsat":
        return ""
    terms = [term for item in query.check.post if not item.is_free for term in state_term(item, True)]
    script = ["(set-logic ALL)"] + session.bases[query.check] + query.assertions
    script += ["(check-sat)", "(get-value (%s))" % " ".join(terms)]
    path = os.path.join(work, "explain.smt2")
    with open(path, "w") as out:
        out.write("\n".join(script) + "\n")
    lines, _, _ = run_solver(solver, path, MODEL_OPTIONS[solver])
    return "  %s finds after the code: %s\n" % (solver, " ".join(line.strip() for line in lines[1:]))


def check_file(path, velcor, executable, work):
    checks = read_checks(path)
    session = Session()
    failures = []
    for check in checks:
        try:
            session.add(check, obligations_of(check, velcor, executable, work))
        except (RuntimeError, subprocess.TimeoutExpired) as error:
            failures.append("%s: %s\n  %s" % (check.place(), check.title, error))
    script_path = os.path.join(work, "session.smt2")
    with open(script_path, "w") as out:
        out.write("\n".join(session.text) + "\n")
    times = []
    for solver in SOLVERS:
        try:
            lines, errors, seconds = run_solver(solver, script_path)
        except subprocess.TimeoutExpired:
            failures.append("%s: %s did not answer within %d s" % (path, solver, SESSION_SECONDS))
            continue
        times.append("%s %.1f s" % (solver, seconds))
        answers = [line.strip() for line in lines if line.strip()]
        problems = [line for line in answers if line not in ("sat", "unsat", "unknown")]
        if problems or len(answers) != len(session.queries):
            failures.append("%s: %s gave %d answers to %d queries:\n%s%s" %
                            (path, solver, len(answers), len(session.queries), "\n".join(problems[:5]), errors))
            continue
        for query, answer in zip(session.queries, answers):
            if answer != query.expected:
                check = query.check
                failures.append("%s: %s\n  %s\n  %s answers %s, not %s, when %s\n%s" %
                                (check.place(), check.title, "\n  ".join(check.listing()), solver, answer,
                                 query.expected, query.what, explain(solver, session, query, work)))
    print("%s: %d checks, %d queries for each solver (%s)" %
          (os.path.basename(path), len(checks), len(session.queries), ", ".join(times)))
    return failures


def main(arguments):
    if len(arguments) < 3:
        print("usage: run_checks.py VELCOR MKDWARF FILE.checks...", file=sys.stderr)
        return 2
    # velcor runs in a directory of its own: the paths must not depend on ours.
    velcor, mkdwarf = os.path.abspath(arguments[0]), os.path.abspath(arguments[1])
    files = [os.path.abspath(path) for path in arguments[2:]]
    skipped = skip_notice("the instruction checks", list(SOLVERS))
    if skipped:
        return skipped
    failures = []
    with tempfile.TemporaryDirectory(prefix="velcor-checks-") as work:
        executable = os.path.join(work, "node")
        built = subprocess.run([mkdwarf, os.path.join(HERE, "node.dwarf"), executable], capture_output=True, text=True)
        if built.returncode != 0:
            print("mkdwarf failed: %s" % built.stderr, file=sys.stderr)
            return 1
        for path in files:
            try:
                failures += check_file(path, velcor, executable, work)
            except CheckError as error:
                failures.append(str(error))
    for failure in failures:
        print("FAILED %s" % failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
