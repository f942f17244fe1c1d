// The two ways a run can end early.
//
// An orderly stop is the answer to bad input or an exhausted capacity: the
// code that finds the problem calls stopRun with the exact text for standard
// error; the driver writes it and ends the run with the stop's status. Raising
// it as an exception keeps every stop in one place and lets a run be embedded
// (tests, fuzzers) without ending the process.
//
// An internal error is a violated precondition of a caller, a programming
// error that no input may reach: VELCOR_ASSERT writes the condition text, the
// source and the operation, then aborts.
#ifndef VELCOR_MISC_STOP_H
#define VELCOR_MISC_STOP_H

#include <stdexcept>
#include <string>

class OrderlyStop : public std::runtime_error {
public:
    OrderlyStop(const std::string& a_message, int a_status)
        : std::runtime_error(a_message), m_status(a_status) {}
    // The complete text for standard error, line ends included.
    const char* message() const { return what(); }
    int status() const { return m_status; }

private:
    int m_status;
};

// Ends the run: a_message (written as is, so it carries its own line ends)
// on standard error, then exit status a_status.
[[noreturn]] void stopRun(const std::string& a_message, int a_status = 1);

// Ends the run with "Capacity exhausted: " a_what on standard error.
[[noreturn]] void stopCapacity(const std::string& a_what);

[[noreturn]] void internalError(const char* a_condition, const char* a_file, const char* a_function);

#define VELCOR_ASSERT(condition) \
    ((condition) ? static_cast<void>(0) : internalError(#condition, __FILE__, __func__))

#endif
