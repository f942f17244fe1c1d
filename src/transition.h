// The symbolic effect of a stretch of target code: for every variable the
// stretch writes, its value after the stretch in terms of the values at its
// start. A variable without an entry is unchanged.
#ifndef VELCOR_SRC_TRANSITION_H
#define VELCOR_SRC_TRANSITION_H

#include "expression.h"
#include "machineinfo.h"
#include "misc/hash_map.h"
#include "symbols.h"

class Transition {
public:
    using Map = misc::StringHashMap<ExpHandle>;

    Transition();

    void initTransition();
    void resetValues();
    void assign(const char* a_name, const ExpHandle& a_value);
    // The same for the operand's name.
    void assign(const TN* a_TN, const ExpHandle& a_value);
    ExpHandle getExp(TN* a_TN);
    ExpHandle getExp(const char* a_name);
    void addVar(TN* a_TN);
    void addVar(const char* a_name);
    void addVars(const ExpHandle& a_exp);
    void addGlobals();
    // True when a_name has NO entry.
    bool isIn(const char* a_name) const;
    void deleteVar(const char* a_name);
    void deleteInductive();
    void substitute(const char* a_name, const ExpHandle& a_exp);
    Transition ifSimplify(const char* a_name, const ExpHandle& a_value) const;

    machineInfo* getMachineInfo() { return &m_machine_info; }
    int getMaxRegister() const { return m_machine_info.getMaxRegister(); }
    void setMaxRegister(int a_register_num) { m_machine_info.setMaxRegister(a_register_num); }

    // Cursor over the names; End() is the null pointer.
    const char* Begin();
    const char* next();
    const char* End() const { return nullptr; }

    void print(Symbols* a_symbol_table, bool a_all);
    void printPreserve(Symbols* a_symbol_table, bool a_all);
    void printAll(bool a_prime, bool a_debug);
    void printMap(Symbols* a_symbol_table, bool a_prime);

    const Map& data() const { return m_data; }
    std::size_t size() const { return m_data.size(); }

private:
    Map m_data;
    Map::iterator m_iterator;
    machineInfo m_machine_info;
};

#endif
