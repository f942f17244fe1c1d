#include "basicblock.h"

#include <utility>

#include "misc/stop.h"

BasicBlock::BasicBlock(int a_id, int, int a_flag, Symbols* a_parse_symbol_table)
    : m_state(a_parse_symbol_table), m_id(a_id), m_type(machineInfo::setBlockType(a_flag))
{
    m_state.init(a_parse_symbol_table);
}

void BasicBlock::setTransition(Transition* a_transition)
{
    m_transition = *a_transition;
    m_transition.addGlobals();
}

void BasicBlock::takeTransition(Transition&& a_transition)
{
    m_transition = std::move(a_transition);
    m_transition.addGlobals();
}

void BasicBlock::print(Symbols* a_symbol_table, bool a_all)
{
    m_transition.print(a_symbol_table, a_all);
}

void BasicBlock::setLabel(const char* a_label)
{
    m_label = a_label ? a_label : "";
}

namespace {

// Appends a block number to a neighbour list; 0 empties the list.
void addNeighbour(unsigned* a_list, unsigned& a_count, unsigned a_block, const char* a_capacity)
{
    if (a_block == 0) {
        a_count = 0;
        return;
    }
    if (a_count >= BasicBlock::MAX_NEIGHBOURS)
        stopCapacity(a_capacity);
    a_list[a_count++] = a_block;
}

} // namespace

void BasicBlock::addPred(unsigned a_block)
{
    addNeighbour(m_preds, m_num_preds, a_block, "more than 100 predecessors (m_num_preds <= (100))");
}

void BasicBlock::addSucc(unsigned a_block)
{
    addNeighbour(m_succs, m_num_succs, a_block, "more than 100 successors (m_num_succs <= (100))");
}

void BasicBlock::produceInvarients(Symbols* a_parse_symbol_table)
{
    State fresh(a_parse_symbol_table);
    fresh.init(a_parse_symbol_table);
    m_state = fresh.produceInvarients(&m_transition);
}

void BasicBlock::pushInvarients(BasicBlock** a_blocks)
{
    for (unsigned i = 0; i < m_num_succs; ++i) {
        BasicBlock* successor = a_blocks[m_succs[i]];
        // A number that names no block has no state to receive anything.
        if (successor)
            m_state.addMeToState(successor->getState());
    }
}
