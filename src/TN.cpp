#include "TN.h"

#include <cstring>
#include <ostream>

#include "common.h"
#include "misc/hash_map.h"
#include "misc/number_text.h"
#include "misc/writer.h"

long registerNumberOf(const char* a_name)
{
    // Read as the format "%c%ld" would: any first character, then a decimal
    // number (blanks and a sign allowed); overflow saturates.
    if (a_name[0] != 'r')
        return NO_REGISTER_NUMBER;
    const char* digits = a_name + 1;
    const char* end = nullptr;
    long value = misc::readLong(digits, 10, &end);
    return end == digits ? NO_REGISTER_NUMBER : value;
}

TN::TN(long a_value) : m_value(a_value), m_type(TN_CONST) {}

TN::TN(TN_t a_kind, long a_value) : m_value(a_value), m_type(a_kind) {}

void TN::nameSet()
{
    m_name_hash = misc::hashString(m_name.c_str());
    m_value_is_name_number = m_value == registerNumberOf(m_name.c_str());
}

void TN::valueFromName()
{
    m_value = registerNumberOf(m_name.c_str());
    nameSet();
}

TN::TN(TN_t a_kind, const char* a_name)
    : m_name(correctNameForIcs(a_name)), m_type(a_name[0] == '.' ? TN_LABEL : a_kind)
{
    valueFromName();
}

TN::TN(TN_t a_kind, const char* a_name, CorrectName)
    : m_name(a_name), m_type(a_name[0] == '.' ? TN_LABEL : a_kind)
{
    valueFromName();
}

TN::TN(TN_t a_kind, const char* a_temporary_name, const char* a_name)
    : m_temporary_name(correctNameForIcs(a_temporary_name)), m_name(correctNameForIcs(a_name)), m_type(a_kind)
{
    valueFromName();
}

TN::TN(TN_t a_kind, const char* a_name, long a_value)
    : m_name(correctNameForIcs(a_name)), m_value(a_value), m_type(a_kind)
{
    nameSet();
}

std::uint64_t TN::s_const_generation = 1;

TN& TN::operator=(const TN& a_other)
{
    bool was_const = isConst();
    long old_value = m_value;
    m_temporary_name = a_other.m_temporary_name;
    m_value = a_other.m_value;
    m_type = a_other.m_type;
    m_isAddress = a_other.m_isAddress;
    m_name = a_other.m_name;
    m_name_hash = a_other.m_name_hash;
    m_value_is_name_number = a_other.m_value_is_name_number;
    m_pointer_to_array = a_other.m_pointer_to_array;
    noteConstChange(was_const, old_value);
    return *this;
}

void TN::update(const TN* a_other)
{
    bool was_const = isConst();
    long old_value = m_value;
    m_name = a_other->m_name;
    m_name_hash = a_other->m_name_hash;
    m_value_is_name_number = a_other->m_value_is_name_number;
    m_value = a_other->m_value;
    m_type = a_other->m_type;
    m_temporary_name = a_other->m_temporary_name;
    noteConstChange(was_const, old_value);
}

void TN::noteConstChange(bool a_was_const, long a_old_value)
{
    if (a_was_const != isConst() || (a_was_const && a_old_value != m_value))
        ++s_const_generation;
}

namespace {

bool isIdentifierMisfit(char a_char, bool a_cvc)
{
    return a_char == '.' || (!a_cvc && a_char == '_');
}

} // namespace

std::string TN::correctNameForIcs(const char* a_name)
{
    std::string name(a_name);
    bool cvc = getOutFormat() == CVC;
    for (char& c : name)
        if (isIdentifierMisfit(c, cvc))
            c = 'X';
    return name;
}

bool TN::isCorrectName(const char* a_name)
{
    // The misfits of isIdentifierMisfit, searched for as the C library
    // searches (several bytes at a time): every name is checked.
    return std::strpbrk(a_name, getOutFormat() == CVC ? "." : "._") == nullptr;
}

bool TN::holdsNamed(TN_t a_kind, bool a_with_flags) const
{
    return m_type == a_kind && m_temporary_name.empty() && m_value_is_name_number &&
           !(a_with_flags && (m_isAddress || m_pointer_to_array));
}

void TN::print(bool a_prime, bool a_source) const
{
    misc::Writer out(*getOutFile());
    if (m_type == TN_LOGICAL) {
        out << m_name;
    } else if (m_type == TN_CONST) {
        out << m_value;
    } else {
        if (a_prime)
            out << 'P';
        if (a_source)
            out << 's';
        out << m_name;
    }
}
