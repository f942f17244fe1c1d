#include "state.h"

#include <cstring>
#include <ostream>

#include "misc/stop.h"

namespace {

// The name a fact's operand goes by; conditionals and bit arrays have none
// (asking them is an internal error), so a fact over one never matches.
const char* nameOf(const ExpHandle& a_exp)
{
    if (a_exp.isNull() || a_exp->m_type == BIT_ARRAY_EXP)
        return nullptr;
    if (a_exp->m_type == TRINARY_EXP && a_exp->m_operator != UPDATE)
        return nullptr;
    return a_exp->getName();
}

bool sameName(const char* a_name, const char* a_other)
{
    return a_name && a_other && std::strcmp(a_name, a_other) == 0;
}

} // namespace

State::State(Symbols* a_parse_symbol_table) : m_parse_symbol_table(a_parse_symbol_table), m_data(100) {}

State::State(const char* a_name, const ExpHandle& a_exp, Symbols* a_parse_symbol_table)
    : State(a_parse_symbol_table)
{
    m_data[a_name] = a_exp;
}

void State::addVar(TN* a_TN, const ExpHandle& a_exp)
{
    m_data[a_TN->TNName()] = a_exp;
}

// Keys a value by its operand's name; a name the operand table does not know
// is kept as it is.
void State::setValue(const char* a_name, const ExpHandle& a_exp)
{
    TN* tn = m_parse_symbol_table ? m_parse_symbol_table->getTN(a_name) : nullptr;
    if (tn)
        addVar(tn, a_exp);
    else
        m_data[a_name] = a_exp;
}

ExpHandle State::getExp(TN* a_TN)
{
    if (a_TN->isConst())
        return new ConstExp(static_cast<int>(a_TN->TNValue()));
    Map::iterator found = m_data.find(a_TN->TNName());
    if (found != m_data.end())
        return found->second;
    return new VarExp(a_TN);
}

ExpHandle State::getExp(const char* a_name)
{
    for (int i = 0; i < m_logical_number; ++i) {
        const ExpHandle& fact = m_logical[i];
        if (fact.isNull() || fact->m_operator != EQ)
            continue;
        ExpHandle left = fact->leftValue();
        if (left.isNull() || !left->isVar())
            continue;
        ExpHandle right = fact->rightValue();
        if (sameName(left->getName(), a_name))
            return right;
        if (sameName(nameOf(right), a_name))
            return left;
    }
    Map::iterator found = m_data.find(a_name);
    return found == m_data.end() ? ExpHandle() : found->second;
}

void State::addMeToState(State* a_state)
{
    for (const auto& entry : m_data)
        a_state->setValue(entry.first.c_str(), entry.second);
}

// The value a transition gives the variable a_name, read through its operand
// when the table has one (a constant operand reads as its value).
static ExpHandle valueIn(Transition* a_transition, Symbols* a_symbol_table, const char* a_name)
{
    TN* tn = a_symbol_table ? a_symbol_table->getTN(a_name) : nullptr;
    return tn ? a_transition->getExp(tn) : a_transition->getExp(a_name);
}

void State::convertToState(Transition* a_transition)
{
    for (const char* name = a_transition->Begin(); name != a_transition->End(); name = a_transition->next()) {
        ExpHandle value = valueIn(a_transition, m_parse_symbol_table, name);
        if (value->dependsOnVar("arXlc") || value->dependsOnVar("arXec") || value->isConst())
            setValue(name, value);
    }
}

State State::produceInvarients(Transition* a_transition)
{
    State result(m_parse_symbol_table);
    for (const char* name = a_transition->Begin(); name != a_transition->End(); name = a_transition->next()) {
        ExpHandle value = valueIn(a_transition, m_parse_symbol_table, name);
        if (value->isConst())
            result.setValue(name, new ConstExp(value->constValue()));
    }
    return result;
}

void State::substituteInTransition(Transition* a_transition)
{
    for (const auto& entry : m_data)
        a_transition->substitute(entry.first.c_str(), entry.second);
}

void State::substitute(const char* a_name, const ExpHandle& a_exp)
{
    for (auto& entry : m_data)
        if (!entry.second.isNull())
            entry.second = entry.second->substituteExp(a_name, a_exp, entry.second);
}

void State::deleteVar(const char* a_name)
{
    m_data.erase(a_name);
}

State State::deleteInductive()
{
    State result(m_parse_symbol_table);
    for (const auto& entry : m_data) {
        const ExpHandle& value = entry.second;
        if (value.isNull() || !value->dependsOnVar(entry.first.c_str()))
            result.setValue(entry.first.c_str(), value);
    }
    for (int i = 0; i < m_logical_number; ++i)
        result.addLogical(m_logical[i]);
    return result;
}

void State::addLogical(const ExpHandle& a_exp)
{
    if (m_logical_number >= MAX_LOGICAL)
        stopCapacity("more than 10 logical facts");
    m_logical[m_logical_number++] = a_exp;
}

void State::printOne(Map::iterator a_it, Symbols* a_symbol_table, prime_t a_prime)
{
    std::ostream& out = *getOutFile();
    out << "%From printOne \n";
    const char* name = a_it->first.c_str();
    ExpHandle& value = a_it->second;
    if (value.isNull())
        return;
    system_t side = a_symbol_table->getSystem();
    bool primed = a_prime == PRIME;
    if (value->specialPrint()) {
        value->print(primed, side, false);
    } else if (value->ifPrint() || std::strcmp(name, "true") != 0) {
        TN* tn = a_symbol_table->getTN(name);
        if (tn) {
            tn->print(primed, side != TARGET);
        } else {
            // Written as a plain operand of that name would print.
            out << (primed ? "P" : "") << (side != TARGET ? "s" : "") << name;
        }
        out << "=";
        value->print(primed, side, false);
    } else {
        value->print(primed, side, false);
    }
    out << '\n';
}

void State::printCheck(Symbols* a_symbol_table, prime_t a_prime)
{
    if (m_data.empty())
        return;
    std::ostream& out = *getOutFile();
    out << commentChar() << "Print State \n";
    for (Map::iterator it = m_data.begin(); it != m_data.end(); ++it) {
        out << andCheckStr() << commentChar() << "can LEFT" << it->first << ".\n";
        printOne(it, a_symbol_table, a_prime);
    }
}

void State::printAssert(Symbols* a_symbol_table, prime_t a_prime)
{
    std::ostream& out = *getOutFile();
    if (!m_data.empty()) {
        out << commentChar() << "Print State \n";
        for (Map::iterator it = m_data.begin(); it != m_data.end(); ++it) {
            out << "%can LEFT" << it->first << ".\n";
            out << assertStr() << '\n';
            printOne(it, a_symbol_table, a_prime);
            out << endStr() << '\n';
        }
    }
    if (m_logical_number > 0) {
        out << commentChar() << "Print Logical \n";
        for (int i = 0; i < m_logical_number; ++i) {
            out << assertStr() << '\n';
            m_logical[i]->print(a_prime == PRIME, a_symbol_table->getSystem(), false);
            out << endStr() << '\n';
        }
    }
}

void State::print(Symbols* a_symbol_table, prime_t a_prime)
{
    std::ostream& out = *getOutFile();
    if (!m_data.empty())
        out << commentChar() << "Print State \n";
    else
        out << commentChar() << "Empty State \n" << "1=1";
    bool first = true;
    for (Map::iterator it = m_data.begin(); it != m_data.end(); ++it) {
        if (!first)
            out << andStr();
        first = false;
        printOne(it, a_symbol_table, a_prime);
    }
    if (m_logical_number > 0) {
        out << commentChar() << "Print Logical \n";
        first = true;
        for (int i = 0; i < m_logical_number; ++i) {
            if (!first)
                out << andStr();
            first = false;
            m_logical[i]->print(a_prime == PRIME, a_symbol_table->getSystem(), false);
        }
    }
}
