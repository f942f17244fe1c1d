// The listing scanner: token codes and values for the lexical forms of the
// listing, the start-of-line rules, and bytes that form no token.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "parse.h"
#include "parser_ppc.hpp"
#include "test_support.h"

namespace {

struct Token {
    int code;
    std::string value; // the number, the name, or the opcode's text
    bool operator==(const Token& a_other) const { return code == a_other.code && value == a_other.value; }
};

std::ostream& operator<<(std::ostream& a_out, const Token& a_token)
{
    return a_out << "{" << a_token.code << ", \"" << a_token.value << "\"}";
}

std::vector<Token> scan(const std::string& a_text)
{
    std::string buffer = a_text;
    FILE* input = fmemopen(&buffer[0], buffer.size(), "r");
    startScanner(input);
    std::vector<Token> tokens;
    for (int code = yylex(); code != 0; code = yylex()) {
        std::string value;
        if (code == NUM || code == HEXNUM)
            value = std::to_string(yylval.num);
        else if (code == SYMBOL)
            value = yylval.name;
        else if (code == OPCODE)
            value = topName(yylval.op);
        tokens.push_back({code, value});
    }
    std::fclose(input);
    resetScanner();
    return tokens;
}

} // namespace

TEST(ScannerTest, TokenCodesAreFixed)
{
    // The grammar declares the tokens; their order must keep these codes.
    const int codes[] = {NUM, HEXNUM, SYMBOL, LT_SIGN, GT_SIGN, PLUS, OPCODE, SEMICOLON, REG, RIGHTP, LEFTP, COMMA};
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(codes[i], 257 + i);
}

TEST(ScannerTest, AddressesOnlyInTheFirstColumnAndInLowerCase)
{
    EXPECT_EQ(scan(" 1a4c"), (std::vector<Token>{{NUM, "1"}, {SYMBOL, "a4c"}}));
    EXPECT_EQ(scan("1A4C"), (std::vector<Token>{{HEXNUM, "1"}, {SYMBOL, "A4C"}}));
    // A word of hexadecimal letters at the start of a line is an address;
    // one that goes on with other letters is a name.
    EXPECT_EQ(scan("add\naddi\n"), (std::vector<Token>{{HEXNUM, "2781"}, {OPCODE, "addi"}}));
    EXPECT_EQ(scan("x\n10"), (std::vector<Token>{{SYMBOL, "x"}, {HEXNUM, "16"}}));
}

TEST(ScannerTest, NumbersNamesAndOpcodes)
{
    EXPECT_EQ(scan(" 010"), (std::vector<Token>{{NUM, "8"}}));
    EXPECT_EQ(scan(" 0.75"), (std::vector<Token>{{NUM, "0"}}));
    EXPECT_EQ(scan(" 1.5"), (std::vector<Token>{{NUM, "1"}, {NUM, "5"}}));
    EXPECT_EQ(scan(" - 5"), (std::vector<Token>{{NUM, "5"}}));
    // A leading zero makes a number octal, up to the first digit past 7.
    EXPECT_EQ(scan(" 09 -017"), (std::vector<Token>{{NUM, "0"}, {NUM, "-15"}}));
    // Numbers past the range of long stay at its ends.
    EXPECT_EQ(scan("1ffffffffffffffff0 99999999999999999999 -99999999999999999999"),
              (std::vector<Token>{{HEXNUM, "9223372036854775807"},
                                  {NUM, "9223372036854775807"},
                                  {NUM, "-9223372036854775808"}}));
    EXPECT_EQ(scan(" nop UNDEFINED _x.1"),
              (std::vector<Token>{{SYMBOL, "nop"}, {SYMBOL, "UNDEFINED"}, {SYMBOL, "_x.1"}}));
    // The decoder's mnemonics are opcodes too; names it never prints are not.
    EXPECT_EQ(scan(" lbz andi. cmp or. fnmsubs. bcctrl lbz. li"),
              (std::vector<Token>{{OPCODE, "lbz"},
                                  {OPCODE, "andi."},
                                  {OPCODE, "cmp"},
                                  {OPCODE, "or."},
                                  {OPCODE, "fnmsubs."},
                                  {OPCODE, "bcctrl"},
                                  {SYMBOL, "lbz."},
                                  {SYMBOL, "li"}}));
    EXPECT_EQ(get_topcode("Addi"), TOP_UNDEFINED);
    EXPECT_EQ(get_topcode("UNDEFINED"), TOP_UNDEFINED);
    EXPECT_EQ(get_topcode(""), TOP_UNDEFINED);
    EXPECT_STREQ(topName(TOP_UNDEFINED), "UNDEFINED");
    EXPECT_STREQ(topName(TOP_END), "UNDEFINED");
    EXPECT_STREQ(topName(-1), "UNDEFINED");
}

TEST(ScannerTest, OpcodeTableKeepsTheListingFormatsValues)
{
    // The first 36 entries are the listing format's own, in its order.
    EXPECT_EQ(TOP_COUNT, 36);
    EXPECT_EQ(get_topcode("addi"), 0);
    EXPECT_EQ(get_topcode("rlwinm."), 23);
    EXPECT_EQ(get_topcode("or"), 26);
    EXPECT_EQ(get_topcode("fcmpu"), 34);
    EXPECT_STREQ(top_names[35], "UNDEFINED");
    // Every opcode's name reads back as that opcode: no name is given twice.
    for (int opcode = 0; opcode < TOP_END; ++opcode) {
        if (opcode == TOP_UNDEFINED)
            continue;
        EXPECT_EQ(get_topcode(topName(opcode)), opcode) << topName(opcode);
    }
    EXPECT_GT(get_topcode("cmp"), TOP_UNDEFINED);
}

TEST(ScannerTest, LongNamesAreReportedAndKept)
{
    StreamCapture errors(std::cerr);
    std::string name(40, 'q');
    EXPECT_EQ(scan(" " + name), (std::vector<Token>{{SYMBOL, name}}));
    EXPECT_EQ(errors.text(), "Identifier too long");
}

TEST(ScannerTest, StrayBytesAreSkipped)
{
    // A percent sign not in the first column is skipped alone.
    EXPECT_EQ(scan(" % x\n"), (std::vector<Token>{{SYMBOL, "x"}}));
    std::string with_nul = std::string(" a") + '\0' + "q $;#*/=[]\t\xff";
    EXPECT_EQ(scan(with_nul), (std::vector<Token>{{SYMBOL, "a"}, {SYMBOL, "q"}}));
}

TEST(ScannerTest, LineNumbersCountConsumedLineEnds)
{
    std::string text = "1\n\n% c\nx";
    FILE* input = fmemopen(&text[0], text.size(), "r");
    startScanner(input);
    EXPECT_EQ(scannerLine(), 1);
    yylex();
    yylex();
    EXPECT_EQ(scannerLine(), 4);
    std::fclose(input);
    resetScanner();
}
