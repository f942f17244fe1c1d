// Stand-in until the program model lands.
#include "transition.h"

Transition::Transition() {}
void Transition::initTransition() { m_data.clear(); }
void Transition::assign(const char* a_name, const ExpHandle& a_value) { m_data[a_name] = a_value; }
ExpHandle Transition::getExp(TN* a_TN) { return new VarExp(a_TN); }
ExpHandle Transition::getExp(const char* a_name) { return new VarExp(a_name); }
bool Transition::isIn(const char* a_name) const { return !m_data.contains(a_name); }
void Transition::addGlobals() {}
void Transition::print(Symbols*, bool) {}
