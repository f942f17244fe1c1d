// Entry points of the driver, usable by the program's main and by anything
// that runs velcor in-process (tests, fuzzers).
#ifndef VELCOR_PARSE_MAIN_PPC_H
#define VELCOR_PARSE_MAIN_PPC_H

// Capacity of the run's proposition registry (numbers 1 to 999).
constexpr int PROPOSITION_CAPACITY = 1000;

// What a run leaves behind: the process-wide objects as a new process has
// them (RESET), or as they are (LEAVE), for a program that ends right after
// the run and need not free, piece by piece, what the system takes back whole.
enum class AfterRun { RESET, LEAVE };

// One complete run on a command line: returns the exit status (0, or the
// status of an orderly stop after its message on standard error). Standard
// output and the output file are flushed when it returns.
int runVelcor(int argc, char** argv, AfterRun a_after = AfterRun::RESET);

// Frees what a run built and resets every process-wide object.
void resetRunState();

void print_uninterpreted_function_declarations();

#endif
