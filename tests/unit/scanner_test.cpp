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
    FILE* input = fmemopen(buffer.empty() ? nullptr : &buffer[0], buffer.size(), "r");
    if (!input)
        input = std::tmpfile();
    startScanner(input);
    std::vector<Token> tokens;
    for (int code = yylex(); code != 0; code = yylex()) {
        std::string value;
        if (code == NUM || code == HEXNUM)
            value = std::to_string(yylval.num);
        else if (code == SYMBOL)
            value = yylval.name;
        else if (code == OPCODE)
            value = top_names[yylval.op];
        tokens.push_back({code, value});
    }
    std::fclose(input);
    resetScanner();
    return tokens;
}

} // namespace

TEST(ScannerTest, TokenCodesAreFixed)
{
    EXPECT_EQ(NUM, 257);
    EXPECT_EQ(HEXNUM, 258);
    EXPECT_EQ(SYMBOL, 259);
    EXPECT_EQ(LT_SIGN, 260);
    EXPECT_EQ(GT_SIGN, 261);
    EXPECT_EQ(PLUS, 262);
    EXPECT_EQ(OPCODE, 263);
    EXPECT_EQ(SEMICOLON, 264);
    EXPECT_EQ(REG, 265);
    EXPECT_EQ(RIGHTP, 266);
    EXPECT_EQ(LEFTP, 267);
    EXPECT_EQ(COMMA, 268);
}

TEST(ScannerTest, AListingLine)
{
    std::vector<Token> expected = {{HEXNUM, "268436640"}, {SEMICOLON, ""}, {LT_SIGN, ""},  {SYMBOL, "main"},
                                   {PLUS, ""},            {NUM, "8"},      {GT_SIGN, ""},  {SEMICOLON, ""},
                                   {OPCODE, "stwu"},      {SYMBOL, "r1"},  {COMMA, ""},    {NUM, "-32"},
                                   {LEFTP, ""},           {SYMBOL, "r1"},  {RIGHTP, ""}};
    EXPECT_EQ(scan("100004a0: <main+8>: stwu r1,-32(r1)\n"), expected);
}

TEST(ScannerTest, AddressesOnlyInTheFirstColumnAndInLowerCase)
{
    EXPECT_EQ(scan("1a4c"), (std::vector<Token>{{HEXNUM, "6732"}}));
    EXPECT_EQ(scan(" 1a4c"), (std::vector<Token>{{NUM, "1"}, {SYMBOL, "a4c"}}));
    EXPECT_EQ(scan("1A4C"), (std::vector<Token>{{HEXNUM, "1"}, {SYMBOL, "A4C"}}));
    // A word of hexadecimal letters at the start of a line is an address;
    // one that goes on with other letters is a name.
    EXPECT_EQ(scan("add\naddi\n"), (std::vector<Token>{{HEXNUM, "2781"}, {OPCODE, "addi"}}));
    EXPECT_EQ(scan("x\n10"), (std::vector<Token>{{SYMBOL, "x"}, {HEXNUM, "16"}}));
}

TEST(ScannerTest, Numbers)
{
    EXPECT_EQ(scan(" -16"), (std::vector<Token>{{NUM, "-16"}}));
    EXPECT_EQ(scan(" 010"), (std::vector<Token>{{NUM, "8"}}));
    EXPECT_EQ(scan(" 0.75"), (std::vector<Token>{{NUM, "0"}}));
    EXPECT_EQ(scan(" 1.5"), (std::vector<Token>{{NUM, "1"}, {NUM, "5"}}));
    EXPECT_EQ(scan(" - 5"), (std::vector<Token>{{NUM, "5"}}));
}

TEST(ScannerTest, NamesAndOpcodes)
{
    EXPECT_EQ(scan(" rlwinm. rlwinm or nop UNDEFINED _x.1"),
              (std::vector<Token>{{OPCODE, "rlwinm."},
                                  {OPCODE, "rlwinm"},
                                  {OPCODE, "or"},
                                  {SYMBOL, "nop"},
                                  {SYMBOL, "UNDEFINED"},
                                  {SYMBOL, "_x.1"}}));
    EXPECT_EQ(get_topcode("or"), orx);
    EXPECT_EQ(get_topcode("rlwinm."), rlwinm_);
    EXPECT_EQ(get_topcode("Addi"), TOP_UNDEFINED);
    EXPECT_EQ(get_topcode("UNDEFINED"), TOP_UNDEFINED);
    EXPECT_STREQ(topName(TOP_UNDEFINED), "UNDEFINED");
    EXPECT_STREQ(topName(99), "UNDEFINED");
}

TEST(ScannerTest, LongNamesAreReportedAndKept)
{
    StreamCapture errors(std::cerr);
    std::string name(40, 'q');
    EXPECT_EQ(scan(" " + name), (std::vector<Token>{{SYMBOL, name}}));
    EXPECT_EQ(errors.text(), "Identifier too long");
}

TEST(ScannerTest, CommentLines)
{
    EXPECT_EQ(scan("% comment, with: <signs>\n1"), (std::vector<Token>{{HEXNUM, "1"}}));
    // Not in the first column: the percent sign alone is skipped.
    EXPECT_EQ(scan(" % x\n"), (std::vector<Token>{{SYMBOL, "x"}}));
    // Without its line end the comment is not a comment line.
    EXPECT_EQ(scan("1\n% last"), (std::vector<Token>{{HEXNUM, "1"}, {SYMBOL, "last"}}));
}

TEST(ScannerTest, StrayBytesAreSkipped)
{
    EXPECT_TRUE(scan("").empty());
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
