// Literals over numbered propositions and their conjunctions (clauses), kept
// in ascending order of proposition number, at most one literal per number.
#ifndef VELCOR_SRC_CLAUSE_H
#define VELCOR_SRC_CLAUSE_H

#include "expression.h"
#include "misc/small_object_pool.h"

struct intBool {
    intBool() = default;
    intBool(int a_id, bool a_bool) : p_id(a_id), m_bool(a_bool) {}
    int p_id = 0;
    bool m_bool = true;
};

bool operator==(intBool a_left, intBool a_right);
bool operator<(intBool a_left, intBool a_right);
bool operator>(intBool a_left, intBool a_right);
bool operator==(intBool a_literal, int a_id);
bool operator<(intBool a_literal, int a_id);
bool operator>(intBool a_literal, int a_id);
bool isNegate(intBool a_left, intBool a_right);

class Clause {
public:
    using Literals = misc::PooledList<intBool>;
    using const_iterator = Literals::const_iterator;

    Clause() = default;
    Clause(int a_id, bool a_bool);
    explicit Clause(intBool a_literal);

    // Conjoins a literal; false when the clause became contradictory and was
    // emptied.
    bool andClause(int a_id, bool a_bool);
    bool andClause(int a_id) { return andClause(a_id, true); }
    bool AndNegate(int a_id) { return andClause(a_id, false); }
    // Removes the first literal of that number; true when the clause is empty
    // afterwards.
    bool remove(int a_id);
    bool isIn(int a_id) const;
    bool isNegationIn(int a_id) const;
    bool isTrue() const { return m_proposition.empty(); }
    static intBool negate(intBool a_literal) { return intBool(a_literal.p_id, !a_literal.m_bool); }
    ExpHandle getCond() const;
    void print() const;

    const_iterator begin() const { return m_proposition.begin(); }
    const_iterator end() const { return m_proposition.end(); }
    std::size_t size() const { return m_proposition.size(); }

private:
    Literals m_proposition;
};

// Same literals in the same order; two empty clauses are not equal.
bool operator==(const Clause& a_left, const Clause& a_right);
// The proposition on which the clauses are complementary, or 0.
int isComplement(const Clause& a_left, const Clause& a_right);

#endif
