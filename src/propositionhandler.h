// Numbers the branch conditions met while translating: each condition gets
// the next number n and a boolean variable "pn" declared with the operands.
#ifndef VELCOR_SRC_PROPOSITIONHANDLER_H
#define VELCOR_SRC_PROPOSITIONHANDLER_H

#include <vector>

#include "expression.h"
#include "symbols.h"

class propositionHandler {
public:
    // Numbers 1 to a_size - 1 can be handed out; 0 is the constant true.
    explicit propositionHandler(int a_size);

    // Back to the state of a new registry of the same capacity, without
    // building one (a new run in the same process).
    void clear();

    // Registers a condition and returns its number; a registration beyond
    // the capacity ends the run.
    int setNextProposition(const ExpHandle& a_exp);
    ExpHandle getProposition(int a_id) const;
    ExpHandle getExp(int a_id) const;
    void printAll(Symbols* a_symbol_table);

    int lastIndex() const { return m_next_index; }
    int size() const { return m_size; }

private:
    std::vector<ExpHandle> m_propositions;
    std::vector<ExpHandle> m_expressions;
    int m_next_index = 0;
    int m_size;
};

// The registry of the run (capacity 1000).
extern propositionHandler* proposition_handler;

#endif
