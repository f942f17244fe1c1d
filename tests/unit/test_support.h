// Helpers shared by the unit tests: capturing the output file and the
// standard streams, and a fresh set of process-wide objects per test.
#ifndef VELCOR_TESTS_TEST_SUPPORT_H
#define VELCOR_TESTS_TEST_SUPPORT_H

#include <iostream>
#include <sstream>
#include <string>

#include "common.h"
#include "main_ppc.h"
#include "parse.h"
#include "symbols.h"

// Everything printed to the output file goes to this object while it lives
// (captures nest: the previous destination comes back at the end).
class OutputCapture {
public:
    OutputCapture() : m_previous(setOutStream(&m_text)) {}
    ~OutputCapture() { setOutStream(m_previous); }
    std::string text() const { return m_text.str(); }
    void clear() { m_text.str(""); }

private:
    std::ostringstream m_text;
    std::ostream* m_previous;
};

// Everything written to a standard stream (std::cout or std::cerr) goes to
// this object while it lives.
class StreamCapture {
public:
    explicit StreamCapture(std::ostream& a_stream) : m_stream(a_stream), m_saved(a_stream.rdbuf(m_text.rdbuf())) {}
    ~StreamCapture() { m_stream.rdbuf(m_saved); }
    std::string text() const { return m_text.str(); }

private:
    std::ostream& m_stream;
    std::ostringstream m_text;
    std::streambuf* m_saved;
};

// A test run's world: the process-wide objects as a new process has them,
// the output syntax chosen, and a target operand table in
// parse_symbol_table. Everything is reset again at the end.
class RunFixture {
public:
    explicit RunFixture(output_format_t a_format = CVC)
    {
        resetRunState();
        setOutFormat(a_format);
        parse_symbol_table = new Symbols(TARGET);
    }
    ~RunFixture() { resetRunState(); }
    Symbols& symbols() { return *parse_symbol_table; }
};

#endif
