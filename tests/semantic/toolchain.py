"""What the semantic tests share: the solvers and how they are run, the
cross compiler and the emulator, and the notice that skips a test when one
of them is absent.

A script imports it after putting tests/semantic on its path:

    sys.path.insert(0, os.path.dirname(HERE))
"""

import shutil
import subprocess
import threading
import time

COMPILER = "powerpc-linux-gnu-gcc"
EMULATOR = "qemu-ppc"
# CTest's SKIP_RETURN_CODE for these tests.
SKIPPED = 77
QUERY_SECONDS = 60
SESSION_SECONDS = 1800


def solver_command(solver, seconds=QUERY_SECONDS):
    """The solver's command line to read a script of several queries, each
    given at most seconds."""
    if solver == "z3":
        return ["z3", "-smt2", "-t:%d" % (seconds * 1000)]
    return ["cvc5", "--incremental", "--lang", "smt2", "--tlimit-per=%d" % (seconds * 1000)]


SOLVERS = {solver: solver_command(solver) for solver in ("z3", "cvc5")}
# What each needs to answer get-value.
MODEL_OPTIONS = {"z3": [], "cvc5": ["--produce-models"]}
# What each needs to read its commands from a pipe as they come.
PIPE_OPTIONS = {"z3": ["-in"], "cvc5": []}


def skip_notice(what, tools):
    """SKIPPED (printed with what the test needs) when one of tools is not
    installed, None when all are."""
    absent = [tool for tool in tools if shutil.which(tool) is None]
    if not absent:
        return None
    print("SKIPPED: %s needs %s; absent: %s" % (what, ", ".join(tools), ", ".join(absent)))
    return SKIPPED


def run_solver(solver, script_path, extra=(), seconds=SESSION_SECONDS):
    """The lines a solver prints for a whole script, what it wrote on
    standard error, and the seconds it took (subprocess.TimeoutExpired
    after seconds)."""
    started = time.monotonic()
    run = subprocess.run(SOLVERS[solver] + list(extra) + [script_path], capture_output=True, text=True,
                         timeout=seconds)
    return run.stdout.split("\n"), run.stderr, time.monotonic() - started


class SolverError(Exception):
    pass


class SolverTimeout(SolverError):
    """The solver did not answer in time, and was stopped."""


class InteractiveSolver:
    """One solver process fed through a pipe: commands are sent as they are
    made, and each (check-sat) is answered and timed on its own."""

    def __init__(self, solver, seconds=QUERY_SECONDS):
        self.m_name = solver
        # The solver's own limit does not cover parsing and some of its
        # preprocessing: past twice that, it is stopped.
        self.m_wait = 2 * seconds + 10
        self.m_stopped = False
        self.m_process = subprocess.Popen(solver_command(solver, seconds) + MODEL_OPTIONS[solver] + PIPE_OPTIONS[solver],
                                          stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                          stderr=subprocess.STDOUT, text=True)

    def name(self):
        return self.m_name

    def send(self, lines):
        # A busy solver stops reading: the write waits as a read does.
        self.guarded(lambda: self.m_process.stdin.write("\n".join(lines) + "\n"))

    def check_sat(self):
        """The answer to (check-sat) and the seconds it took."""
        self.send(["(check-sat)"])
        started = time.monotonic()
        answer = self.read_line()
        return answer, time.monotonic() - started

    def sync(self):
        """Waits until the solver has read what was sent."""
        self.send(['(echo "ready")'])
        self.read_line()

    def get_value(self, terms):
        """The solver's text for (get-value (terms...)), all on one line."""
        # An echo after it marks the end of an answer of several lines.
        self.send(["(get-value (%s))" % " ".join(terms), '(echo "end-of-values")'])
        lines = []
        while True:
            line = self.read_line()
            if line.strip('"') == "end-of-values":
                return " ".join(lines)
            lines.append(line)

    def guarded(self, action):
        """action's result, the solver stopped if it takes longer than m_wait."""
        watchdog = threading.Timer(self.m_wait, self.stop)
        watchdog.start()
        try:
            return action()
        except (BrokenPipeError, ValueError):
            if not self.m_stopped:
                raise SolverError("%s stopped (status %s)" % (self.m_name, self.m_process.wait()))
            return ""
        finally:
            watchdog.cancel()
            if self.m_stopped:
                raise SolverTimeout("%s did not answer within %d s" % (self.m_name, self.m_wait))

    def read_line(self):
        line = self.guarded(lambda: (self.m_process.stdin.flush(), self.m_process.stdout.readline())[1])
        if not line:
            raise SolverError("%s stopped (status %s)" % (self.m_name, self.m_process.wait()))
        if line.startswith("(error"):
            raise SolverError("%s: %s" % (self.m_name, line.strip()))
        return line.strip()

    def stop(self):
        self.m_stopped = True
        self.m_process.kill()

    def close(self):
        if self.m_process.poll() is None:
            try:
                self.m_process.stdin.close()
            except BrokenPipeError:
                pass
            try:
                self.m_process.wait(timeout=10)
            except subprocess.TimeoutExpired:
                self.m_process.kill()
                self.m_process.wait()
