// The walk over the node's parameter structure in DWARF 2 to 5 entries. It
// reports cells in the order of the DWARF 1 walk, so that both give the
// same pairs in the same order: a member is named from its container
// (through a pointer, or flattened into the cell that holds its structure
// by value); a pointer to a structure gets its pair, then that structure's
// members; a type already being expanded on the current path is not
// expanded again. Beyond DWARF 1: every scalar gets its cell, each array
// element its own, a union one, the bit-fields of one storage unit that
// unit's.
#ifndef VELCOR_SRC_PPC_STRUCTURE_WALK_H
#define VELCOR_SRC_PPC_STRUCTURE_WALK_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "dwarf_entries.h"
#include "structure_sink.h"

class StructureWalk {
public:
    // a_max_depth bounds the nested type levels, a_max_steps the members,
    // array elements and types followed.
    StructureWalk(const EntryReader& a_entries, StructureSink& a_sink, int a_max_depth, std::size_t a_max_steps);

    // The structure that the first parameter of a_node points to; nothing
    // for a node without parameters.
    void mapParameterOf(Dwarf_Die& a_node);

private:
    // Where a member lies: its byte offset, and for a bit-field the storage
    // unit that holds it (the offset is then the unit's).
    struct MemberPlace {
        std::int32_t m_offset = 0;
        bool m_bit_field = false;
        unsigned m_unit_size = 0;
    };

    bool pointsToStructure(Dwarf_Die& a_parameter, Dwarf_Die& a_pointee);
    Dwarf_Die skipQualifiers(Dwarf_Die a_type) const;
    Dwarf_Die resolve(Dwarf_Die a_type);
    void step();
    unsigned byteSize(Dwarf_Die a_type, int a_level = 0);
    std::uint64_t elementCount(Dwarf_Die& a_array) const;
    std::int32_t checkedOffset(std::uint64_t a_offset, Dwarf_Die& a_die) const;
    std::int32_t memberLocation(Dwarf_Die& a_member, Dwarf_Attribute& a_location) const;
    MemberPlace placeOf(Dwarf_Die& a_member);

    void descend(Dwarf_Die& a_type, const std::string& a_struct_name, const std::string& a_c_name,
                 const std::string& a_a_name, bool a_pointer);
    void mapType(Dwarf_Die& a_type, const std::string& a_struct_name, const std::string& a_c_name,
                 const std::string& a_a_name, bool a_pointer);
    void mapValue(Dwarf_Die a_type, const std::string& a_c_name, const std::string& a_a_name);
    void mapPointer(Dwarf_Die& a_pointer, const std::string& a_c_name, const std::string& a_a_name);
    void mapArray(Dwarf_Die& a_array, const std::string& a_c_name, const std::string& a_a_name);
    void walkMembers(Dwarf_Die& a_structure, const std::string& a_struct_name, const std::string& a_c_name,
                     const std::string& a_a_name, bool a_pointer);
    void mapMember(Dwarf_Die& a_member, const std::string& a_struct_name, const std::string& a_c_name,
                   const std::string& a_a_name, bool a_pointer, std::set<std::int32_t>& a_units);

    const EntryReader& m_entries;
    StructureSink& m_sink;
    const int m_max_depth;
    const std::size_t m_max_steps;
    // The entries (by their address in the section) being expanded on the
    // current path.
    std::set<const void*> m_expanding;
    // Each type's resolution through typedefs and qualifiers, once found.
    std::map<const void*, Dwarf_Die> m_resolved;
    int m_depth = 0;
    std::size_t m_steps = 0;
};

#endif
