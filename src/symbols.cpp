#include "symbols.h"

#include <cstring>
#include <ostream>
#include <utility>

#include "misc/writer.h"

Symbols::Symbols() : m_table(100)
{
    TN* truth = own(new TN(TN_LOGICAL, "true"));
    m_table.insert("true", truth);
}

Symbols::Symbols(system_t a_system) : Symbols()
{
    m_system = a_system;
}

TN* Symbols::own(TN* a_tn)
{
    m_owned.emplace_back(a_tn);
    return a_tn;
}

TN* Symbols::store(const std::string& a_key, TN a_contents)
{
    Table::iterator found = m_table.find(a_key.c_str());
    if (found != m_table.end()) {
        *found->second = a_contents;
        return found->second;
    }
    TN* fresh = own(new TN(std::move(a_contents)));
    m_table.insert(a_key.c_str(), fresh);
    return fresh;
}

// Registering a name is most of what a listing does. A name that needs no
// correction is its own key: one lookup finds its operand, which is most
// often left as it is, or makes room for a new one.

TN* Symbols::addTN(TN_t a_type, const char* a_name)
{
    if (!a_name)
        return nullptr;
    if (a_name[0] == '.')
        a_type = TN_LABEL;
    if (!TN::isCorrectName(a_name)) {
        std::string key = correctNameForIcs(a_name);
        return store(key, TN(a_type, key.c_str()));
    }
    return registerCorrect(a_type, a_name, true);
}

TN* Symbols::addNamedTN(TN_t a_type, const char* a_name)
{
    if (!TN::isCorrectName(a_name))
        return addTN(new TN(a_type, a_name));
    return registerCorrect(a_type, a_name, false);
}

TN* Symbols::registerCorrect(TN_t a_type, const char* a_name, bool a_assign)
{
    std::pair<Table::iterator, bool> entry = m_table.findOrAdd(a_name, nullptr);
    TN*& tn = entry.first->second;
    if (entry.second)
        return tn = own(new TN(a_type, a_name, TN::CorrectName()));
    if (tn->holdsNamed(a_type, a_assign))
        return tn;
    TN fresh(a_type, a_name, TN::CorrectName());
    if (a_assign)
        *tn = fresh;
    else
        tn->update(&fresh);
    return tn;
}

TN* Symbols::addTN(TN_t a_type, const char* a_first, const char* a_name)
{
    if (!a_first)
        return nullptr;
    std::string key = correctNameForIcs(a_name);
    return store(key, TN(a_type, a_first, key.c_str()));
}

TN* Symbols::addTN(TN_t a_type, const char* a_name, long a_value)
{
    if (!a_name)
        return nullptr;
    std::string key = correctNameForIcs(a_name);
    return store(key, TN(a_type, key.c_str(), a_value));
}

TN* Symbols::addTN(TN_t a_type, long a_value)
{
    return own(new TN(a_type, a_value));
}

TN* Symbols::addTN(long a_value)
{
    return own(new TN(a_value));
}

TN* Symbols::constant(long a_value)
{
    RecentConstant& recent = m_recent_constants[static_cast<unsigned long>(a_value) % RECENT_CONSTANTS];
    if (!recent.m_tn || recent.m_value != a_value)
        recent = RecentConstant{a_value, addTN(a_value)};
    return recent.m_tn;
}

TN* Symbols::addTN(TN* a_tn)
{
    if (!a_tn)
        return nullptr;
    Table::iterator found = m_table.find(a_tn->TNName());
    if (found != m_table.end()) {
        found->second->update(a_tn);
        delete a_tn;
        return found->second;
    }
    own(a_tn);
    m_table.insert(a_tn->TNName(), a_tn);
    return a_tn;
}

bool Symbols::isIn(const char* a_name) const
{
    return m_table.contains(a_name);
}

TN* Symbols::getTN(const char* a_name) const
{
    Table::const_iterator found = m_table.find(a_name);
    return found == m_table.end() ? nullptr : found->second;
}

void Symbols::print() const
{
    misc::Writer out(*getOutFile());
    const char* side = m_system == TARGET ? "" : "s";
    for (const auto& entry : m_table) {
        const char* key = entry.first.c_str();
        const TN* tn = entry.second;
        if (tn->isExternal()) {
            out << side << key << " : ARRAY REAL OF REAL;\n";
            out << "P" << side << key << " : ARRAY REAL OF REAL;\n";
        } else if (tn->isLabel()) {
            out << key << " :  REAL;\n";
        } else if (tn->isLogical()) {
            out << side << key << " : BOOLEAN;\n";
            out << "P" << side << key << " : BOOLEAN;\n";
        } else if (std::strncmp(key, "MEM", 3) != 0) {
            out << side << key << " :  REAL;\n";
            out << "P" << side << key << " :  REAL;\n";
        }
    }
}
