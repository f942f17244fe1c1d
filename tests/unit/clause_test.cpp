// Clauses: ordered conjunctions of literals over numbered propositions.
#include <gtest/gtest.h>

#include "clause.h"
#include "test_support.h"

namespace {

std::string text(const Clause& a_clause)
{
    OutputCapture output;
    a_clause.print();
    return output.text();
}

Clause clauseOf(std::initializer_list<intBool> a_literals)
{
    Clause clause;
    for (intBool literal : a_literals)
        clause.andClause(literal.p_id, literal.m_bool);
    return clause;
}

} // namespace

TEST(ClauseTest, ConjoiningKeepsOrderAndEmptiesOnContradiction)
{
    StreamCapture out(std::cout);
    Clause clause = clauseOf({{7, true}, {2, true}, {5, true}, {9, false}, {2, true}});
    EXPECT_EQ(text(clause), " p2 p5 p7~p9");
    EXPECT_TRUE(clause.isNegationIn(9));
    EXPECT_FALSE(clause.isIn(9));
    EXPECT_EQ(out.text(), "");
    EXPECT_FALSE(clause.andClause(2, false));
    EXPECT_TRUE(clause.isTrue());
    EXPECT_EQ(out.text(), " Clear\n");

    Clause pair = clauseOf({{1, true}, {4, true}});
    EXPECT_FALSE(pair.remove(4));
    EXPECT_FALSE(pair.remove(4));
    EXPECT_TRUE(pair.remove(1));
}

TEST(ClauseTest, EqualityAndComplement)
{
    EXPECT_TRUE(Clause(1, true) == Clause(1, true));
    EXPECT_FALSE(Clause() == Clause());
    EXPECT_FALSE(clauseOf({{1, true}, {2, true}}) == Clause(1, true));

    EXPECT_EQ(isComplement(clauseOf({{1, true}, {2, true}}), clauseOf({{1, true}, {2, false}})), 2);
    EXPECT_EQ(isComplement(Clause(2, false), Clause(2, true)), 2);
    EXPECT_EQ(isComplement(clauseOf({{1, true}, {2, true}}), Clause(2, false)), 0);
    EXPECT_EQ(isComplement(Clause(1, true), Clause(1, true)), 0);
    // Two opposite literals are no complement; the deciding one may come late.
    EXPECT_EQ(isComplement(clauseOf({{1, true}, {3, true}}), clauseOf({{1, false}, {3, false}})), 0);
    EXPECT_EQ(isComplement(clauseOf({{1, false}, {4, true}}), clauseOf({{1, false}, {4, false}})), 4);
}
