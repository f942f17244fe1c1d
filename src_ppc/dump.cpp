#include "dump.h"

#include "misc/stop.h"

Dump::Dump(const char* a_dump_name) : m_table(100)
{
    VELCOR_ASSERT(a_dump_name != nullptr);
    m_dump_file.open(a_dump_name);
    if (!m_dump_file.is_open())
        stopRun(std::string("Cannot open dump file ") + a_dump_name + "\n");
}

const char* Dump::getName(const char*) const
{
    return nullptr;
}
