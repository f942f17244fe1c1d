// The command line. One table of options is the source of the reading of the
// arguments, of the --help text and of the manual page's OPTIONS section: an
// option exists once it has its entry there.
#ifndef VELCOR_PARSE_COMMAND_LINE_H
#define VELCOR_PARSE_COMMAND_LINE_H

#include <fstream>
#include <ostream>

#include "common.h"

// What the arguments ask for. The run applies it; reading the arguments only
// records it, apart from the progress lines of -d, -u, -n and -debug and the
// opening of the executable, which come in the order of the arguments.
struct CommandLine {
    const char* m_listing = nullptr;
    const char* m_executable = nullptr;
    const char* m_unit = nullptr;
    const char* m_node = nullptr;
    // -o: the output file, or null for a_stdout0.
    const char* m_output = nullptr;
    output_format_t m_format = CVC;
    // -unroll: how often loops are followed round under -smt2.
    int m_unroll = 64;
    bool m_no_if = false;
    bool m_debug = false;
    bool m_quiet = false;
    // Set by an option that is answered instead of a run (--help): writes
    // the answer to standard output, and the run ends with status 0.
    void (*m_answer)(std::ostream& a_out) = nullptr;
    std::ifstream m_executable_file;
};

struct Option {
    const char* m_name;
    const char* m_alias;   // another spelling, or null
    const char* m_value;   // the name of the value it takes, or null
    const char* m_summary; // one line, for --help and the manual
    const char* m_detail;  // more for the manual, or null
    // Read before anything is printed (see readEarlyOptions).
    bool m_early;
    void (*m_apply)(CommandLine& a_line, const char* a_value);
};

// The options, in the order --help and the manual list them; ends with an
// entry whose name is null.
extern const Option options[];

// The option spelled a_argument, or null.
const Option* findOption(const char* a_argument);

struct ExitStatus {
    int m_status;
    const char* m_meaning;
};
// Ends with an entry whose meaning is null.
extern const ExitStatus exit_statuses[];

// The usage line of --help and of the manual's synopsis, after the name.
extern const char* const usage_arguments;
// The usage text of a wrong command line.
extern const char* const usage_str;

// The options that decide what is printed at all: an answer instead of a
// run (the first one given wins) and quiet. They are looked for among all
// the arguments, before anything is printed, skipping the values of options
// that take one; the look stops at an unknown option, as the reading does.
void readEarlyOptions(int argc, char** argv, CommandLine& a_line);

// Applies the other options after the listing, in order. An unknown option,
// a value missing at the end, or no executable, unit or node stops the run
// with the usage text.
void readOptions(int argc, char** argv, CommandLine& a_line);

void writeHelp(std::ostream& a_out);
void writeVersion(std::ostream& a_out);

#endif
