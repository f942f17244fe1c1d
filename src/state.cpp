// Stand-in until the program model lands.
#include "state.h"

State::State(Symbols* a_parse_symbol_table) : m_parse_symbol_table(a_parse_symbol_table) {}
