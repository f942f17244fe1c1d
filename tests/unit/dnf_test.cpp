// Path conditions: disjunctions of clauses with constant flags.
#include <gtest/gtest.h>

#include <iterator>

#include "DNF.h"
#include "propositionhandler.h"
#include "test_support.h"

namespace {

// A DNF whose list reads as given (add puts each clause at the front).
DNF dnfOf(std::initializer_list<Clause> a_clauses)
{
    DNF dnf(false);
    for (auto it = std::rbegin(a_clauses); it != std::rend(a_clauses); ++it)
        dnf.add(*it);
    return dnf;
}

Clause both(int a_first, bool a_first_bool, int a_second, bool a_second_bool)
{
    Clause clause(a_first, a_first_bool);
    clause.andClause(a_second, a_second_bool);
    return clause;
}

std::string printed(const DNF& a_dnf)
{
    OutputCapture output;
    a_dnf.print();
    return output.text();
}

} // namespace

TEST(DNFTest, AndDNFStrengthensEveryClauseAndDropsContradictions)
{
    RunFixture run(CVC);
    EXPECT_EQ(printed(andDNF(DNF(), 3, true)), "%c0=  p3\n");
    EXPECT_EQ(printed(andDNF(DNF(false), 3, true)), "%c0=  p3\n");

    DNF result;
    {
        OutputCapture output;
        StreamCapture out(std::cout);
        result = andDNF(dnfOf({Clause(3, true), both(3, true, 4, true), Clause(5, true), Clause(1, true)}), 3, false);
        // Each contradiction prints the DNF as it stands, emptied clause included.
        EXPECT_EQ(output.text(), "%c0= \n%c1=  p3 p4\n%c2=  p5\n%c3=  p1\n%c0= \n%c1=  p5\n%c2=  p1\n");
        EXPECT_EQ(out.text(), " Clear\n Clear\n");
        EXPECT_TRUE(andDNF(dnfOf({Clause(3, true)}), 3, false).isFalse());
    }
    EXPECT_EQ(printed(result), "%c0= ~p3 p5\n%c1=  p1~p3\n");
    setOutFormat(TLV);
    EXPECT_EQ(printed(DNF()) + printed(DNF(false)), "#c0true\n#c0false\n");
}

TEST(DNFTest, SimplifyMergesComplementaryClausesUntilStable)
{
    RunFixture run(CVC);
    EXPECT_EQ(printed(simplify(dnfOf({both(1, true, 2, true)}), dnfOf({both(1, true, 2, false)}))), "%c0=  p1\n");
    EXPECT_TRUE(simplify(dnfOf({Clause(2, true)}), dnfOf({Clause(2, false)})).isTrue());
    DNF x = dnfOf({Clause(1, true), Clause(4, false)});
    EXPECT_EQ(printed(simplify(DNF(false), x)), printed(x));
    EXPECT_TRUE(simplify(x, DNF()).isTrue());
    // The second operand's clauses go to the front, in their order.
    EXPECT_EQ(printed(simplify(x, dnfOf({Clause(2, true), Clause(3, true)}))),
              "%c0=  p3\n%c1=  p2\n%c2=  p1\n%c3= ~p4\n");

    // Merging p3 makes p2 mergeable in a later pass.
    Clause p1p2p3 = both(1, true, 2, true), p1p2np3 = both(1, true, 2, true);
    p1p2p3.andClause(3, true);
    p1p2np3.andClause(3, false);
    EXPECT_EQ(printed(simplify(dnfOf({p1p2p3}), dnfOf({p1p2np3, both(1, true, 2, false)}))), "%c0=  p1\n");
    EXPECT_TRUE(simplify(dnfOf({both(1, true, 2, true)}), dnfOf({both(1, true, 2, false), Clause(1, false)})).isTrue());
}

TEST(DNFTest, ExpressionOfTheCondition)
{
    RunFixture run(CVC);
    OutputCapture output;
    for (const char* name : {"c1", "c2", "c3", "c4"})
        proposition_handler->setNextProposition(new VarExp(name));
    EXPECT_EQ(dnfOf({Clause(1, true)}).getExp().data(), proposition_handler->getProposition(1).data());
    Clause three = both(4, true, 1, true);
    three.andClause(3, false);
    output.clear();
    dnfOf({three, Clause(2, true), Clause(3, false)}).getExp()->print(false, TARGET, true);
    DNF().getExp()->print(false, TARGET, true);
    DNF(false).getExp()->print(false, TARGET, true);
    EXPECT_EQ(output.text(), "( NOT p3 OR (p2 OR ((p1 AND  NOT p3) AND p4)))(1=1)(1=0)");
}
