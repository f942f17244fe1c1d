// States: values and facts, what they take from a transition and give back
// to one, and the printed forms. Bucket order: r3 42 before r4 43; "a" 97
// before "b" 98.
#include <gtest/gtest.h>

#include "misc/stop.h"
#include "state.h"
#include "test_support.h"

namespace {

ExpHandle num(int a_value) { return new ConstExp(a_value); }
ExpHandle var(TN* a_tn) { return new VarExp(a_tn); }
ExpHandle var(const char* a_name) { return new VarExp(a_name); }
ExpHandle bin(operator_t a_op, const ExpHandle& a_left, const ExpHandle& a_right)
{
    return new BinaryExp(a_op, a_left, a_right);
}

struct StateRun : RunFixture {
    StateRun() : RunFixture(CVC) {}
    TN* reg(const char* a_name) { return symbols().addTN(TN_SYM_REG, a_name); }
};

} // namespace

TEST(StateTest, WhatAStateTakesFromAndGivesToATransition)
{
    StateRun run;
    Transition t;
    t.assign("r3", num(5));
    t.assign("r4", bin(ADD, var(run.reg("r4")), num(1)));
    t.assign("r5", bin(ADD, var("arXlc"), num(1)));
    State empty(&run.symbols());
    State invariants = empty.produceInvarients(&t);
    EXPECT_TRUE(empty.data().empty());
    ASSERT_EQ(invariants.data().size(), 1u);
    EXPECT_EQ(invariants.getExp("r3")->constValue(), 5);

    State converted(&run.symbols());
    converted.convertToState(&t);
    EXPECT_EQ(converted.data().size(), 2u);
    EXPECT_TRUE(converted.getExp("r4").isNull());
    EXPECT_EQ(converted.getExp("r5").data(), t.getExp("r5").data());

    converted.addLogical(bin(EQ, var("r5"), var("r6")));
    converted.addVar(run.reg("r4"), bin(ADD, var(run.reg("r4")), num(1)));
    State kept = converted.deleteInductive();
    EXPECT_EQ(kept.data().size(), 2u);
    EXPECT_FALSE(kept.data().contains("r4"));
    EXPECT_EQ(kept.logicalNumber(), 1);
    EXPECT_EQ(converted.data().size(), 3u);

    // Substitution is sequential, in map order.
    State s(&run.symbols());
    s.addVar(run.reg("b"), num(3));
    s.addVar(run.reg("a"), var("b"));
    Transition u;
    u.assign("x", bin(ADD, var("a"), num(1)));
    s.substituteInTransition(&u);
    EXPECT_EQ(u.getExp("x")->constValue(), 4);
    s.substitute("b", num(8));
    EXPECT_EQ(s.getExp("a")->constValue(), 8);
}

TEST(StateTest, LookupsThroughFactsAndOperands)
{
    StateRun run;
    TN* r5 = run.reg("r5");
    TN* r6 = run.reg("r6");
    State s("r7", num(7), &run.symbols());
    s.addLogical(bin(EQ, var(r5), var(r6)));
    EXPECT_EQ(s.getExp("r5")->TNValue(), r6);
    EXPECT_EQ(s.getExp("r6")->TNValue(), r5);
    EXPECT_EQ(s.getExp("r7")->constValue(), 7);
    EXPECT_TRUE(s.getExp("r8").isNull());

    // Unlike a transition, a state reads a constant operand as its value first.
    TN* c5 = run.symbols().addTN(TN_CONST, "c5", 5);
    s.addVar(c5, num(9));
    EXPECT_EQ(s.getExp(c5)->constValue(), 5);
    EXPECT_EQ(s.getExp(run.reg("r3"))->getName(), std::string("r3"));

    for (int i = 1; i < 10; ++i)
        s.addLogical(num(i));
    try {
        s.addLogical(num(11));
        FAIL() << "an eleventh fact was stored";
    } catch (const OrderlyStop& stop) {
        EXPECT_STREQ(stop.message(), "Capacity exhausted: more than 10 logical facts\n");
    }
}

TEST(StatePrintTest, EmptyStatesEntriesAndFacts)
{
    StateRun run;
    OutputCapture out;
    State facts_only(&run.symbols());
    facts_only.print(&run.symbols(), NOPRIME);
    facts_only.printCheck(&run.symbols(), NOPRIME);
    facts_only.addLogical(bin(EQ, var(run.reg("r5")), var(run.reg("r6"))));
    facts_only.printAssert(&run.symbols(), PRIME);
    EXPECT_EQ(out.text(), "%Empty State \n1=1%Print Logical \nASSERT \n(Pr5=Pr6);\n");

    out.clear();
    State s(&run.symbols());
    s.addVar(run.reg("r4"), num(2));
    s.addVar(run.reg("r3"), num(5));
    s.print(&run.symbols(), PRIME);
    EXPECT_EQ(out.text(), "%Print State \n%From printOne \nPr3=5\n AND %From printOne \nPr4=2\n");

    out.clear();
    s.deleteVar("r4");
    s.addLogical(bin(EQ, var("r5"), var("r6")));
    s.addLogical(bin(EQ, var("r6"), num(0)));
    s.print(&run.symbols(), NOPRIME);
    s.printCheck(&run.symbols(), NOPRIME);
    EXPECT_EQ(out.text(), "%Print State \n%From printOne \nr3=5\n%Print Logical \n(r5=r6) AND (r6=0)"
                          "%Print State \nAND %can LEFTr3.\n%From printOne \nr3=5\n");

    out.clear();
    State single(&run.symbols());
    single.addVar(run.reg("r3"), num(5));
    single.printAssert(&run.symbols(), NOPRIME);
    // The entry "true" is a condition on its own, not an equation.
    State("true", var("r5"), &run.symbols()).print(&run.symbols(), NOPRIME);
    EXPECT_EQ(out.text(), "%Print State \n%can LEFTr3.\nASSERT \n%From printOne \nr3=5\n;\n"
                          "%Print State \n%From printOne \nr5\n");
}
