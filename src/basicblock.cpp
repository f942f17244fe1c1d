// Stand-in until the program model lands.
#include "basicblock.h"

BasicBlock::BasicBlock(int a_id, int, int a_flag, Symbols* a_parse_symbol_table)
    : m_state(a_parse_symbol_table), m_id(a_id), m_type(machineInfo::setBlockType(a_flag))
{
}
void BasicBlock::setTransition(Transition* a_transition) { m_transition = *a_transition; }
void BasicBlock::print(Symbols* a_symbol_table, bool a_all) { m_transition.print(a_symbol_table, a_all); }
