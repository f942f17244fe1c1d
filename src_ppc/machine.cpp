// Stand-in until the translator lands.
#include "machine.h"

void Machine::init(Symbols* a_parse_symbol_table) { m_parse_symbol_table = a_parse_symbol_table; }
void Machine::clear() { m_annotations.clear(); }
void Machine::translate_opcode(Transition*, TN**, TOP, int, int, bool) {}
