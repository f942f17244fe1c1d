// A path condition: a disjunction of clauses over numbered propositions, with
// explicit flags for the constants true and false.
#ifndef VELCOR_SRC_DNF_H
#define VELCOR_SRC_DNF_H

#include "clause.h"
#include "expression.h"

class DNF {
public:
    using Clauses = misc::PooledList<Clause>;
    using iterator = Clauses::iterator;
    using const_iterator = Clauses::const_iterator;

    // The constant true.
    DNF() = default;
    // The constant a_bool.
    explicit DNF(bool a_bool) : m_true(a_bool), m_false(!a_bool) {}

    bool add(const Clause& a_clause);
    bool add(Clause&& a_clause);
    bool remove(iterator a_position);
    bool isIn(const Clause& a_clause) const;
    bool isTrue() const { return m_true; }
    bool isFalse() const { return m_false; }
    bool isConst() const { return m_true || m_false; }
    ExpHandle getExp() const;
    void print() const;

    iterator begin() { return m_clauses.begin(); }
    iterator end() { return m_clauses.end(); }
    const_iterator begin() const { return m_clauses.begin(); }
    const_iterator end() const { return m_clauses.end(); }
    std::size_t size() const { return m_clauses.size(); }

private:
    friend DNF andDNF(const DNF& a_dnf, int a_id, bool a_bool);
    friend DNF simplify(DNF a_first, DNF a_second);

    Clauses m_clauses;
    bool m_true = true;
    bool m_false = false;
};

// a_dnf strengthened by the literal (a_id, a_bool).
DNF andDNF(const DNF& a_dnf, int a_id, bool a_bool);
// The disjunction of the two, with complementary clauses merged.
DNF simplify(DNF a_first, DNF a_second);

#endif
