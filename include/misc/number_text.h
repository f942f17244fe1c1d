// Integers read from text exactly as std::strtol reads them in the C locale:
// leading blanks, a sign, the base prefixes of bases 0 and 16, as many digits
// as the base allows, saturation on overflow, and no digits giving 0 with the
// end at the start of the text. The scanner reads a number in almost every
// token and every operand name is read as a register number; the library's
// locale lookups were a tenth of a run.
#ifndef VELCOR_MISC_NUMBER_TEXT_H
#define VELCOR_MISC_NUMBER_TEXT_H

#include <climits>

namespace misc {

// The value of a digit in bases up to 36, or 36 for any other character.
inline int digitValue(char a_char)
{
    if (a_char >= '0' && a_char <= '9')
        return a_char - '0';
    if (a_char >= 'a' && a_char <= 'z')
        return a_char - 'a' + 10;
    if (a_char >= 'A' && a_char <= 'Z')
        return a_char - 'A' + 10;
    return 36;
}

// a_base is 0 (decimal, octal after a leading 0, hexadecimal after 0x) or
// 2 to 36. a_end, when given, receives the end of what was read.
inline long readLong(const char* a_text, int a_base, const char** a_end = nullptr)
{
    const char* p = a_text;
    while (*p == ' ' || (*p >= '\t' && *p <= '\r'))
        ++p;
    bool negative = false;
    if (*p == '-' || *p == '+') {
        negative = *p == '-';
        ++p;
    }
    int base = a_base;
    // "0x" is a prefix only when a hexadecimal digit follows; otherwise the
    // 0 is the number and the x ends it.
    if ((base == 0 || base == 16) && p[0] == '0' && (p[1] == 'x' || p[1] == 'X') && digitValue(p[2]) < 16) {
        p += 2;
        base = 16;
    } else if (base == 0) {
        base = p[0] == '0' ? 8 : 10;
    }
    const unsigned long limit = negative ? static_cast<unsigned long>(LONG_MAX) + 1 : static_cast<unsigned long>(LONG_MAX);
    const unsigned long radix = static_cast<unsigned long>(base);
    unsigned long value = 0;
    bool overflow = false;
    const char* digits = p;
    for (;; ++p) {
        const int digit = digitValue(*p);
        if (digit >= base)
            break;
        unsigned long next = 0;
        overflow = overflow || __builtin_mul_overflow(value, radix, &next) ||
                   __builtin_add_overflow(next, static_cast<unsigned long>(digit), &next) || next > limit;
        value = next;
    }
    if (p == digits) {
        if (a_end)
            *a_end = a_text;
        return 0;
    }
    if (a_end)
        *a_end = p;
    if (overflow)
        return negative ? LONG_MIN : LONG_MAX;
    return negative ? static_cast<long>(0 - value) : static_cast<long>(value);
}

} // namespace misc

#endif
