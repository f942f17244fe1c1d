#include "common.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <ostream>
#include <string>

#include "misc/descriptor_buffer.h"
#include "misc/stop.h"

namespace {

misc::DescriptorBuffer m_out_buffer;
std::ostream m_out_file(&m_out_buffer);
std::ostream* m_redirect = nullptr;
std::string outFileName;
signed char outFileIndex = 0;
bool m_noIf = false;

// Every table is indexed by output_format_t: ICS, CVC, TLV.
const char* assertStrs[MAX_FORMAT] = {"assert(", "ASSERT ", ""};
const char* const checkStrs[MAX_FORMAT] = {"check(", "QUERY ", ""};
const char* const andCheckStrs[MAX_FORMAT] = {"); check(", "AND ", ""};
const char* endStrs[MAX_FORMAT] = {").", ";", ";"};
const char* const andStrs[MAX_FORMAT] = {"&", " AND ", ""};
const char* const orStrs[MAX_FORMAT] = {"|", " OR ", ""};
const char* const notStrs[MAX_FORMAT] = {"~", " NOT ", ""};
const char* const ifStrs[MAX_FORMAT] = {" if ", " (IF (", ""};
const char* const thenStrs[MAX_FORMAT] = {" then ", ") THEN ", ""};
const char* const elseStrs[MAX_FORMAT] = {" else ", " ELSE ", ""};
const char* const endIfStrs[MAX_FORMAT] = {" end ", " ENDIF) ", ""};
const char* const addressStrs[MAX_FORMAT] = {"ADDRESS", "ADDRESS", "ADDRESS"};
const char* const ptrSignStrs[MAX_FORMAT] = {"X", "X", "X"};
const char* const fieldSignStrs[MAX_FORMAT] = {"Y", "Y", "Y"};

void updateCurrentOutput()
{
    common_detail::current_output = m_redirect ? m_redirect : m_out_buffer.isOpen() ? &m_out_file : nullptr;
}

void openNumbered(const char* a_format, const char* a_prefix)
{
    if (m_out_buffer.isOpen())
        m_out_buffer.close();
    char number[8];
    std::snprintf(number, sizeof number, "%d", static_cast<int>(outFileIndex));
    outFileName = a_prefix ? std::string(a_prefix) + number : std::string(a_format) + number;
    // Created with the permission bits 0664 (before the creation mask).
    int fd = ::open(outFileName.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0664);
    if (fd >= 0) {
        m_out_buffer.attach(fd, true);
        m_out_file.clear();
    }
    outFileIndex = static_cast<signed char>(outFileIndex + 1);
    updateCurrentOutput();
}

} // namespace

void setOutFile(const char* a_prefix)
{
    openNumbered(nullptr, a_prefix);
}

void setOutFile()
{
    openNumbered("stdout.ia64.", nullptr);
}

std::ostream* common_detail::current_output = nullptr;
output_format_t common_detail::format = ICS;

void common_detail::noOutput()
{
    internalError("m_out_buffer.isOpen()", __FILE__, "getOutFile");
}

void resetOutFile()
{
    VELCOR_ASSERT(m_out_buffer.isOpen());
    m_out_buffer.close();
    updateCurrentOutput();
    setOutFile();
}

bool outFileIsOpen()
{
    return m_out_buffer.isOpen();
}

std::ostream* setOutStream(std::ostream* a_stream)
{
    std::ostream* previous = m_redirect;
    m_redirect = a_stream;
    updateCurrentOutput();
    return previous;
}

bool outStreamIsSet()
{
    return m_redirect != nullptr;
}

void resetCommon()
{
    if (m_out_buffer.isOpen())
        m_out_buffer.close();
    updateCurrentOutput();
    outFileIndex = 0;
    common_detail::format = ICS;
    m_noIf = false;
    putAssertStr();
}

void setOutFormat(output_format_t a_format)
{
    common_detail::format = a_format;
}

void setSkipPrintIf()
{
    m_noIf = true;
}

bool skipPrintIf()
{
    return m_noIf;
}

namespace {

// The keyword of the current syntax; SMT-LIB 2 has none of these.
const char* keyword(const char* const* a_table)
{
    VELCOR_ASSERT(common_detail::format < MAX_FORMAT);
    return a_table[common_detail::format];
}

} // namespace

const char* assertStr() { return keyword(assertStrs); }
const char* checkStr() { return keyword(checkStrs); }
const char* andCheckStr() { return keyword(andCheckStrs); }
const char* endStr() { return keyword(endStrs); }
const char* andStr() { return keyword(andStrs); }
const char* orStr() { return keyword(orStrs); }
const char* notStr() { return keyword(notStrs); }
const char* ifStr() { return keyword(ifStrs); }
const char* thenStr() { return keyword(thenStrs); }
const char* elseStr() { return keyword(elseStrs); }
const char* endIfStr() { return keyword(endIfStrs); }
const char* addressStr() { return keyword(addressStrs); }
const char* ptrSignStr() { return keyword(ptrSignStrs); }
const char* fieldSignStr() { return keyword(fieldSignStrs); }

void putAndStr()
{
    assertStrs[CVC] = "AND ";
    endStrs[CVC] = " ";
}

void putAssertStr()
{
    assertStrs[CVC] = "ASSERT ";
    endStrs[CVC] = ";";
}

namespace {

// " P" for the prefixes O and P (primed pairs), otherwise a single blank.
const char* pairPrefix(char a_prefix)
{
    return (a_prefix == 'O' || a_prefix == 'P') ? " P" : " ";
}

void openPair(char a_prefix)
{
    if (a_prefix == 'O' || a_prefix == 'P')
        *getOutFile() << "(";
}

void closePair(const char* a_source_var, char a_prefix)
{
    std::ostream& out = *getOutFile();
    const char* prefix = pairPrefix(a_prefix);
    if (a_prefix == 'O')
        out << "| (" << prefix << "s" << a_source_var << "=" << "s" << a_source_var << "))\n";
    if (a_prefix == 'P')
        out << ")";
}

} // namespace

void printPair(const char* a_source_var, const char* a_target_var, char a_prefix)
{
    const char* prefix = pairPrefix(a_prefix);
    openPair(a_prefix);
    *getOutFile() << "(" << prefix << "s" << a_source_var << "=" << prefix << "t" << a_target_var << ")\n";
    closePair(a_source_var, a_prefix);
}

void printPairofArrays(const char* a_source_var, const char* a_target_var, const char* a_source_index,
                       const char* a_target_index, char a_prefix)
{
    const char* prefix = pairPrefix(a_prefix);
    openPair(a_prefix);
    *getOutFile() << "(" << prefix << "s" << a_source_var << "[" << prefix << "s" << a_source_index << "]=" << prefix
                  << "t" << a_target_var << "[" << prefix << "t" << a_target_index << "])\n";
    closePair(a_source_var, a_prefix);
}
