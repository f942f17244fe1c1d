// Reader of the node's parameter structure from DWARF versions 2 to 5 (the
// ".debug_info" section and the sections beside it), through elfutils'
// libdw: it opens the file, finds the unit and the node, and has the
// structure walked (structure_walk.h), every memory cell and member offset
// reported to a sink. The mapping itself stays with the DWARF 1 reader, so
// that both kinds of executable give the same pairs in the same order.
//
// libdw trusts the file it reads: the image is checked before libdw sees it
// (32-bit big-endian ELF, its tables and sections inside the file, bounded
// decompressed sizes), and every walk here is bounded in depth and length.
// A libdw error or a malformed entry ends the run with "Cannot read the
// debugging information of PATH: REASON".
#ifndef VELCOR_SRC_PPC_DWARF_MODERN_H
#define VELCOR_SRC_PPC_DWARF_MODERN_H

#include <cstddef>
#include <string>
#include <vector>

#include "structure_sink.h"

struct Elf;
struct Dwarf;

class ModernDebugInfo {
public:
    // Opens the whole file a_image for libdw; a_path names it in messages.
    // The image must be a 32-bit big-endian ELF file whose section table
    // and section-name table lie inside it; it must outlive this object.
    ModernDebugInfo(std::vector<char>& a_image, const std::string& a_path);
    ~ModernDebugInfo();
    ModernDebugInfo(const ModernDebugInfo&) = delete;
    ModernDebugInfo& operator=(const ModernDebugInfo&) = delete;

    // Finds the unit and the node, and reports the cells of the structure
    // that the node's first parameter points to (nothing for a node without
    // parameters). a_max_depth bounds the nested type levels, a_max_steps
    // the members, array elements and types followed.
    void mapParameter(const char* a_unit, const char* a_node, StructureSink& a_sink, int a_max_depth,
                      std::size_t a_max_steps);

private:
    [[noreturn]] void unreadable(const std::string& a_reason) const;
    void checkImage(const std::vector<char>& a_image) const;

    std::string m_path;
    Elf* m_elf = nullptr;
    Dwarf* m_dwarf = nullptr;
};

#endif
