#include "transition.h"

#include <cstring>
#include <iostream>

#include "misc/stop.h"
#include "misc/trace.h"
#include "misc/writer.h"
#include "type_table.h"

namespace {

// Writes a variable as its operand prints it; a name the table does not know
// is written as a plain operand of that name would be, rather than dropped.
void printVariable(TN* a_tn, const char* a_name, bool a_prime, bool a_source)
{
    if (a_tn) {
        a_tn->print(a_prime, a_source);
        return;
    }
    misc::Writer out(*getOutFile());
    if (a_prime)
        out << 'P';
    if (a_source)
        out << 's';
    out << a_name;
}

bool isExternalOrLoopCount(Symbols* a_symbol_table, const char* a_name)
{
    TN* tn = a_symbol_table->getTN(a_name);
    return (tn && tn->isExternal()) || std::strcmp(a_name, "arXlc") == 0;
}

} // namespace

Transition::Transition() : m_data(100)
{
    initTransition();
}

void Transition::initTransition()
{
    m_data.clear();
    m_machine_info.initMachineInfo();
}

void Transition::resetValues()
{
    misc::traceOut() << "RESETED!!!\n";
    for (auto& entry : m_data)
        entry.second = new VarExp(entry.first.c_str());
}

void Transition::assign(const char* a_name, const ExpHandle& a_value)
{
    m_data[a_name] = a_value;
}

void Transition::assign(const TN* a_TN, const ExpHandle& a_value)
{
    m_data.at(a_TN->TNName(), a_TN->TNNameHash()) = a_value;
}

ExpHandle Transition::getExp(TN* a_TN)
{
    Map::iterator found = m_data.find(a_TN->TNName(), a_TN->TNNameHash());
    if (found == m_data.end())
        return new VarExp(a_TN);
    if (a_TN->isConst())
        return new ConstExp(static_cast<int>(a_TN->TNValue()));
    return found->second;
}

ExpHandle Transition::getExp(const char* a_name)
{
    Map::iterator found = m_data.find(a_name);
    if (found == m_data.end())
        return new VarExp(a_name);
    return found->second;
}

void Transition::addVar(TN* a_TN)
{
    if (!m_data.contains(a_TN->TNName()))
        m_data.insert(a_TN->TNName(), new VarExp(a_TN));
}

void Transition::addVar(const char* a_name)
{
    if (!m_data.contains(a_name))
        m_data.insert(a_name, new VarExp(a_name));
}

void Transition::addVars(const ExpHandle& a_exp)
{
    if (a_exp->isConst())
        return;
    const char* name = a_exp->getName();
    if (name[0] != '\0')
        addVar(name);
}

void Transition::addGlobals()
{
    for (const char* name = m_machine_info.getFirstGlobal(); name; name = m_machine_info.getNextGlobal())
        addVar(name);
}

bool Transition::isIn(const char* a_name) const
{
    return !m_data.contains(a_name);
}

void Transition::deleteVar(const char* a_name)
{
    m_data.erase(a_name);
}

void Transition::deleteInductive()
{
    for (Map::iterator it = m_data.begin(); it != m_data.end(); ++it) {
        if (it->second->dependsOnVar(it->first.c_str())) {
            m_data.erase(it);
            return;
        }
    }
}

void Transition::substitute(const char* a_name, const ExpHandle& a_exp)
{
    for (auto& entry : m_data)
        entry.second = entry.second->substituteExp(a_name, a_exp, entry.second);
}

Transition Transition::ifSimplify(const char* a_name, const ExpHandle& a_value) const
{
    Transition result(*this);
    for (Map::iterator i = result.m_data.begin(); i != result.m_data.end(); ++i) {
        if (!(*i).second->isIf())
            continue;
        VELCOR_ASSERT((*i).second.data()->m_type == TRINARY_EXP);
        (*i).second = (*i).second->ifSimplify(a_name, a_value, (*i).second);
    }
    return result;
}

const char* Transition::Begin()
{
    m_iterator = m_data.begin();
    return m_iterator == m_data.end() ? End() : m_iterator->first.c_str();
}

const char* Transition::next()
{
    if (m_iterator != m_data.end())
        ++m_iterator;
    return m_iterator == m_data.end() ? End() : m_iterator->first.c_str();
}

void Transition::print(Symbols* a_symbol_table, bool a_all)
{
    misc::Writer out(*getOutFile());
    system_t side = a_symbol_table->getSystem();
    if (m_data.empty())
        out << "1=1" << endStr() << '\n';
    bool first = true;
    for (auto& entry : m_data) {
        const char* name = entry.first.c_str();
        ExpHandle& value = entry.second;
        if (!m_machine_info.isPrintable(name))
            continue;
        if (!a_all && !isExternalOrLoopCount(a_symbol_table, name))
            continue;
        if (!first)
            out << endStr() << "\n\n" << assertStr();
        TN* tn = a_symbol_table->getTN(name);
        if (value->specialPrint()) {
            value->print(true, side, false);
        } else if (value->ifPrint()) {
            if (tn) {
                value->print(tn, true, side, false);
            } else {
                printVariable(nullptr, name, true, side != TARGET);
                out << " =";
                value->print(false, side, false);
            }
        } else {
            printVariable(tn, name, true, side != TARGET);
            out << "=";
            value->print(false, side, false);
            out << '\n';
        }
        first = false;
    }
    out << endStr() << '\n';
}

void Transition::printPreserve(Symbols* a_symbol_table, bool a_all)
{
    misc::Writer out(*getOutFile());
    bool source = a_symbol_table->getSystem() != TARGET;
    out << commentChar() << "Print Transition and preserve \n";
    bool first = true;
    for (const auto& entry : m_data) {
        const char* name = entry.first.c_str();
        if (!a_all && !isExternalOrLoopCount(a_symbol_table, name))
            continue;
        if (!first)
            out << andStr() << '\n';
        TN* tn = a_symbol_table->getTN(name);
        printVariable(tn, name, true, source);
        out << "=";
        printVariable(tn, name, false, source);
        out << '\n';
        first = false;
    }
}

void Transition::printAll(bool a_prime, bool a_debug)
{
    misc::Writer out(*getOutFile());
    char mark = a_prime ? 'P' : ' ';
    if (a_debug) {
        out << commentChar() << "Print Declarations \n";
        for (const auto& entry : m_data) {
            const char* name = entry.first.c_str();
            // Local source variables are declared by the source side.
            const CTn* record = symbol_table ? symbol_table->getSymbol(name) : nullptr;
            if (record && record->getLocal())
                continue;
            out << name << ": REAL" << endStr() << '\n';
            out << mark << name << ": REAL" << endStr() << '\n';
        }
    }
    out << commentChar() << "BEGIN-QUERIES \n";
    if (m_data.empty())
        out << "1=1" << endStr() << '\n';
    for (const auto& entry : m_data) {
        misc::traceOut() << entry.first << '\n';
        out << checkStr() << mark << entry.first << "=";
        entry.second->print(false, SOURCE, false);
        out << "\n\n" << endStr() << '\n';
    }
}

void Transition::printMap(Symbols* a_symbol_table, bool a_prime)
{
    misc::Writer out(*getOutFile());
    bool first = true;
    for (const auto& entry : m_data) {
        TN* tn = a_symbol_table->getTN(entry.first.c_str());
        if (!tn || !tn->isReg() || std::strcmp(tn->TNName(), tn->TNTemporaryName()) == 0)
            continue;
        if (!first)
            out << andStr();
        first = false;
        out << (a_prime ? "P" : "") << tn->TNName() << " = " << (a_prime ? "Ps" : "s") << tn->TNTemporaryName()
            << '\n';
    }
}
