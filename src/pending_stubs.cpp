// Stand-ins for path conditions and rotate-and-mask until they land.
#include "DNF.h"
#include "machine.h"
#include "propositionhandler.h"

DNF andDNF(const DNF& a_dnf, int, bool) { return a_dnf; }
int propositionHandler::setNextProposition(const ExpHandle&) { return ++m_next_index; }
ExpHandle rotateAndMask(long, long, long, const ExpHandle& a_exp) { return a_exp; }
