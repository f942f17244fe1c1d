#include "command_line.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include "instruction_list.h"
#include "misc/stop.h"
#include "misc/trace.h"
#include "version.h"

const char* const usage_str =
    ": Usage: velcor <disasembler of concrete_system_file> -d <binary_file>\n"
    "          -u < compilation unit name> -n <node name>\n"
    "          -<output file format>: cvc | tlv | ics";

const char* const usage_arguments = "LISTING -d EXECUTABLE -u UNIT -n NODE [OPTION]...";

namespace {

void takeExecutable(CommandLine& a_line, const char* a_value)
{
    // Opened at once, so an error about it comes before later options.
    a_line.m_executable = a_value;
    misc::traceOut() << "executable file (dump) = " << a_value << '\n';
    a_line.m_executable_file.close();
    a_line.m_executable_file.clear();
    a_line.m_executable_file.open(a_value, std::ios::in | std::ios::binary);
    if (!a_line.m_executable_file.is_open())
        stopRun(std::string("Cannot open executable file ") + a_value + "\n");
}

} // namespace

const Option options[] = {
    {"-d", nullptr, "EXECUTABLE", "the ELF executable with the debugging information of the node",
     "The file is opened as soon as the option is read, so an error about it comes before errors about "
     "later options. Given twice, the second file replaces the first.",
     false, takeExecutable},
    {"-u", nullptr, "UNIT", "the compilation unit that defines the node", "Given twice, the second name counts.",
     false,
     [](CommandLine& a_line, const char* a_value) {
         a_line.m_unit = a_value;
         misc::traceOut() << " Unit = " << a_value << '\n';
     }},
    {"-n", nullptr, "NODE", "the node: the function whose code LISTING holds", "Given twice, the second name counts.",
     false,
     [](CommandLine& a_line, const char* a_value) {
         a_line.m_node = a_value;
         misc::traceOut() << " Node = " << a_value << '\n';
     }},
    {"-cvc", nullptr, nullptr, "obligations in the language of CVC (the default)",
     "Of several language options, the last one counts.", false,
     [](CommandLine& a_line, const char*) { a_line.m_format = CVC; }},
    {"-tlv", nullptr, nullptr, "obligations in the language of TLV", nullptr, false,
     [](CommandLine& a_line, const char*) { a_line.m_format = TLV; }},
    {"-ics", nullptr, nullptr, "obligations in the language of ICS", nullptr, false,
     [](CommandLine& a_line, const char*) { a_line.m_format = ICS; }},
    {"-smt2", nullptr, nullptr, "exact, bit-precise obligations in SMT-LIB 2",
     "Registers and memory are bit-vectors and arrays of bytes, floats IEEE floating point; every instruction "
     "has its exact meaning, and a listing with an instruction that has none ends the run with one message "
     "per such instruction. The file declares r0-r31, cr00-cr31, ca, so, lr, ctr, MEM (and f0-f31 when the "
     "node uses floats), their post-states with the prefix P, the branch propositions p1, p2, ... and "
     "unwound.",
     false, [](CommandLine& a_line, const char*) { a_line.m_format = SMT2; }},
    {"-unroll", nullptr, "N", "with -smt2, follow loops up to N iterations (default 64)",
     "A backward branch that can reach itself is followed round up to N times; the obligations state, as the "
     "proposition unwound, that every path left the loops within the bound, and assert the state after the "
     "code only where it holds. N runs from 1 to 100000.",
     false,
     [](CommandLine& a_line, const char* a_value) {
         char* end = nullptr;
         long bound = std::strtol(a_value, &end, 10);
         if (end == a_value || *end != '\0' || bound < 1 || bound > 100000)
             stopRun(std::string("Error: -unroll takes a number from 1 to 100000, not ") + a_value + "\n");
         a_line.m_unroll = static_cast<int>(bound);
     }},
    {"-o", nullptr, "FILE", "write FILE instead of a_stdout0, only if the run completes",
     "The obligations go to a temporary file in the directory of FILE, which replaces FILE when the run "
     "completes; a failed or interrupted run leaves an existing FILE as it was and removes the temporary "
     "file. A symbolic link is followed; a device or a pipe, such as /dev/null, is written directly.",
     false, [](CommandLine& a_line, const char* a_value) { a_line.m_output = a_value; }},
    {"-q", nullptr, nullptr, "quiet: no trace or progress lines, only failures and warnings",
     "Failure messages and the warnings that call for action (an instruction skipped for a missing operand "
     "or a field out of range, an unsupported opcode, an identifier that is too long, a node without formal "
     "parameters) still go to standard error. The output file is the same as without -q.",
     true, [](CommandLine& a_line, const char*) { a_line.m_quiet = true; }},
    {"-noif", nullptr, nullptr, "set the no-if flag (no output depends on it)", nullptr, false,
     [](CommandLine& a_line, const char*) { a_line.m_no_if = true; }},
    {"-debug", nullptr, nullptr, "announce the full debug level (nothing else changes)", nullptr, false,
     [](CommandLine& a_line, const char*) {
         a_line.m_debug = true;
         misc::traceOut() << "Debug level full - printing all debug information\n";
     }},
    {"-list-instructions", nullptr, nullptr, "print each mnemonic velcor reads, with what each syntax does with it",
     "For CVC, TLV and ICS a mnemonic is approximate (the older model's meaning) or unknown (nothing assigned); "
     "for SMT-LIB 2 it is exact or unknown (the run stops and names it).",
     true, [](CommandLine& a_line, const char*) { a_line.m_answer = writeInstructionList; }},
    {"-h", "--help", nullptr, "print the usage and the options, and exit", nullptr, true,
     [](CommandLine& a_line, const char*) { a_line.m_answer = writeHelp; }},
    {"--version", nullptr, nullptr, "print the version and the commit it was built from, and exit", nullptr, true,
     [](CommandLine& a_line, const char*) { a_line.m_answer = writeVersion; }},
    {nullptr, nullptr, nullptr, nullptr, nullptr, false, nullptr},
};

const ExitStatus exit_statuses[] = {
    {0, "a complete run, or an answer to --help, --version or -list-instructions"},
    {1, "a bad command line or input, a capacity reached, or an unwritable output"},
    {0, nullptr},
};

const Option* findOption(const char* a_argument)
{
    for (const Option* option = options; option->m_name; ++option)
        if (!std::strcmp(a_argument, option->m_name) || (option->m_alias && !std::strcmp(a_argument, option->m_alias)))
            return option;
    return nullptr;
}

namespace {

[[noreturn]] void usageStop(const std::string& a_first_line)
{
    stopRun(a_first_line + "\n" + usage_str + "\n");
}

} // namespace

void readEarlyOptions(int argc, char** argv, CommandLine& a_line)
{
    for (int i = 1; i < argc && !a_line.m_answer; ++i) {
        const Option* option = findOption(argv[i]);
        if (!option) {
            // The first argument is the listing; anything else is unknown.
            if (i == 1)
                continue;
            return;
        }
        if (option->m_early)
            option->m_apply(a_line, nullptr);
        if (option->m_value)
            ++i;
    }
}

void readOptions(int argc, char** argv, CommandLine& a_line)
{
    for (int i = 2; i < argc; ++i) {
        const Option* option = findOption(argv[i]);
        if (!option)
            usageStop(std::string("Error: Unsupported option: ") + argv[i]);
        if (option->m_value && i + 1 >= argc)
            usageStop("Missing parameters ");
        const char* value = option->m_value ? argv[++i] : nullptr;
        if (!option->m_early)
            option->m_apply(a_line, value);
    }
    if (!a_line.m_executable || !a_line.m_node || !a_line.m_unit)
        usageStop("Missing parameters ");
}

namespace {

std::string optionLabel(const Option& a_option)
{
    std::string label = a_option.m_name;
    if (a_option.m_alias)
        label += std::string(", ") + a_option.m_alias;
    if (a_option.m_value)
        label += std::string(" ") + a_option.m_value;
    return label;
}

} // namespace

void writeHelp(std::ostream& a_out)
{
    size_t width = 0;
    for (const Option* option = options; option->m_name; ++option)
        width = std::max(width, optionLabel(*option).size());

    a_out << "Usage: velcor " << usage_arguments << "\n"
          << "Writes the proof obligations of one compiled PowerPC function (the node),\n"
          << "from its disassembly LISTING and the debugging information of its EXECUTABLE,\n"
          << "to a_stdout0 for a validity checker. LISTING comes first; the options follow\n"
          << "in any order, at least eight arguments in all.\n"
          << "\nOptions:\n";
    for (const Option* option = options; option->m_name; ++option) {
        std::string label = optionLabel(*option);
        a_out << "  " << label << std::string(width - label.size() + 2, ' ') << option->m_summary << '\n';
    }
    a_out << "\nExit status:\n";
    for (const ExitStatus* status = exit_statuses; status->m_meaning; ++status)
        a_out << "  " << status->m_status << "  " << status->m_meaning << '\n';
}

void writeVersion(std::ostream& a_out)
{
    a_out << "velcor " << velcorVersion() << "\ncommit " << velcorCommit() << '\n';
}
