// The machine model's access to a symbol dump of the executable: a table
// from addresses to symbol names. The executable itself is read through the
// debugging information, so nothing is read from the dump: the file must
// exist, and no address has a name.
#ifndef VELCOR_SRC_PPC_DUMP_H
#define VELCOR_SRC_PPC_DUMP_H

#include <fstream>
#include <string>

#include "misc/hash_map.h"

class Dump {
public:
    // Opens the dump file; the run stops when it cannot be opened.
    explicit Dump(const char* a_dump_name);
    Dump(const Dump&) = delete;
    Dump& operator=(const Dump&) = delete;

    // The symbol at an address; there is none.
    const char* getName(const char* a_address) const;

private:
    misc::StringHashMap<std::string> m_table;
    std::ifstream m_dump_file;
};

#endif
