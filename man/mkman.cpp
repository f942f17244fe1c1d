// Writes velcor's manual page from its template: the synopsis, the options,
// the exit statuses and the accepted mnemonics come from the tables the
// program itself uses, so the page cannot drift from the program.
//   mkman TEMPLATE OUTPUT
#include <cctype>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "command_line.h"
#include "parse.h"
#include "version.h"

namespace {

// Text as roff shows it: backslashes and minus signs escaped, each sentence
// on a line of its own (so roff knows where sentences end), and a line that
// would start with a control character protected.
std::string roff(const std::string& a_text)
{
    std::string escaped;
    bool line_start = true;
    for (size_t i = 0; i < a_text.size(); ++i) {
        char c = a_text[i];
        if (line_start && (c == '.' || c == '\''))
            escaped += "\\&";
        line_start = false;
        if (c == '\\') {
            escaped += "\\e";
        } else if (c == '-') {
            escaped += "\\-";
        } else if (c == ' ' && i > 0 && a_text[i - 1] == '.') {
            escaped += '\n';
            line_start = true;
        } else {
            escaped += c;
        }
    }
    return escaped;
}

// The one-line summary as a sentence.
std::string sentence(const char* a_summary)
{
    std::string text = a_summary;
    if (!text.empty())
        text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    return text + ".";
}

// Options in bold, the names of values in italics.
std::string synopsisWord(const std::string& a_word)
{
    if (a_word[0] == '-')
        return "\\fB" + roff(a_word) + "\\fR";
    if (a_word[0] == '[')
        return "[\\fI" + roff(a_word.substr(1, a_word.find(']') - 1)) + "\\fR]" + a_word.substr(a_word.find(']') + 1);
    return "\\fI" + roff(a_word) + "\\fR";
}

void writeSynopsis(std::ostream& a_out)
{
    a_out << ".B velcor\n";
    std::istringstream words(usage_arguments);
    std::string word;
    std::string line;
    while (words >> word)
        line += (line.empty() ? "" : " ") + synopsisWord(word);
    a_out << line << "\n.br\n.B velcor\n";
    // The second form: the options answered instead of a run.
    bool first = true;
    for (const Option* option = options; option->m_name; ++option) {
        if (!option->m_early || option->m_value)
            continue;
        CommandLine probe;
        option->m_apply(probe, nullptr);
        if (!probe.m_answer)
            continue;
        a_out << (first ? "" : " | ") << "\\fB" << roff(option->m_name) << "\\fR";
        if (option->m_alias)
            a_out << " | \\fB" << roff(option->m_alias) << "\\fR";
        first = false;
    }
    a_out << '\n';
}

void writeOptions(std::ostream& a_out)
{
    for (const Option* option = options; option->m_name; ++option) {
        a_out << ".TP\n\\fB" << roff(option->m_name) << "\\fR";
        if (option->m_alias)
            a_out << ", \\fB" << roff(option->m_alias) << "\\fR";
        if (option->m_value)
            a_out << " \\fI" << roff(option->m_value) << "\\fR";
        a_out << '\n' << roff(sentence(option->m_summary)) << '\n';
        if (option->m_detail)
            a_out << roff(option->m_detail) << '\n';
    }
}

void writeExitStatuses(std::ostream& a_out)
{
    for (const ExitStatus* status = exit_statuses; status->m_meaning; ++status)
        a_out << ".TP\n.B " << status->m_status << '\n' << roff(sentence(status->m_meaning)) << '\n';
}

void writeInstructions(std::ostream& a_out)
{
    a_out << ".PP\n";
    for (int opcode = 0; opcode < TOP_UNDEFINED; ++opcode)
        a_out << "\\fB" << roff(topName(opcode)) << "\\fR" << (opcode + 1 < TOP_UNDEFINED ? ",\n" : "\n");
}

// Replaces every "@VERSION@" of a line.
std::string withVersion(std::string a_line)
{
    const std::string mark = "@VERSION@";
    for (size_t at = a_line.find(mark); at != std::string::npos; at = a_line.find(mark, at))
        a_line.replace(at, mark.size(), velcorVersion());
    return a_line;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: mkman TEMPLATE OUTPUT\n";
        return 1;
    }
    std::ifstream in(argv[1]);
    if (!in) {
        std::cerr << "mkman: cannot read " << argv[1] << '\n';
        return 1;
    }
    std::ostringstream page;
    std::string line;
    while (std::getline(in, line)) {
        if (line == "@SYNOPSIS@")
            writeSynopsis(page);
        else if (line == "@OPTIONS@")
            writeOptions(page);
        else if (line == "@EXIT_STATUS@")
            writeExitStatuses(page);
        else if (line == "@INSTRUCTIONS@")
            writeInstructions(page);
        else
            page << withVersion(line) << '\n';
    }
    std::ofstream out(argv[2], std::ios::binary | std::ios::trunc);
    out << page.str();
    out.close();
    if (!out) {
        std::cerr << "mkman: cannot write " << argv[2] << '\n';
        return 1;
    }
    return 0;
}
