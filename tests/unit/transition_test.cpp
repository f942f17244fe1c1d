// Transitions: reading and writing variables, composition, the cursor, and
// the printed assertions. Where two entries print, their order follows the
// map's buckets: "a" 97 before "b" 98, "MEMc" before "MEMd".
#include <gtest/gtest.h>

#include "test_support.h"
#include "transition.h"

namespace {

ExpHandle num(int a_value) { return new ConstExp(a_value); }
ExpHandle var(const char* a_name) { return new VarExp(a_name); }
ExpHandle plus(const ExpHandle& a_left, const ExpHandle& a_right) { return new BinaryExp(ADD, a_left, a_right); }

} // namespace

TEST(TransitionTest, ReadsWritesAndCopies)
{
    RunFixture run;
    TN* r3 = run.symbols().addTN(TN_SYM_REG, "r3");
    TN* c5 = run.symbols().addTN(TN_CONST, "c5", 5);
    Transition t;
    ExpHandle one = num(1);
    t.assign("x", one);
    Transition copy(t);
    ExpHandle two = num(2);
    t.assign("x", two);
    EXPECT_EQ(copy.getExp("x").data(), one.data());

    // A constant operand reads as its value once it has an entry.
    t.assign("c5", var("y"));
    EXPECT_EQ(t.getExp(c5)->constValue(), 5);
    EXPECT_STREQ(t.getExp("c5")->getName(), "y");

    t.addVar("x");
    t.addVar(r3);
    t.addVars(num(4));
    t.addVars(plus(var("q2"), num(1)));
    EXPECT_EQ(t.getExp("x").data(), two.data());
    EXPECT_EQ(t.getExp("r3")->TNValue(), r3);
    EXPECT_EQ(t.size(), 4u);
    t.deleteVar("q2");
    EXPECT_TRUE(t.isIn("q2"));
}

TEST(TransitionTest, CompositionAndCursor)
{
    RunFixture run;
    Transition t;
    EXPECT_EQ(t.Begin(), t.End());
    t.assign("b", plus(var("b"), num(1)));
    t.assign("a", plus(var("a"), num(1)));
    EXPECT_STREQ(t.Begin(), "a");
    EXPECT_STREQ(t.next(), "b");
    EXPECT_EQ(t.next(), t.End());

    t.assign("c", plus(var("r3"), num(1)));
    t.deleteInductive();
    EXPECT_TRUE(t.isIn("a"));
    EXPECT_FALSE(t.isIn("b"));
    t.substitute("r3", num(2));
    EXPECT_EQ(t.getExp("c")->constValue(), 3);

    ExpHandle branch = new TrinaryExp(IF, var("p"), num(1), num(2));
    t.assign("d", branch);
    Transition decided = t.ifSimplify("p", num(0));
    EXPECT_EQ(decided.getExp("d")->operand(1)->constValue(), 0);
    EXPECT_EQ(decided.getExp("d")->operand(2).data(), branch->operand(2).data());
    EXPECT_EQ(t.getExp("d").data(), branch.data());

    StreamCapture out(std::cout);
    t.resetValues();
    EXPECT_EQ(out.text(), "RESETED!!!\n");
    EXPECT_STREQ(t.getExp("d")->getName(), "d");
}

TEST(TransitionPrintTest, PartialPrintsUnknownCellsPreserveQueriesAndRegisterMap)
{
    RunFixture run(CVC);
    OutputCapture out;
    run.symbols().addTN(TN_SYMBOL, "MEMa");
    run.symbols().addTN(TN_EXTERNAL, "MEMx");
    Transition t;
    t.assign("r3", num(1));
    t.assign("MEMa", num(1));
    t.assign("MEMx", num(4));
    t.print(&run.symbols(), false);
    EXPECT_EQ(out.text(), "PMEMx=4\n;\n");

    out.clear();
    Transition unknown;
    unknown.assign("MEMc", num(5));
    unknown.assign("MEMd", new TrinaryExp(IF, var("p1"), num(2), num(3)));
    unknown.print(&run.symbols(), true);
    EXPECT_EQ(out.text(), "PMEMc=5\n;\n\nASSERT PMEMd = (IF (p1) THEN \n2 ELSE \n3 ENDIF) ;\n");

    out.clear();
    run.symbols().addTN(TN_SYM_REG, "u", "a");
    run.symbols().addTN(TN_SYM_REG, "v", "b");
    Transition pair;
    pair.assign("b", var("b"));
    pair.assign("a", num(1));
    pair.printPreserve(&run.symbols(), true);
    pair.printPreserve(&run.symbols(), false);
    EXPECT_EQ(out.text(), "%Print Transition and preserve \nPa=a\n AND \nPb=b\n%Print Transition and preserve \n");

    out.clear();
    pair.printMap(&run.symbols(), false);
    pair.printMap(&run.symbols(), true);
    EXPECT_EQ(out.text(), "a = su\n AND b = sv\nPa = Psu\n AND Pb = Psv\n");

    out.clear();
    StreamCapture names(std::cout);
    pair.deleteVar("b");
    pair.printAll(true, true);
    Transition().printAll(false, false);
    EXPECT_EQ(out.text(), "%Print Declarations \na: REAL;\nPa: REAL;\n%BEGIN-QUERIES \nQUERY Pa=1\n\n;\n"
                          "%BEGIN-QUERIES \n1=1;\n");
    EXPECT_EQ(names.text(), "a\n");
}
