// Operands, the operand table and the output module they print through.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <fstream>
#include <string>

#include "TN.h"
#include "common.h"
#include "symbols.h"
#include "test_support.h"

namespace {

std::string printed(const TN& a_tn, bool a_prime, bool a_source)
{
    OutputCapture capture;
    a_tn.print(a_prime, a_source);
    return capture.text();
}

// Runs a test body in a fresh temporary directory.
class InTemporaryDirectory {
public:
    InTemporaryDirectory()
    {
        char pattern[] = "/tmp/velcor-test-XXXXXX";
        m_dir = mkdtemp(pattern);
        m_old = getcwd(nullptr, 0);
        EXPECT_EQ(chdir(m_dir.c_str()), 0);
    }
    ~InTemporaryDirectory()
    {
        EXPECT_EQ(chdir(m_old), 0);
        std::free(m_old);
        std::system(("rm -rf " + m_dir).c_str());
    }

private:
    std::string m_dir;
    char* m_old;
};

bool fileExists(const char* a_name)
{
    struct stat status;
    return stat(a_name, &status) == 0;
}

} // namespace

TEST(OutputFileTest, NamesCountAcrossBothFormsAndModeIs0664)
{
    RunFixture run;
    InTemporaryDirectory directory;
    mode_t saved = umask(0);
    setOutFile("a_stdout");
    *getOutFile() << "first";
    setOutFile("a_stdout");
    *getOutFile() << "second";
    setOutFile();
    umask(saved);
    EXPECT_TRUE(outFileIsOpen());
    EXPECT_TRUE(fileExists("a_stdout0"));
    EXPECT_TRUE(fileExists("a_stdout1"));
    EXPECT_TRUE(fileExists("stdout.ia64.2"));
    struct stat status;
    ASSERT_EQ(stat("a_stdout0", &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0664u);
    std::ifstream first("a_stdout0");
    std::string text;
    std::getline(first, text);
    EXPECT_EQ(text, "first");

    resetOutFile();
    EXPECT_TRUE(fileExists("stdout.ia64.3"));
}

TEST(SyntaxTablesTest, ConjunctionModeOnlyChangesCvc)
{
    RunFixture run(CVC);
    putAndStr();
    EXPECT_STREQ(assertStr(), "AND ");
    EXPECT_STREQ(endStr(), " ");
    setOutFormat(ICS);
    EXPECT_STREQ(assertStr(), "assert(");
    setOutFormat(TLV);
    EXPECT_STREQ(endStr(), ";");
    putAssertStr();
    setOutFormat(CVC);
    EXPECT_STREQ(assertStr(), "ASSERT ");
    EXPECT_STREQ(endStr(), ";");
}

TEST(SyntaxTablesTest, PairPrinters)
{
    RunFixture run;
    OutputCapture capture;
    printPair("x", "r3", ' ');
    EXPECT_EQ(capture.text(), "( sx= tr3)\n");
    capture.clear();
    printPair("x", "r3", 'O');
    EXPECT_EQ(capture.text(), "(( Psx= Ptr3)\n| ( Psx=sx))\n");
    capture.clear();
    printPair("x", "r3", 'P');
    EXPECT_EQ(capture.text(), "(( Psx= Ptr3)\n)");
    capture.clear();
    printPairofArrays("a", "b", "i", "j", ' ');
    EXPECT_EQ(capture.text(), "( sa[ si]= tb[ tj])\n");
}

TEST(OperandTest, NamesAreAdjustedToTheSyntaxInForce)
{
    RunFixture run(CVC);
    EXPECT_STREQ(TN(TN_SYM_REG, "r_1.x").TNName(), "r_1Xx");
    setOutFormat(ICS);
    EXPECT_STREQ(TN(TN_SYM_REG, "r_1.x").TNName(), "rX1Xx");
    setOutFormat(TLV);
    EXPECT_STREQ(TN(TN_SYM_REG, "r_1.x").TNName(), "rX1Xx");

    TN label(TN_SYM_REG, ".L12");
    EXPECT_TRUE(label.isLabel());
    EXPECT_TRUE(label.isConst());
    EXPECT_STREQ(label.TNName(), "XL12");
}

TEST(OperandTest, RegisterNumbersOfNamedOperands)
{
    RunFixture run;
    EXPECT_EQ(TN(TN_SYM_REG, "tmp", "r31").TNRegNum(), 31);
    EXPECT_EQ(TN(TN_SYM_REG, "tmp", "sp").TNRegNum(), 129);
    EXPECT_EQ(TN(TN_SYM_REG, "r9").TNValue(), 9);
    EXPECT_EQ(TN(TN_SYM_REG, "r").TNValue(), 129);
    EXPECT_EQ(TN(TN_SYM_REG, "rX").TNValue(), 129);
    EXPECT_EQ(TN(TN_SYM_REG, "cr00").TNValue(), 129);
    EXPECT_EQ(TN(TN_SYMBOL, "MEM[8]", 8L).TNValue(), 8);
}

TEST(OperandTest, PrintedForms)
{
    RunFixture run;
    EXPECT_EQ(printed(TN(-32L), true, true), "-32");
    TN r3(TN_SYM_REG, "r3");
    EXPECT_EQ(printed(r3, false, false), "r3");
    EXPECT_EQ(printed(r3, true, false), "Pr3");
    EXPECT_EQ(printed(r3, true, true), "Psr3");
    EXPECT_EQ(printed(TN(TN_LOGICAL, "true"), true, true), "true");
    EXPECT_EQ(printed(TN(TN_LOG_REG, "p1"), true, false), "Pp1");

    TN copy(TN_SYMBOL, "MEM[4]", 4L);
    copy.setIsAddress(true);
    copy.update(&r3);
    EXPECT_STREQ(copy.TNName(), "r3");
    EXPECT_TRUE(copy.isReg());
    EXPECT_TRUE(copy.isAddress());
}

TEST(SymbolsTest, KeysAreCorrectedLookupsAreNot)
{
    RunFixture run(CVC);
    Symbols& table = run.symbols();
    EXPECT_STREQ(table.addTN(TN_SYM_REG, "r.3")->TNName(), "rX3");
    EXPECT_TRUE(table.isIn("rX3"));
    EXPECT_FALSE(table.isIn("r.3"));
    EXPECT_EQ(table.getTN("r.3"), nullptr);
    EXPECT_STREQ(table.addTN(TN_SYM_REG, "my_var")->TNName(), "my_var");
    EXPECT_EQ(table.addTN(TN_SYM_REG, static_cast<const char*>(nullptr)), nullptr);

    Symbols ics_side(TARGET);
    setOutFormat(ICS);
    EXPECT_STREQ(ics_side.addTN(TN_SYM_REG, "my_var")->TNName(), "myXvar");
    EXPECT_TRUE(ics_side.isIn("myXvar"));
}

TEST(SymbolsTest, RegisteringAgainKeepsTheOperandObject)
{
    RunFixture run;
    Symbols& table = run.symbols();
    TN* first = table.addTN(TN_SYM_REG, "x");
    TN* again = table.addTN(TN_LOG_REG, "x");
    EXPECT_EQ(first, again);
    EXPECT_TRUE(first->isLogical());

    TN* cell = table.addTN(TN_SYMBOL, "MEM[8]", 8L);
    TN* replaced = table.addTN(new TN(TN_SYMBOL, "MEM[8]", 16L));
    EXPECT_EQ(cell, replaced);
    EXPECT_EQ(cell->TNValue(), 16);
    TN* fresh = new TN(TN_LOG_REG, "p1");
    EXPECT_EQ(table.addTN(fresh), fresh);
    EXPECT_EQ(table.getTN("p1"), fresh);

    // Constants are owned but never named.
    TN* constant = table.addTN(5L);
    EXPECT_TRUE(constant->isConst());
    EXPECT_EQ(constant->TNValue(), 5);
    EXPECT_EQ(table.getTN("unknown"), nullptr);
    EXPECT_FALSE(table.isIn("unknown"));
}

TEST(SymbolsTest, OneConstantOperandForEachValue)
{
    RunFixture run;
    Symbols& table = run.symbols();
    // The same operand for a value asked for again, never a name; whether
    // it is the same after many other values does not matter, only that
    // its value is right.
    TN* eight = table.constant(8);
    EXPECT_TRUE(eight->isConst());
    EXPECT_EQ(eight->TNValue(), 8);
    EXPECT_STREQ(eight->TNName(), "");
    EXPECT_EQ(table.constant(8), eight);
    for (long value = 0; value < 100000; value += 7)
        EXPECT_EQ(table.constant(value)->TNValue(), value);
    EXPECT_EQ(table.constant(8)->TNValue(), 8);
    TN* negative = table.constant(-8);
    EXPECT_EQ(negative->TNValue(), -8);
    EXPECT_EQ(table.constant(-8), negative);
    EXPECT_NE(negative, eight);
    EXPECT_EQ(table.constant(LONG_MIN)->TNValue(), LONG_MIN);
    // addTN makes a new operand every time.
    EXPECT_NE(table.addTN(8L), eight);
    EXPECT_EQ(table.getTN(""), nullptr);
}

TEST(SymbolsTest, RegisteringAgainSetsTheOperandAfreshEvenWhenNothingElseChanges)
{
    RunFixture run;
    Symbols& table = run.symbols();
    // A typed registration sets every field, the address flag included.
    TN* cell = table.addTN(TN_SYMBOL, "STACK8");
    cell->setIsAddress(true);
    EXPECT_EQ(table.addTN(TN_SYMBOL, "STACK8"), cell);
    EXPECT_FALSE(cell->isAddress());
    // Registering an operand object updates name, value and kind only.
    cell->setIsAddress(true);
    EXPECT_EQ(table.addNamedTN(TN_SYMBOL, "STACK8"), cell);
    EXPECT_TRUE(cell->isAddress());
    TN* mapped = table.addTN(TN_SYM_REG, "MEM[4+r3]");
    EXPECT_EQ(table.addNamedTN(TN_SYMBOL, "MEM[4+r3]"), mapped);
    EXPECT_EQ(mapped->TNType(), TN_SYMBOL);
    // A value set otherwise goes back to the one the name gives.
    TN* r7 = table.addTN(TN_SYM_REG, "r7", 3L);
    EXPECT_EQ(table.addTN(TN_SYM_REG, "r7"), r7);
    EXPECT_EQ(r7->TNValue(), 7);
}

TEST(SymbolsTest, RegisteringAgainUnderANameTheSyntaxChanges)
{
    RunFixture run(ICS);
    Symbols& table = run.symbols();
    TN* first = table.addNamedTN(TN_SYMBOL, "my_cell");
    EXPECT_STREQ(first->TNName(), "myXcell");
    EXPECT_EQ(table.addNamedTN(TN_SYMBOL, "my_cell"), first);
    EXPECT_EQ(table.addTN(TN_SYM_REG, "my_cell"), first);
    EXPECT_EQ(first->TNType(), TN_SYM_REG);
}

TEST(SymbolsTest, DeclarationsByKindInTableOrder)
{
    RunFixture run;
    Symbols& table = run.symbols();
    // Buckets of 193: "r3" 42, "true" 87, "a" 97, "b" 98, "c" 99, "d" 100.
    table.addTN(TN_SYM_REG, "b");
    table.addTN(TN_EXTERNAL, "c");
    table.addTN(TN_LOG_REG, "d");
    table.addTN(TN_SYM_REG, ".a");  // a label: key "Xa" (bucket 151)
    table.addTN(TN_SYMBOL, "MEMX"); // a memory cell: declared with the MEM array
    table.addTN(TN_SYM_REG, "a");
    OutputCapture capture;
    table.print();
    EXPECT_EQ(capture.text(),
              "true :  REAL;\nPtrue :  REAL;\n"
              "a :  REAL;\nPa :  REAL;\n"
              "b :  REAL;\nPb :  REAL;\n"
              "c : ARRAY REAL OF REAL;\nPc : ARRAY REAL OF REAL;\n"
              "d : BOOLEAN;\nPd : BOOLEAN;\n"
              "Xa :  REAL;\n");

    Symbols source(SOURCE);
    source.addTN(TN_SYM_REG, "r3");
    capture.clear();
    source.print();
    EXPECT_EQ(capture.text(), "sr3 :  REAL;\nPsr3 :  REAL;\nstrue :  REAL;\nPstrue :  REAL;\n");
}
