// Path conditions: disjunctions of clauses with constant flags.
#include <gtest/gtest.h>

#include <iterator>
#include <utility>
#include <vector>

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

namespace {

using Literals = std::vector<std::pair<int, bool>>;

// The merge rule stated plainly, on lists of literal lists: the first clause
// that has a complementary one after it (the same propositions in the same
// order, exactly one of them of the other sign) loses that literal, the
// first such later clause goes, and the search starts again from the front.
// Returns false when a clause becomes empty.
bool mergeByTheRule(std::vector<Literals>& a_clauses)
{
    for (;;) {
        bool merged = false;
        for (std::size_t x = 0; x < a_clauses.size() && !merged; ++x) {
            for (std::size_t y = x + 1; y < a_clauses.size() && !merged; ++y) {
                const Literals& left = a_clauses[x];
                const Literals& right = a_clauses[y];
                if (left.size() != right.size())
                    continue;
                int differing = -1;
                bool same_propositions = true;
                for (std::size_t i = 0; i < left.size(); ++i) {
                    same_propositions = same_propositions && left[i].first == right[i].first;
                    if (left[i].second != right[i].second)
                        differing = differing == -1 ? static_cast<int>(i) : -2;
                }
                if (!same_propositions || differing < 0)
                    continue;
                a_clauses[x].erase(a_clauses[x].begin() + differing);
                if (a_clauses[x].empty())
                    return false;
                a_clauses.erase(a_clauses.begin() + static_cast<long>(y));
                merged = true;
            }
        }
        if (!merged)
            return true;
    }
}

Literals literalsOf(const Clause& a_clause)
{
    Literals literals;
    for (const intBool& literal : a_clause)
        literals.emplace_back(literal.p_id, literal.m_bool);
    return literals;
}

} // namespace

TEST(DNFTest, SimplifyFollowsTheMergeRuleOnRandomPathConditions)
{
    RunFixture run(CVC);
    StreamCapture quiet(std::cout);
    unsigned state = 12345;
    auto next = [&state](unsigned a_bound) {
        state = state * 1103515245u + 12345u;
        return (state >> 16) % a_bound;
    };
    for (int round = 0; round < 300; ++round) {
        // Clauses over few propositions, so that complements and duplicates
        // are common.
        DNF first(false), second(false);
        std::vector<Literals> expected;
        int clauses = 1 + static_cast<int>(next(12));
        std::vector<Clause> made;
        for (int c = 0; c < clauses; ++c) {
            Clause clause(1 + static_cast<int>(next(4)), next(2) == 0);
            for (int more = static_cast<int>(next(3)); more > 0; --more)
                clause.andClause(1 + static_cast<int>(next(4)), next(2) == 0);
            if (clause.isTrue())
                continue;
            made.push_back(clause);
        }
        std::size_t split = made.size() / 2;
        for (std::size_t i = 0; i < made.size(); ++i)
            (i < split ? first : second).add(made[i]);
        // The list simplify starts from: the first operand's clauses, then
        // each of the second's put at the front.
        for (const Clause& clause : first)
            expected.push_back(literalsOf(clause));
        for (const Clause& clause : second)
            expected.insert(expected.begin(), literalsOf(clause));

        DNF result = simplify(first, second);
        if (!mergeByTheRule(expected)) {
            EXPECT_TRUE(result.isTrue()) << "round " << round;
            continue;
        }
        std::vector<Literals> got;
        for (const Clause& clause : result)
            got.push_back(literalsOf(clause));
        EXPECT_EQ(got, expected) << "round " << round;
    }
}

TEST(DNFTest, SimplifyOfThousandsOfClauses)
{
    RunFixture run(CVC);
    // All 2^12 sign choices of p1..p12, in an order where the merges come
    // late: together they are true.
    std::vector<Clause> all;
    for (int signs = 0; signs < 4096; ++signs) {
        Clause clause(1, (signs & 1) != 0);
        for (int p = 2; p <= 12; ++p)
            clause.andClause(p, (signs >> (p - 1) & 1) != 0);
        all.push_back(clause);
    }
    DNF every(false);
    for (const Clause& clause : all)
        every.add(clause);
    EXPECT_TRUE(simplify(every, DNF(false)).isTrue());
}
