// The single output file of the run, the chosen output syntax and the
// keywords of the three checker languages. No printer writes a keyword of its
// own: each asks this module, so one table decides every syntax.
#ifndef VELCOR_PARSE_COMMON_H
#define VELCOR_PARSE_COMMON_H

#include <ostream>

// The three checker languages of the keyword tables, then SMT-LIB 2, whose
// exact obligations have their own writer (smt2_output) and share only the
// frame: its comment character is ";".
enum output_format_t { ICS = 0, CVC = 1, TLV = 2, MAX_FORMAT = 3, SMT2 = 4 };

// The side of the comparison a name belongs to: source names print with "s".
enum system_t { TARGET = 0, SOURCE = 1 };

// Pre-state or post-state version of a variable: primed names print with "P".
enum prime_t { NOPRIME = 0, PRIME = 1 };

// Output file. The name is the prefix followed by a counter shared by both
// forms ("a_stdout" gives a_stdout0 for the first file of the run).
void setOutFile(const char* a_prefix);
void setOutFile();
// The stream of the redirection, else of the open file; a run without
// either is an internal error. Every printer asks for it, so it is inline.
inline std::ostream* getOutFile();
void resetOutFile();
bool outFileIsOpen();
// Sends all output to a_stream instead of the file (null restores the file);
// lets a run be embedded or observed without touching the file system.
// Returns the stream that was in place before.
std::ostream* setOutStream(std::ostream* a_stream);
bool outStreamIsSet();
// Back to the state of a new process: file closed, counter 0, syntax ICS,
// the no-if flag clear, the CVC assertion keywords restored.
void resetCommon();

void setOutFormat(output_format_t a_format);
inline output_format_t getOutFormat();

namespace common_detail {
// What getOutFile gives, kept up to date by the functions that open, close
// and redirect the output: null when there is none.
extern std::ostream* current_output;
[[noreturn]] void noOutput();
// The syntax in force, which every operand's name is checked against.
extern output_format_t format;
} // namespace common_detail

inline output_format_t getOutFormat()
{
    return common_detail::format;
}

inline std::ostream* getOutFile()
{
    if (std::ostream* output = common_detail::current_output)
        return output;
    common_detail::noOutput();
}

void setSkipPrintIf();
bool skipPrintIf();

// The comment character: '%', '%', '#' for ICS, CVC, TLV, and ';' for
// SMT-LIB 2. Every annotation line starts with it, so it is inline.
inline char commentChar()
{
    const output_format_t format = getOutFormat();
    return format == SMT2 ? ';' : format == TLV ? '#' : '%';
}
const char* assertStr();
const char* checkStr();
const char* andCheckStr();
const char* endStr();
const char* andStr();
const char* orStr();
const char* notStr();
const char* ifStr();
const char* thenStr();
const char* elseStr();
const char* endIfStr();
const char* addressStr();
const char* ptrSignStr();
const char* fieldSignStr();

// Make further CVC assertions continue one conjunction ("AND " ... " "), and
// back ("ASSERT " ... ";"). The other syntaxes are not touched.
void putAndStr();
void putAssertStr();

// Pairs of source and target names for the mapping output.
void printPair(const char* a_source_var, const char* a_target_var, char a_prefix);
void printPairofArrays(const char* a_source_var, const char* a_target_var, const char* a_source_index,
                       const char* a_target_index, char a_prefix);

#endif
