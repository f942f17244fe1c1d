// Reading integers from text: the scanner's numbers and the register numbers
// of names must be what the C library's strtol gives for the same text.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "misc/number_text.h"

namespace {

void expectAsStrtol(const std::string& a_text, int a_base)
{
    char* library_end = nullptr;
    const long expected = std::strtol(a_text.c_str(), &library_end, a_base);
    const char* end = nullptr;
    const long value = misc::readLong(a_text.c_str(), a_base, &end);
    EXPECT_EQ(value, expected) << '"' << a_text << "\" base " << a_base;
    EXPECT_EQ(end - a_text.c_str(), library_end - a_text.c_str()) << '"' << a_text << "\" base " << a_base;
}

} // namespace

TEST(NumberTextTest, ReadsAsTheCLibraryDoes)
{
    const std::vector<std::string> texts = {
        "", "0", "7", "-7", "+7", "  \t\n\v\f\r42x", " - 5", "--5", "+-5", "-", "+", "x",
        // Octal after a leading zero in base 0, and the digit that ends it.
        "010", "-010", "09", "0089", "07777777777777777777777", "01777777777777777777777",
        "02000000000000000000000", "-01000000000000000000000", "-01000000000000000000001",
        // Prefixes: taken only when a hexadecimal digit follows.
        "0x1f", "0X1F", "-0x10", "0x", "0xg", "0x-1", " 0x 1", "x1f", "00x1",
        // The edges of long, and past them.
        "9223372036854775807", "9223372036854775808", "-9223372036854775808", "-9223372036854775809",
        "99999999999999999999999999", "-99999999999999999999999999", "7fffffffffffffff", "8000000000000000",
        "ffffffffffffffffff", "-8000000000000000", "-8000000000000001", "18446744073709551616",
        // Digits past the base, letters of both cases.
        "123abc", "zz", "ZZ", "1z", "2147483648", "-2147483649", "10000000", "fffffffc"};
    for (const std::string& text : texts)
        for (int base : {0, 8, 10, 16, 36})
            expectAsStrtol(text, base);
}

TEST(NumberTextTest, RandomTextsReadAsTheCLibraryDoes)
{
    // Short texts over the characters that matter: blanks, signs, the
    // prefix letter and digits of every kind.
    const std::string alphabet = " \t+-0x0X19afAFgz07";
    std::mt19937 random(12345);
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        const std::size_t length = random() % 24;
        for (std::size_t k = 0; k < length; ++k)
            text += alphabet[random() % alphabet.size()];
        for (int base : {0, 10, 16})
            expectAsStrtol(text, base);
    }
}

TEST(NumberTextTest, EndMayBeLeftOut)
{
    EXPECT_EQ(misc::readLong("ff", 16), 255);
    EXPECT_EQ(misc::readLong("-12", 0), -12);
    EXPECT_EQ(misc::readLong("r9", 10), 0);
}
