// Stand-in until the program model lands.
#include "machineinfo.h"

machineInfo::machineInfo() {}
void machineInfo::setMaxRegister(int) { m_max_register = 37; }
bb_type_t machineInfo::setBlockType(int) { return NORMAL; }
