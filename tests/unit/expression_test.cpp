// Expressions: handle ownership, the normalizing constructors, equality,
// substitution with folding, 32-bit evaluation, and the printed text.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "assertion.h"
#include "expression.h"
#include "misc/stop.h"
#include "test_support.h"

namespace {

ExpHandle num(int a_value)
{
    return new ConstExp(a_value);
}
ExpHandle var(const char* a_name)
{
    return new VarExp(a_name);
}
ExpHandle un(operator_t a_op, const ExpHandle& a_operand)
{
    return new UnaryExp(a_op, a_operand);
}
ExpHandle bin(operator_t a_op, const ExpHandle& a_left, const ExpHandle& a_right)
{
    return new BinaryExp(a_op, a_left, a_right);
}
ExpHandle tri(operator_t a_op, const ExpHandle& a_first, const ExpHandle& a_second, const ExpHandle& a_third)
{
    return new TrinaryExp(a_op, a_first, a_second, a_third);
}

std::string text(const ExpHandle& a_exp, bool a_prime = false, system_t a_system = TARGET)
{
    OutputCapture capture;
    a_exp->print(a_prime, a_system, false);
    return capture.text();
}

// A node that counts its destructions.
struct CountedConst : ConstExp {
    explicit CountedConst(int* a_deaths) : ConstExp(0), m_deaths(a_deaths) {}
    ~CountedConst() override { ++*m_deaths; }
    int* m_deaths;
};

std::vector<ExpHandle> bitsOf(int a_count, int a_value)
{
    return std::vector<ExpHandle>(a_count, num(a_value));
}

} // namespace

TEST(HandleTest, LastHandleDestroysExactlyOnce)
{
    int deaths = 0;
    {
        ExpHandle first = new CountedConst(&deaths);
        ExpHandle second(first);
        ExpHandle third;
        third = second;
        EXPECT_EQ(first.count(), 3);
        ExpHandle& same = third;
        third = same; // self-assignment keeps the node
        second = first;
        EXPECT_EQ(first.count(), 3);
        first = num(1);
        second = ExpHandle();
        EXPECT_EQ(deaths, 0);
        EXPECT_EQ(third.count(), 1);
        third = third.data(); // the same node again, from the raw pointer
        EXPECT_EQ(third.count(), 1);
        third = new CountedConst(&deaths);
        EXPECT_EQ(deaths, 1);
    }
    EXPECT_EQ(deaths, 2);
}

TEST(HandleTest, WrappingAHeldNodeAgainSharesItsCounter)
{
    int deaths = 0;
    CountedConst* raw = new CountedConst(&deaths);
    {
        ExpHandle first(raw);
        ExpHandle second(raw);
        EXPECT_EQ(first.count(), 2);
        EXPECT_EQ(second.count(), 2);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(ExpressionModelTest, FreshNamesCountUpAndStopAtTheLimit)
{
    RunFixture run;
    EXPECT_EQ(Expression::getFresh(), "FRESH1");
    EXPECT_EQ(Expression::getFresh(), "FRESH2");
    for (int i = 3; i <= 10000; ++i)
        Expression::getFresh();
    try {
        Expression::getFresh();
        FAIL() << "the 10001st fresh name was handed out";
    } catch (const OrderlyStop& stop) {
        EXPECT_STREQ(stop.message(), "Capacity exhausted: more than 10000 fresh names (last <= 10000)\n");
        EXPECT_EQ(stop.status(), 1);
    }
}

TEST(ExpressionOperationsTest, StructuralEquality)
{
    RunFixture run;
    TN* r3 = run.symbols().addTN(TN_SYM_REG, "r3");
    EXPECT_TRUE(ExpHandle(new VarExp(r3)) == var("r3"));
    EXPECT_TRUE(num(5) == num(5));
    EXPECT_FALSE(num(5) == num(6));
    ExpHandle label = new LabelExp("L1");
    EXPECT_TRUE(label == label);
    EXPECT_FALSE(label == ExpHandle(new LabelExp("L1")));
    EXPECT_FALSE(bin(ADD, var("a"), var("b")) == bin(ADD, var("b"), var("a")));
    EXPECT_TRUE(bin(ADD, var("a"), num(1)) == bin(ADD, var("a"), num(1)));
    EXPECT_FALSE(bin(ADD, var("a"), num(1)) == bin(SUB, var("a"), num(1)));
    EXPECT_FALSE(var("") == var(""));
    EXPECT_FALSE(num(0) == var("x"));
    EXPECT_TRUE(tri(IF, var("c"), var("a"), num(1)) == tri(IF, var("c"), var("a"), num(1)));
}

TEST(ExpressionOperationsTest, ConstructorsNormalize)
{
    ExpHandle x = var("x");
    ExpHandle eq = bin(EQ, var("a"), var("b"));
    ExpHandle both = bin(AND, eq, bin(EQ, var("a"), var("b")));
    EXPECT_EQ(both->m_operator, EQ);
    EXPECT_TRUE(both == eq);
    EXPECT_EQ(bin(AND, x, x)->m_operator, AND);

    ExpHandle tautology = bin(OR, un(NOT, x), x);
    EXPECT_EQ(tautology->m_operator, EQ);
    EXPECT_TRUE(tautology->isConst());
    EXPECT_EQ(tautology->constValue(), 1);
    EXPECT_EQ(bin(OR, x, un(NOT, var("x")))->constValue(), 1);

    ExpHandle lookup = bin(LOOKUP, un(ADDR, x), var("MEM"));
    EXPECT_TRUE(lookup->leftValue() == x);

    ExpHandle loaded = un(LD, un(ADDR, un(NEG, var("y"))));
    EXPECT_EQ(loaded->m_operator, NEG);
    EXPECT_TRUE(loaded->Value() == var("y"));

    ExpHandle c = var("c");
    ExpHandle cut = tri(IF, c, tri(IF, c, var("a"), var("b")), tri(IF, c, var("d"), var("e")));
    EXPECT_TRUE(cut->operand(2) == var("a"));
    EXPECT_TRUE(cut->operand(3) == var("e"));
    ExpHandle negated = tri(IF, un(NOT, c), tri(IF, c, var("a"), var("b")), var("d"));
    EXPECT_TRUE(negated->operand(2) == var("b"));
    EXPECT_TRUE(negated->operand(3) == var("d"));
    ExpHandle other = tri(IF, var("q"), tri(IF, c, var("a"), var("b")), var("d"));
    EXPECT_EQ(other->operand(2)->m_operator, IF);
}

TEST(ExpressionOperationsTest, SubstitutionFoldsConstants)
{
    RunFixture run;
    TN* r3 = run.symbols().addTN(TN_SYM_REG, "r3");
    ExpHandle reg = new VarExp(r3);
    ExpHandle four = num(4);

    ExpHandle sum = bin(ADD, reg, num(1));
    ExpHandle folded = sum->substituteExp("r3", four, sum);
    ASSERT_EQ(folded->m_type, CONST_EXP);
    EXPECT_EQ(folded->constValue(), 5);

    ExpHandle choice = tri(IF, bin(EQ, reg, num(4)), var("a"), var("b"));
    EXPECT_TRUE(choice->substituteExp("r3", four, choice) == var("a"));
    ExpHandle other = tri(IF, bin(GT, reg, num(4)), var("a"), var("b"));
    EXPECT_TRUE(other->substituteExp("r3", four, other) == var("b"));
    // Only the condition value 1 selects the then-part.
    ExpHandle two = tri(IF, bin(ADD, reg, num(-2)), var("a"), var("b"));
    EXPECT_TRUE(two->substituteExp("r3", four, two) == var("b"));

    // A replacement that mentions the variable is never substituted.
    ExpHandle growing = bin(ADD, reg, num(1));
    EXPECT_EQ(reg->substituteExp("r3", growing, reg).data(), reg.data());
    ExpHandle untouched = un(NEG, var("q"));
    ExpHandle same = untouched->substituteExp("r3", four, untouched);
    EXPECT_TRUE(same == untouched);

    ExpHandle condition = tri(IF, bin(EQ, reg, num(0)), var("a"), var("b"));
    ExpHandle simplified = condition->ifSimplify("r3", num(0), condition);
    EXPECT_EQ(simplified->m_operator, IF);
    EXPECT_TRUE(simplified->operand(1)->isConst());
    EXPECT_EQ(simplified->operand(2).data(), condition->operand(2).data());

    EXPECT_TRUE(condition->dependsOnVar("r3"));
    EXPECT_FALSE(condition->dependsOnVar("r4"));
    EXPECT_TRUE(ExpHandle(new BitArrayExp(std::vector<ExpHandle>(32, reg)))->dependsOnVar("r3"));
}

TEST(ExpressionOperationsTest, CopiesCanBeChangedWithoutTouchingTheOriginal)
{
    RunFixture run(CVC);
    ExpHandle original = tri(IF, var("c"), bin(ADD, var("a"), num(1)), num(0));
    ExpHandle copy = original->copyExp(original);
    EXPECT_NE(copy.data(), original.data());
    EXPECT_TRUE(copy == original);
    copy->setOperand(3, num(7));
    EXPECT_EQ(text(original), " (IF (c) THEN \n(a+1) ELSE \n0 ENDIF) ");
    EXPECT_EQ(text(copy), " (IF (c) THEN \n(a+1) ELSE \n7 ENDIF) ");

    // Nodes equal only to themselves, and comparisons (which remember being
    // printed), are new in a copy.
    ExpHandle bits = new BitArrayExp(bitsOf(32, 1));
    ExpHandle bits_copy = bits->copyExp(bits);
    EXPECT_FALSE(bits_copy == bits);
    EXPECT_TRUE(bits_copy->isConst());
    ExpHandle test = tri(IF, bin(GT, var("x"), num(0)), var("a"), var("b"));
    ExpHandle test_copy = test->copyExp(test);
    EXPECT_NE(test_copy->operand(1).data(), test->operand(1).data());
    EXPECT_TRUE(test_copy == test);
}

TEST(ExpressionOperationsTest, ACopyMakesNumericOperandsAnewAndSharesNamedOnes)
{
    RunFixture run(CVC);
    // A numeric operand has no name: its variable is equal only to itself,
    // so the copy of a value over it is not equal to the value.
    TN minus_four(-4L);
    ExpHandle sum = bin(ADD, var("r5"), ExpHandle(new VarExp(&minus_four)));
    ExpHandle copy = sum->copyExp(sum);
    EXPECT_FALSE(copy == sum);
    EXPECT_TRUE(copy == copy);
    EXPECT_EQ(text(copy), "(r5+-4)");
    EXPECT_NE(copy->rightValue().data(), sum->rightValue().data());
    // A named variable compares by name, copied or not.
    EXPECT_EQ(copy->leftValue().data(), sum->leftValue().data());
    ExpHandle named = bin(ADD, var("r5"), var("r6"));
    EXPECT_TRUE(named->copyExp(named) == named);
}

TEST(ExpressionOperationsTest, CopyingNormalizesAChangedConditionalAgain)
{
    RunFixture run(CVC);
    // Setting a branch bypasses the constructor's cut of a nested
    // conditional on the same condition; a copy makes that cut.
    ExpHandle node = tri(IF, var("c"), var("a"), var("b"));
    node->setOperand(2, tri(IF, var("c"), var("x"), var("y")));
    ExpHandle copy = node->copyExp(node);
    EXPECT_EQ(text(copy), " (IF (c) THEN \nx ELSE \nb ENDIF) ");
    ExpHandle outer = bin(ADD, node, num(1));
    ExpHandle outer_copy = outer->copyExp(outer);
    EXPECT_EQ(text(outer_copy), "( (IF (c) THEN \nx ELSE \nb ENDIF) +1)");
}

TEST(ExpressionOperationsTest, ThirtyTwoBitArithmeticWraps)
{
    EXPECT_EQ(bin(ADD, num(INT_MAX), num(1))->constValue(), INT_MIN);
    EXPECT_EQ(bin(SUB, num(INT_MIN), num(1))->constValue(), INT_MAX);
    EXPECT_EQ(bin(MUL, num(INT_MIN), num(-1))->constValue(), INT_MIN);
    EXPECT_EQ(bin(MUL, num(65536), num(65536))->constValue(), 0);
    EXPECT_EQ(un(NEG, num(INT_MIN))->constValue(), INT_MIN);
    EXPECT_EQ(un(NEG, num(5))->constValue(), -5);
    EXPECT_EQ(bin(DIV, num(-7), num(2))->constValue(), -3);
    EXPECT_TRUE(bin(DIV, num(INT_MIN), num(2))->isConst());

    ExpHandle by_zero = bin(DIV, num(7), num(0));
    EXPECT_FALSE(by_zero->isConst());
    EXPECT_EQ(by_zero->constValue(), 0);
    EXPECT_FALSE(bin(DIV, num(INT_MIN), num(-1))->isConst());
    ExpHandle unfolded = bin(DIV, num(1), num(0));
    EXPECT_EQ(unfolded->substituteExp("x", num(1), unfolded)->m_type, BINARY_EXP);

    EXPECT_EQ(un(NOT, num(7))->constValue(), 0);
    EXPECT_EQ(un(NOT, num(0))->constValue(), 1);
    EXPECT_EQ(bin(GE, num(-1), num(-1))->constValue(), 1);
    EXPECT_EQ(bin(LT, num(INT_MIN), num(INT_MAX))->constValue(), 1);
    EXPECT_EQ(bin(NEQ, num(3), num(3))->constValue(), 0);
}

TEST(ExpressionOperationsTest, ConnectivesAndWordOperatorsEvaluate)
{
    ExpHandle x = var("x");
    EXPECT_TRUE(bin(AND, x, num(0))->isConst());
    EXPECT_EQ(bin(AND, x, num(0))->constValue(), 0);
    EXPECT_TRUE(bin(OR, num(1), x)->isConst());
    EXPECT_EQ(bin(OR, num(1), x)->constValue(), 1);
    EXPECT_FALSE(bin(OR, x, num(1))->isConst());
    EXPECT_FALSE(bin(OR, num(2), x)->isConst());
    EXPECT_EQ(bin(OR, num(0), num(5))->constValue(), 1);
    EXPECT_EQ(bin(AND, num(3), num(5))->constValue(), 1);

    EXPECT_EQ(bin(SELECT_BIT, num(INT_MIN), num(0))->constValue(), 1);
    EXPECT_EQ(bin(SELECT_BIT, num(1), num(31))->constValue(), 1);
    EXPECT_EQ(bin(SELECT_BIT, num(1), num(30))->constValue(), 0);
    EXPECT_EQ(bin(SELECT_BIT, num(-1), num(32))->constValue(), 0);
    EXPECT_EQ(bin(ANDC, num(0xff), num(0x0f))->constValue(), 0xf0);
    EXPECT_EQ(un(CNTLZW, num(0))->constValue(), 32);
    EXPECT_EQ(un(CNTLZW, num(1))->constValue(), 31);
    EXPECT_EQ(un(CNTLZW, num(-1))->constValue(), 0);
    EXPECT_EQ(bin(LOOKUP, num(1), num(2))->constValue(), 0);
    EXPECT_TRUE(tri(IF, num(1), num(2), num(3))->isConst());
    EXPECT_EQ(tri(IF, num(1), num(2), num(3))->constValue(), 0);
    EXPECT_FALSE(un(NEG, x)->isConst());
    EXPECT_EQ(un(NEG, x)->constValue(), 0);
}

TEST(ExpressionPrintTest, LeavesAndSides)
{
    RunFixture run;
    TN* r3 = run.symbols().addTN(TN_SYM_REG, "r3");
    ExpHandle reg = new VarExp(r3);
    EXPECT_EQ(text(num(-4)), "-4");
    EXPECT_EQ(text(ExpHandle(new LabelExp("L1"))), "L1");
    EXPECT_EQ(text(bin(EQ, reg, num(5))), "(r3=5)");
    EXPECT_EQ(text(bin(EQ, reg, num(5)), false, SOURCE), "(sr3=5)");
    EXPECT_EQ(text(bin(EQ, reg, num(5)), true), "(Pr3=5)");
    EXPECT_EQ(text(var("FRESH1"), true, SOURCE), "FRESH1");
    // Decided conditions print one branch: only the value 0 is false.
    EXPECT_EQ(text(tri(IF, bin(EQ, num(1), num(1)), var("a"), var("b"))), "a");
    EXPECT_EQ(text(tri(IF, num(0), var("a"), var("b"))), "b");
    EXPECT_EQ(text(tri(IF, num(7), var("a"), var("b"))), "a");
}

TEST(ExpressionPrintTest, OperatorsInEachSyntax)
{
    RunFixture run(CVC);
    ExpHandle a = var("a");
    ExpHandle b = var("b");
    EXPECT_EQ(text(bin(ADD, a, b)), "(a+b)");
    EXPECT_EQ(text(bin(SUB, a, num(1))), "(a-1)");
    EXPECT_EQ(text(bin(DIV, a, b)), "(a/b)");
    EXPECT_EQ(text(bin(MUL, a, b)), "(MUL(a,b))");
    EXPECT_EQ(text(bin(MUL, a, num(3))), "(a*3)");
    EXPECT_EQ(text(bin(ANDC, a, b)), "(ANDC(a,b))");
    EXPECT_EQ(text(bin(SELECT_BIT, a, num(4))), "(SELECT_BIT(a,4))");
    EXPECT_EQ(text(bin(AND, a, b)), "(a AND b)");
    EXPECT_EQ(text(bin(OR, a, b)), "(a OR b)");
    EXPECT_EQ(text(bin(NEQ, a, b)), "( NOT a=b)");
    EXPECT_EQ(text(un(NOT, a)), " NOT a");
    EXPECT_EQ(text(un(NEG, a)), "(- a)");
    EXPECT_EQ(text(un(CNTLZW, a)), "CNTLZW(a)");
    EXPECT_EQ(text(un(ADDRESS, a)), "ADDRESS(a)");
    EXPECT_EQ(text(un(ADDR, a)), "(ADDR( a))");
    EXPECT_EQ(text(un(ELSE, a)), " ELSE a)");
    EXPECT_EQ(text(bin(LOOKUP, a, var("MEM"))), "(MEM[a])");
    EXPECT_EQ(text(bin(LOOKUP, un(ADDR, a), var("MEM"))), "(MEM[a])");
    ExpHandle address_lookup = bin(LOOKUP, a, var("MEM"));
    address_lookup->setOperand(1, un(ADDR, b));
    EXPECT_EQ(text(address_lookup), "(b)");
    EXPECT_EQ(text(tri(IF, a, num(1), b)), " (IF (a) THEN \n1 ELSE \nb ENDIF) ");
    EXPECT_EQ(text(tri(UPDATE, var("M"), a, num(2))), "(M WITH [a] := 2\n)");
    EXPECT_EQ(text(ExpHandle(new BitArrayExp(bitsOf(32, 0)))),
              "BitArray(0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0)");

    setOutFormat(ICS);
    EXPECT_EQ(text(bin(MUL, a, b)), "(a*b)");
    EXPECT_EQ(text(bin(NEQ, a, b)), "(~a=b)");
    EXPECT_EQ(text(bin(AND, a, b)), "(a&b)");
    EXPECT_EQ(text(bin(OR, a, b)), "(a|b)");
    EXPECT_EQ(text(tri(IF, a, num(1), b)), " if a then \n1 else \nb end ");
    ExpHandle nested = tri(UPDATE, tri(UPDATE, var("M"), var("i"), var("v")), var("j"), var("w"));
    EXPECT_EQ(text(nested), "M[i]=v&tM[j]=w");
    EXPECT_EQ(text(nested, true, SOURCE), "M[i]=v&PsM[j]=w");
    EXPECT_TRUE(nested->specialPrint());

    setOutFormat(TLV);
    EXPECT_EQ(text(bin(AND, a, b)), "(ab)");
    EXPECT_EQ(text(un(NOT, a)), "a");
    EXPECT_EQ(text(tri(IF, a, num(1), b)), "a\n1\nb");
    EXPECT_EQ(text(bin(NEQ, a, b)), "(a=b)");
}

TEST(ExpressionPrintTest, OperatorsWithoutTextReportToStandardError)
{
    RunFixture run;
    StreamCapture errors(std::cerr);
    EXPECT_EQ(text(un(LD, var("a"))), "");
    EXPECT_EQ(text(tri(CASE, var("a"), var("b"), var("c"))), "");
    EXPECT_EQ(text(bin(SHL, var("a"), var("b"))), "(ab)");
    EXPECT_EQ(errors.text(),
              "ERROR!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!\nIn UnaryExp!\nWe forgot to print operator 22\n"
              "ERROR!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!\nIn TrinaryExp!\nWe forgot to print operator 7\n");
}

TEST(ComparisonAssertionTest, EachComparisonAddsItsTieOnce)
{
    RunFixture run;
    StreamCapture errors(std::cerr);
    TN* r3 = run.symbols().addTN(TN_SYM_REG, "r3");
    ExpHandle gt = bin(GT, ExpHandle(new VarExp(r3)), num(5));
    EXPECT_EQ(text(gt), "(r3>5)");
    EXPECT_EQ(text(gt), "(r3>5)");
    ASSERT_EQ(commonAssertions.count(), 1);
    EXPECT_EQ(errors.text(), "AddAssertion here 1\n");
    // The assertion shares the printed node itself.
    EXPECT_EQ(commonAssertions.all()[0]->leftValue().data(), gt.data());
    commonAssertions.resetMore();
    EXPECT_EQ(text(commonAssertions.all()[0]), "((r3>5)=(r3>=(5+1)))");

    commonAssertions.setMore();
    text(bin(GT, var("r3"), var("r4")));
    EXPECT_EQ(commonAssertions.count(), 2);
    text(bin(GT, num(5), num(6)));
    EXPECT_EQ(commonAssertions.count(), 2);
}

TEST(ComparisonAssertionTest, TiesOfLessAndGreaterEqual)
{
    RunFixture run;
    StreamCapture errors(std::cerr);
    ExpHandle lt = bin(LT, var("a"), num(3));
    ExpHandle ge = bin(GE, num(3), var("b"));
    text(lt);
    text(ge);
    ASSERT_EQ(commonAssertions.count(), 2);
    commonAssertions.resetMore();
    EXPECT_EQ(text(commonAssertions.all()[0]), "((a<3)=(3>=(a+1)))");
    EXPECT_EQ(text(commonAssertions.all()[1]), "((3>=b)=(3>(b-1)))");
    EXPECT_EQ(errors.text(), "AddAssertion here 2\nAddAssertion here 3\n");
}

TEST(ComparisonAssertionTest, CollectingSwitchAndLifetime)
{
    RunFixture run;
    StreamCapture errors(std::cerr);
    ExpHandle gt = bin(GT, var("x"), num(0));
    commonAssertions.resetMore();
    text(gt);
    EXPECT_EQ(commonAssertions.count(), 0);
    EXPECT_FALSE(gt->getMark());
    commonAssertions.setMore();
    text(gt);
    EXPECT_TRUE(gt->getMark());
    // The assertion alone keeps the printed node alive.
    gt = ExpHandle();
    ASSERT_EQ(commonAssertions.count(), 1);
    commonAssertions.resetMore();
    EXPECT_EQ(text(commonAssertions.all()[0]), "((x>0)=(x>=(0+1)))");
}

TEST(CommonAssertionsTest, PrintAllWritesOneLinePerAssertion)
{
    RunFixture run(CVC);
    StreamCapture errors(std::cerr);
    StreamCapture progress(std::cout);
    OutputCapture capture;
    commonAssertions.addAssertion(bin(EQ, var("a"), num(1)));
    commonAssertions.addAssertion(ExpHandle());
    commonAssertions.addAssertion(bin(GT, var("b"), num(2)));
    commonAssertions.printAll();
    EXPECT_EQ(capture.text(), "ASSERT (a=1);\nASSERT (b>2);\n");
    EXPECT_EQ(progress.text(), "=*=*=*=*=*=*=*=*=*= print all 2\ninserts 0\ninserts 1\n");
    // Printing switched collecting off, so the comparison added nothing.
    EXPECT_EQ(commonAssertions.count(), 2);
    EXPECT_FALSE(commonAssertions.addMore());

    RunFixture ics(ICS);
    OutputCapture empty;
    StreamCapture quiet(std::cout);
    commonAssertions.printAll();
    EXPECT_EQ(empty.text(), "");
    EXPECT_EQ(quiet.text(), "=*=*=*=*=*=*=*=*=*= print all 0\n");
    commonAssertions.setMore();
    commonAssertions.addAssertion(var("q"));
    commonAssertions.printAll();
    EXPECT_EQ(empty.text(), "assert(q).\n");
}

// Values of long listings share their parts: x+x where both operands are one
// node, chains of such sums, conditionals over them. Every operation that
// writes nothing must cost what the distinct nodes cost, not what the
// unfolded tree (2^depth leaves) would.
namespace {

constexpr int SHARED_DEPTH = 200;

ExpHandle doublingChain(const ExpHandle& a_leaf)
{
    ExpHandle chain = a_leaf;
    for (int i = 0; i < SHARED_DEPTH; ++i)
        chain = bin(ADD, chain, chain);
    return chain;
}

} // namespace

TEST(SharedSubtreeTest, WalksCostTheDistinctNodes)
{
    ExpHandle constant = doublingChain(num(1));
    EXPECT_TRUE(constant->isConst());
    // 2^200 wraps to 0 in 32 bits; so does every sum past 2^32.
    EXPECT_EQ(constant->constValue(), 0);
    ExpHandle left = doublingChain(var("r3"));
    EXPECT_FALSE(left->isConst());
    ExpHandle right = doublingChain(var("r3"));
    EXPECT_TRUE(left == right);
    // A difference at the very bottom is found as well.
    ExpHandle other = doublingChain(var("r4"));
    EXPECT_FALSE(left == other);
    EXPECT_FALSE(left == bin(ADD, left->leftValue(), other->leftValue()));
    EXPECT_TRUE(left->dependsOnVar("r3"));
    EXPECT_FALSE(left->dependsOnVar("r4"));
    EXPECT_TRUE(bin(SUB, left, var("r4"))->dependsOnVar("r4"));
}

TEST(SharedSubtreeTest, CopyOfAConditionalOverASharedChain)
{
    ExpHandle chain = doublingChain(var("r3"));
    ExpHandle conditional = tri(IF, var("c"), chain, var("r4"));
    ExpHandle copy = conditional->copyExp(conditional);
    EXPECT_TRUE(copy == conditional);
    copy->setOperand(3, num(0));
    EXPECT_TRUE(conditional->operand(3) == var("r4"));
}

TEST(SharedSubtreeTest, AnOperandThatBecomesAConstantChangesTheValue)
{
    RunFixture run(CVC);
    TN* k = run.symbols().addTN(TN_SYM_REG, "k");
    ExpHandle sum = bin(ADD, doublingChain(new VarExp(k)), num(5));
    EXPECT_FALSE(sum->isConst());
    // The name registered again, now as a constant of value 3.
    run.symbols().addTN(TN_CONST, "k", 3L);
    EXPECT_TRUE(sum->isConst());
    EXPECT_EQ(sum->constValue(), 5);
    ExpHandle once = bin(ADD, new VarExp(k), num(5));
    EXPECT_EQ(once->constValue(), 8);
    run.symbols().addTN(TN_CONST, "k", 4L);
    EXPECT_EQ(once->constValue(), 9);
    run.symbols().addTN(TN_SYM_REG, "k");
    EXPECT_FALSE(once->isConst());
    EXPECT_EQ(once->constValue(), 0);
}

TEST(SharedSubtreeTest, TheNodeLimitStopsTheRunBeforeTheMemoryRunsOut)
{
    RunFixture run(CVC);
    // Restores the default limit at the end of the test, whatever happens.
    struct Limit {
        explicit Limit(std::size_t a_limit) { Expression::setNodeLimit(a_limit); }
        ~Limit() { Expression::setNodeLimit(20000000); }
    } limit(Expression::liveNodes() + 1000);

    std::string message;
    try {
        std::vector<ExpHandle> nodes;
        for (int i = 0; i < 2000; ++i)
            nodes.push_back(num(i));
    } catch (const OrderlyStop& stop) {
        message = stop.message();
    }
    EXPECT_EQ(message, "Capacity exhausted: more than " + std::to_string(Expression::liveNodes() + 1000) +
                           " expression nodes\n");

    // A copy is refused whole, before any of it is made: the doubled bit
    // array has 2^200 paths to it, each of which a copy makes anew.
    ExpHandle value = tri(IF, var("c"), doublingChain(new BitArrayExp(bitsOf(32, 1))), num(0));
    std::size_t before = Expression::liveNodes();
    message.clear();
    try {
        Expression::copyOf(value);
    } catch (const OrderlyStop& stop) {
        message = stop.message();
    }
    EXPECT_NE(message, "");
    EXPECT_EQ(Expression::liveNodes(), before);
    // A small one is made.
    ExpHandle small = tri(IF, var("c"), bin(ADD, new BitArrayExp(bitsOf(32, 1)), num(1)), num(0));
    EXPECT_TRUE(Expression::copyOf(small) != small);
}
