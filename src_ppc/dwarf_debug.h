// Reader of the executable's debugging information (a big-endian 32-bit ELF
// file whose ".debug" section holds DWARF version 1 entries), and the mapping
// of the node's parameter structure onto memory names of both sides.
#ifndef VELCOR_SRC_PPC_DWARF_DEBUG_H
#define VELCOR_SRC_PPC_DWARF_DEBUG_H

#include <istream>

class Transition;

class dwarf_debug {
public:
    dwarf_debug();

    // Reads the ELF header, the section table and the ".debug" section.
    void readDwarf(std::istream& a_exe_file);
    // Finds the unit and the node, walks the structure its first parameter
    // points to and records one pair of memory names per member.
    void outMembers(const char* a_name, const char* a_function_name, const char* a_compilation_unit);
    // Preservation assertions of the mapped cells a_transition does not write.
    void addVars(Transition* a_transition);
    // The mapping assertions.
    void print();
    void printStructAsserts();
    // Forgets everything read (a new run).
    void clear();
};

extern dwarf_debug dwarf_debug_o;

#endif
