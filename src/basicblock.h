// A node of the control-flow graph: the transition of its code, the state
// composed from it, and its neighbours by block number. The standard run has
// exactly one block, the whole listing.
#ifndef VELCOR_SRC_BASICBLOCK_H
#define VELCOR_SRC_BASICBLOCK_H

#include <string>

#include "machineinfo.h"
#include "state.h"
#include "symbols.h"
#include "transition.h"

class BasicBlock {
public:
    static constexpr unsigned MAX_NEIGHBOURS = 100;

    BasicBlock(int a_id, int a_length, int a_flag, Symbols* a_parse_symbol_table);

    void setTransition(Transition* a_transition);
    // The same with the transition itself, which the caller gives up: the
    // whole listing's transition is not copied.
    void takeTransition(Transition&& a_transition);
    Transition* getTransition() { return &m_transition; }
    State* getState() { return &m_state; }
    void setState(const State& a_state) { m_state = a_state; }
    void print(Symbols* a_symbol_table, bool a_all);

    unsigned Id() const { return m_id; }
    bb_type_t Type() const { return m_type; }
    // A null label leaves the block without one.
    void setLabel(const char* a_label);
    const char* label() const { return m_label.c_str(); }
    void setLastTrue() { m_last = true; }
    bool isLast() const { return m_last; }

    // A number other than 0 is appended; 0 empties the list. A 101st entry
    // ends the run (capacity).
    void addPred(unsigned a_block);
    void addSucc(unsigned a_block);
    unsigned numPreds() const { return m_num_preds; }
    unsigned numSuccs() const { return m_num_succs; }
    const unsigned* BeginPreds() const { return m_preds; }
    const unsigned* BeginSuccs() const { return m_succs; }
    const unsigned* NextPreds() const { return nullptr; }
    const unsigned* NextSuccs() const { return nullptr; }
    const unsigned* EndPreds() const { return nullptr; }
    const unsigned* EndSuccs() const { return nullptr; }

    void produceInvarients(Symbols* a_parse_symbol_table);
    void pushInvarients(BasicBlock** a_blocks);

private:
    Transition m_transition;
    State m_state;
    unsigned m_preds[MAX_NEIGHBOURS] = {};
    unsigned m_succs[MAX_NEIGHBOURS] = {};
    unsigned m_id;
    unsigned m_num_succs = 0;
    unsigned m_num_preds = 0;
    bb_type_t m_type;
    bool m_last = false;
    std::string m_label;
};

#endif
