// Literals and clauses over numbered propositions.
#include "clause.h"

#include <iostream>

#include "misc/stop.h"
#include "misc/trace.h"
#include "misc/writer.h"
#include "propositionhandler.h"

bool operator==(intBool a_left, intBool a_right)
{
    return a_left.p_id == a_right.p_id && a_left.m_bool == a_right.m_bool;
}

// Ordering looks at the proposition number only, so a literal and its
// negation sort to the same place.
bool operator<(intBool a_left, intBool a_right)
{
    return a_left.p_id < a_right.p_id;
}

bool operator>(intBool a_left, intBool a_right)
{
    return a_left.p_id > a_right.p_id;
}

bool operator==(intBool a_literal, int a_id)
{
    return a_literal.p_id == a_id;
}

bool operator<(intBool a_literal, int a_id)
{
    return a_literal.p_id < a_id;
}

bool operator>(intBool a_literal, int a_id)
{
    return a_literal.p_id > a_id;
}

bool isNegate(intBool a_left, intBool a_right)
{
    return a_left.m_bool != a_right.m_bool;
}

Clause::Clause(int a_id, bool a_bool) : m_proposition{intBool(a_id, a_bool)} {}

Clause::Clause(intBool a_literal) : m_proposition{a_literal} {}

bool Clause::andClause(int a_id, bool a_bool)
{
    for (auto it = m_proposition.begin(); it != m_proposition.end(); ++it) {
        if (*it == a_id) {
            if (it->m_bool == a_bool)
                return true;
            // p and not p: nothing satisfies the clause any more.
            misc::traceOut() << " Clear\n";
            m_proposition.clear();
            return false;
        }
        if (*it > a_id) {
            m_proposition.insert(it, intBool(a_id, a_bool));
            return true;
        }
    }
    m_proposition.emplace_back(a_id, a_bool);
    return true;
}

bool Clause::remove(int a_id)
{
    for (auto it = m_proposition.begin(); it != m_proposition.end(); ++it) {
        if (*it == a_id) {
            m_proposition.erase(it);
            break;
        }
    }
    return m_proposition.empty();
}

bool Clause::isIn(int a_id) const
{
    for (const intBool& literal : m_proposition) {
        if (literal > a_id)
            break;
        if (literal == a_id && literal.m_bool)
            return true;
    }
    return false;
}

bool Clause::isNegationIn(int a_id) const
{
    for (const intBool& literal : m_proposition) {
        if (literal > a_id)
            break;
        if (literal == a_id && !literal.m_bool)
            return true;
    }
    return false;
}

ExpHandle Clause::getCond() const
{
    VELCOR_ASSERT(proposition_handler != nullptr);
    ExpHandle result;
    for (const intBool& literal : m_proposition) {
        ExpHandle proposition = proposition_handler->getProposition(literal.p_id);
        ExpHandle term = literal.m_bool ? proposition : ExpHandle(new UnaryExp(NOT, proposition));
        result = result.isNull() ? term : ExpHandle(new BinaryExp(AND, result, term));
    }
    return result;
}

void Clause::print() const
{
    misc::Writer out(*getOutFile());
    for (const intBool& literal : m_proposition)
        out << (literal.m_bool ? " p" : "~p") << literal.p_id;
}

bool operator==(const Clause& a_left, const Clause& a_right)
{
    if (a_left.isTrue() || a_right.isTrue() || a_left.size() != a_right.size())
        return false;
    auto right = a_right.begin();
    for (auto left = a_left.begin(); left != a_left.end(); ++left, ++right)
        if (!(*left == *right))
            return false;
    return true;
}

int isComplement(const Clause& a_left, const Clause& a_right)
{
    for (const intBool& literal : a_left) {
        bool opposite = literal.m_bool ? a_right.isNegationIn(literal.p_id) : a_right.isIn(literal.p_id);
        if (!opposite)
            continue;
        Clause left(a_left);
        Clause right(a_right);
        left.remove(literal.p_id);
        right.remove(literal.p_id);
        if ((left.isTrue() && right.isTrue()) || left == right)
            return literal.p_id;
    }
    return 0;
}
