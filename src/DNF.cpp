// Path conditions as disjunctions of clauses.
#include "DNF.h"

#include <iostream>
#include <iterator>

#include "misc/stop.h"

bool DNF::add(const Clause& a_clause)
{
    // An empty clause is true: adding it to a disjunction changes nothing
    // worth recording.
    if (a_clause.isTrue())
        return true;
    m_clauses.push_front(a_clause);
    m_true = false;
    m_false = false;
    return false;
}

bool DNF::remove(iterator a_position)
{
    m_clauses.erase(a_position);
    if (m_clauses.empty()) {
        m_true = false;
        m_false = true;
        return false;
    }
    m_true = false;
    m_false = false;
    return true;
}

bool DNF::isIn(const Clause& a_clause) const
{
    for (const Clause& clause : m_clauses) {
        std::cout << " From isIn DNF \n";
        if (clause == a_clause)
            return true;
    }
    return false;
}

ExpHandle DNF::getExp() const
{
    if (m_true)
        return new BinaryExp(EQ, new ConstExp(1), new ConstExp(1));
    if (m_false)
        return new BinaryExp(EQ, new ConstExp(1), new ConstExp(0));
    ExpHandle result = new ConstExp(0);
    bool first = true;
    for (const Clause& clause : m_clauses) {
        ExpHandle condition = clause.getCond();
        VELCOR_ASSERT(!condition.isNull());
        result = first ? condition : ExpHandle(new BinaryExp(OR, condition, result));
        first = false;
    }
    return result;
}

void DNF::print() const
{
    std::ostream& out = *getOutFile();
    const char comment = commentChar();
    if (m_true || (!m_false && m_clauses.empty())) {
        out << comment << "c" << 0 << "true" << '\n';
        return;
    }
    if (m_false) {
        out << comment << "c" << 0 << "false" << '\n';
        return;
    }
    int index = 0;
    for (const Clause& clause : m_clauses) {
        out << comment << "c" << index << "= ";
        clause.print();
        out << '\n';
        ++index;
    }
}

DNF andDNF(const DNF& a_dnf, int a_id, bool a_bool)
{
    DNF result(a_dnf);
    if (result.m_clauses.empty()) {
        result.m_clauses.push_front(Clause(a_id, a_bool));
        result.m_true = false;
        result.m_false = false;
        return result;
    }
    for (auto it = result.m_clauses.begin(); it != result.m_clauses.end();) {
        auto next = std::next(it);
        if (!it->andClause(a_id, a_bool)) {
            result.print();
            result.remove(it);
        }
        it = next;
    }
    if (result.m_clauses.empty())
        return DNF(false);
    return result;
}

DNF simplify(const DNF& a_first, const DNF& a_second)
{
    if (a_first.isTrue() || a_second.isTrue())
        return DNF();
    DNF result;
    if (a_first.isFalse()) {
        result = a_second;
    } else if (a_second.isFalse()) {
        result = a_first;
    } else {
        result = a_first;
        for (const Clause& clause : a_second)
            result.add(clause);
    }

    // Merge (X and p) or (X and not p) into X; every merge starts a new pass
    // from the front, until a pass finds no such pair.
    for (;;) {
        bool merged = false;
        for (auto x = result.m_clauses.begin(); x != result.m_clauses.end(); ++x) {
            for (auto y = x; y != result.m_clauses.end(); ++y) {
                int proposition = isComplement(*x, *y);
                if (proposition == 0)
                    continue;
                if (x->remove(proposition))
                    return DNF();
                VELCOR_ASSERT(y != x);
                result.remove(y);
                merged = true;
                break;
            }
            if (merged)
                break;
        }
        if (!merged)
            break;
    }
    return result;
}
