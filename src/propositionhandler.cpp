// Stand-in until path conditions land.
#include "propositionhandler.h"

propositionHandler::propositionHandler(int a_size) : m_size(a_size) {}
void propositionHandler::printAll(Symbols*) {}
