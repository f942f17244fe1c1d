// A symbolic store attached to a basic block: the known value of variables
// and a short list of logical facts, with the operations that derive them
// from a transition, pass them on to successors and print them.
#ifndef VELCOR_SRC_STATE_H
#define VELCOR_SRC_STATE_H

#include "expression.h"
#include "misc/hash_map.h"
#include "symbols.h"
#include "transition.h"

class State {
public:
    using Map = misc::StringHashMap<ExpHandle>;
    static constexpr int MAX_LOGICAL = 10;

    explicit State(Symbols* a_parse_symbol_table);
    State(const char* a_name, const ExpHandle& a_exp, Symbols* a_parse_symbol_table);

    void init(Symbols* a_parse_symbol_table) { m_parse_symbol_table = a_parse_symbol_table; }
    void addVar(TN* a_TN, const ExpHandle& a_exp);
    ExpHandle getExp(TN* a_TN);
    ExpHandle getExp(const char* a_name);
    void addMeToState(State* a_state);
    void convertToState(Transition* a_transition);
    State produceInvarients(Transition* a_transition);
    void substituteInTransition(Transition* a_transition);
    void substitute(const char* a_name, const ExpHandle& a_exp);
    void deleteVar(const char* a_name);
    State deleteInductive();
    // An eleventh fact ends the run (capacity).
    void addLogical(const ExpHandle& a_exp);

    void print(Symbols* a_symbol_table, prime_t a_prime);
    void printCheck(Symbols* a_symbol_table, prime_t a_prime);
    void printAssert(Symbols* a_symbol_table, prime_t a_prime);
    void printOne(Map::iterator a_it, Symbols* a_symbol_table, prime_t a_prime);

    const Map& data() const { return m_data; }
    int logicalNumber() const { return m_logical_number; }

private:
    void setValue(const char* a_name, const ExpHandle& a_exp);

    Symbols* m_parse_symbol_table = nullptr;
    Map m_data;
    ExpHandle m_logical[MAX_LOGICAL];
    int m_logical_number = 0;
};

#endif
