#include "dwarf_modern.h"

#include <dwarf.h>
#include <elf.h>
#include <elfutils/libdw.h>
#include <libelf.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <map>
#include <set>
#include <utility>

#include "memory_name.h"
#include "misc/stop.h"
#include "misc/trace.h"
#include "swap.h"

namespace {

constexpr std::size_t EHDR_SIZE = 52;
constexpr std::size_t SHDR_SIZE = 40;
constexpr std::size_t PHDR_SIZE = 32;
constexpr std::size_t CHDR_SIZE = 12;
// libdw inflates a compressed section whole: none may grow past this.
constexpr std::uint64_t MAX_INFLATED_SIZE = std::uint64_t(64) << 20;
// const, volatile, restrict and _Atomic: no real type wears more than a few.
constexpr int MAX_QUALIFIERS = 16;
constexpr std::uint64_t MAX_OFFSET = std::numeric_limits<std::int32_t>::max();

std::string hex(std::uint64_t a_value)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(a_value));
    return text;
}

bool isQualifier(int a_tag)
{
    return a_tag == DW_TAG_const_type || a_tag == DW_TAG_volatile_type || a_tag == DW_TAG_restrict_type ||
           a_tag == DW_TAG_atomic_type;
}

bool isStructure(int a_tag)
{
    return a_tag == DW_TAG_structure_type || a_tag == DW_TAG_class_type;
}

bool isPointer(int a_tag)
{
    return a_tag == DW_TAG_pointer_type || a_tag == DW_TAG_reference_type || a_tag == DW_TAG_rvalue_reference_type;
}

const char* lastPathComponent(const char* a_path)
{
    const char* slash = std::strrchr(a_path, '/');
    return slash ? slash + 1 : a_path;
}

// Reading entries through libdw: every failure of libdw, and every entry
// that does not say what the walk needs, ends the run with the file's name.
class EntryReader {
public:
    explicit EntryReader(const std::string& a_path) : m_path(a_path) {}

    [[noreturn]] void malformed(const std::string& a_reason) const
    {
        stopRun("Cannot read the debugging information of " + m_path + ": " + a_reason + "\n");
    }

    // libdw's own reason when it gave one, else a_what.
    [[noreturn]] void failed(int a_error, const char* a_what) const
    {
        malformed(a_error != 0 ? dwarf_errmsg(a_error) : a_what);
    }

    std::string describe(Dwarf_Die a_die) const
    {
        return "the entry at " + hex(dwarf_dieoffset(&a_die));
    }

    int tag(Dwarf_Die a_die) const
    {
        dwarf_errno();
        int tag = dwarf_tag(&a_die);
        if (tag == DW_TAG_invalid)
            failed(dwarf_errno(), "an entry without a tag");
        return tag;
    }

    // The attribute a_code of a_die (also through the entries it is an
    // instance or a completion of, when a_integrate); false when absent.
    bool attribute(Dwarf_Die& a_die, unsigned a_code, Dwarf_Attribute& a_attribute, bool a_integrate = false) const
    {
        dwarf_errno();
        Dwarf_Attribute* found = a_integrate ? dwarf_attr_integrate(&a_die, a_code, &a_attribute)
                                             : dwarf_attr(&a_die, a_code, &a_attribute);
        int error = dwarf_errno();
        if (!found && error != 0)
            failed(error, "an unreadable attribute");
        return found != nullptr;
    }

    std::string name(Dwarf_Die& a_die, bool a_integrate = false) const
    {
        Dwarf_Attribute attribute_mem;
        if (!attribute(a_die, DW_AT_name, attribute_mem, a_integrate))
            return "";
        const char* text = dwarf_formstring(&attribute_mem);
        if (!text)
            failed(dwarf_errno(), "a name that is not a string");
        return text;
    }

    bool flag(Dwarf_Die& a_die, unsigned a_code, bool a_integrate = false) const
    {
        Dwarf_Attribute attribute_mem;
        if (!attribute(a_die, a_code, attribute_mem, a_integrate))
            return false;
        bool value = false;
        if (dwarf_formflag(&attribute_mem, &value) != 0)
            failed(dwarf_errno(), "a flag that is not a flag");
        return value;
    }

    std::uint64_t unsignedValue(Dwarf_Attribute& a_attribute) const
    {
        Dwarf_Word value = 0;
        if (dwarf_formudata(&a_attribute, &value) != 0)
            failed(dwarf_errno(), "a number that is not a constant");
        return value;
    }

    // A constant read with the sign its form gives it (data forms are
    // unsigned: gcc writes a bound of 200 as the single byte 0xc8).
    std::int64_t constant(Dwarf_Die& a_die, Dwarf_Attribute& a_attribute, const char* a_what) const
    {
        switch (dwarf_whatform(&a_attribute)) {
        case DW_FORM_sdata:
        case DW_FORM_implicit_const: {
            Dwarf_Sword value = 0;
            if (dwarf_formsdata(&a_attribute, &value) != 0)
                failed(dwarf_errno(), a_what);
            return value;
        }
        case DW_FORM_data1:
        case DW_FORM_data2:
        case DW_FORM_data4:
        case DW_FORM_data8:
        case DW_FORM_udata: {
            std::uint64_t value = unsignedValue(a_attribute);
            if (value > std::uint64_t(std::numeric_limits<std::int64_t>::max()))
                malformed(std::string(a_what) + " out of range in " + describe(a_die));
            return static_cast<std::int64_t>(value);
        }
        default:
            malformed(std::string(a_what) + " that is not a constant in " + describe(a_die));
        }
    }

    // The entry that a_die's type attribute refers to; false for none.
    bool type(Dwarf_Die& a_die, Dwarf_Die& a_type, bool a_integrate = false) const
    {
        Dwarf_Attribute attribute_mem;
        if (!attribute(a_die, DW_AT_type, attribute_mem, a_integrate))
            return false;
        if (!dwarf_formref_die(&attribute_mem, &a_type))
            failed(dwarf_errno(), "a type reference that leads nowhere");
        return true;
    }

    // Calls a_visit on each child of a_parent in order, while it answers
    // true. Siblings must lead forward: a list that loops is malformed.
    template <class Visit>
    void forEachChild(Dwarf_Die& a_parent, Visit a_visit) const
    {
        Dwarf_Die child;
        dwarf_errno();
        int status = dwarf_child(&a_parent, &child);
        while (status == 0) {
            if (!a_visit(child))
                return;
            Dwarf_Die next;
            status = dwarf_siblingof(&child, &next);
            if (status == 0 && dwarf_dieoffset(&next) <= dwarf_dieoffset(&child))
                malformed("the sibling of " + describe(child) + " lies before it");
            child = next;
        }
        if (status < 0)
            failed(dwarf_errno(), "an unreadable list of entries");
    }

private:
    const std::string& m_path;
};

// Where a member lies: its byte offset, and for a bit-field the storage
// unit that holds it (the offset is then the unit's).
struct MemberPlace {
    std::int32_t m_offset = 0;
    bool m_bit_field = false;
    unsigned m_unit_size = 0;
};

// The walk over the structure, in the order of the DWARF 1 walk: a member
// is named from its container (through a pointer, or flattened into the
// cell that holds its structure by value), a pointer to a structure gets
// its pair and then its structure's members, a type already being expanded
// on the current path is not expanded again.
class StructureWalk {
public:
    StructureWalk(const EntryReader& a_entries, StructureSink& a_sink, int a_max_depth, std::size_t a_max_steps)
        : m_entries(a_entries), m_sink(a_sink), m_max_depth(a_max_depth), m_max_steps(a_max_steps)
    {
    }

    void mapParameterOf(Dwarf_Die& a_node)
    {
        Dwarf_Die parameter;
        bool found = false;
        m_entries.forEachChild(a_node, [&](Dwarf_Die& a_child) {
            found = m_entries.tag(a_child) == DW_TAG_formal_parameter;
            if (found)
                parameter = a_child;
            return !found;
        });
        if (!found)
            return;
        Dwarf_Die pointee;
        if (!pointsToStructure(parameter, pointee))
            stopRun(" ERROR - expects user define type\n");
        m_expanding.insert(pointee.addr);
        mapType(pointee, m_entries.name(pointee), "C_", "r3", true);
        m_expanding.clear();
    }

private:
    // Whether a_parameter is a pointer to a structure (through typedefs
    // and qualifiers); a_pointee is then the type it points to.
    bool pointsToStructure(Dwarf_Die& a_parameter, Dwarf_Die& a_pointee)
    {
        Dwarf_Die type;
        if (!m_entries.type(a_parameter, type, true))
            return false;
        type = resolve(type);
        if (m_entries.tag(type) != DW_TAG_pointer_type || !m_entries.type(type, a_pointee))
            return false;
        a_pointee = skipQualifiers(a_pointee);
        return isStructure(m_entries.tag(resolve(a_pointee)));
    }

    // The type below a_type's qualifiers (a qualified void stays itself).
    Dwarf_Die skipQualifiers(Dwarf_Die a_type) const
    {
        for (int count = 0; isQualifier(m_entries.tag(a_type)); ++count) {
            if (count == MAX_QUALIFIERS)
                m_entries.malformed("more than " + std::to_string(MAX_QUALIFIERS) + " qualifiers on " +
                                    m_entries.describe(a_type));
            Dwarf_Die next;
            if (!m_entries.type(a_type, next))
                break;
            a_type = next;
        }
        return a_type;
    }

    // The type that a_type names through typedefs and qualifiers. Each
    // start is resolved once: many cells can share a long chain.
    Dwarf_Die resolve(Dwarf_Die a_type)
    {
        auto known = m_resolved.find(a_type.addr);
        if (known != m_resolved.end())
            return known->second;
        const void* start = a_type.addr;
        for (int level = 0;; ++level) {
            a_type = skipQualifiers(a_type);
            if (m_entries.tag(a_type) != DW_TAG_typedef)
                break;
            if (level >= m_max_depth)
                stopCapacity("more than " + std::to_string(m_max_depth) + " nested type levels");
            Dwarf_Die next;
            if (!m_entries.type(a_type, next))
                break;
            a_type = next;
        }
        m_resolved.emplace(start, a_type);
        return a_type;
    }

    // One more member, array element or type followed.
    void step()
    {
        if (++m_steps > m_max_steps)
            stopCapacity("more than " + std::to_string(m_max_steps) + " steps through the node's structure");
    }

    unsigned byteSize(Dwarf_Die a_type, int a_level = 0)
    {
        if (a_level > m_max_depth)
            stopCapacity("more than " + std::to_string(m_max_depth) + " nested type levels");
        Dwarf_Die type = resolve(a_type);
        Dwarf_Attribute size;
        if (m_entries.attribute(type, DW_AT_byte_size, size)) {
            std::uint64_t bytes = m_entries.unsignedValue(size);
            if (bytes > MAX_OFFSET)
                m_entries.malformed("a size out of range in " + m_entries.describe(type));
            return static_cast<unsigned>(bytes);
        }
        int tag = m_entries.tag(type);
        if (isPointer(tag))
            return TARGET_POINTER_SIZE;
        if (tag == DW_TAG_array_type) {
            Dwarf_Die element;
            if (!m_entries.type(type, element))
                m_entries.malformed("an array without an element type in " + m_entries.describe(type));
            std::uint64_t bytes = elementCount(type) * std::uint64_t(byteSize(element, a_level + 1));
            if (bytes > MAX_OFFSET)
                m_entries.malformed("a size out of range in " + m_entries.describe(type));
            return static_cast<unsigned>(bytes);
        }
        m_entries.malformed("a type without a byte size in " + m_entries.describe(type));
    }

    // The number of elements of an array, all dimensions together; a
    // dimension without bounds (a flexible array member) has none. Past the
    // walk's bound the exact count no longer matters: it is cut there.
    std::uint64_t elementCount(Dwarf_Die& a_array) const
    {
        const std::uint64_t cut = m_max_steps + 1;
        std::uint64_t total = 1;
        m_entries.forEachChild(a_array, [&](Dwarf_Die& a_child) {
            if (m_entries.tag(a_child) != DW_TAG_subrange_type)
                return true;
            std::uint64_t count = 0;
            Dwarf_Attribute bound;
            if (m_entries.attribute(a_child, DW_AT_count, bound)) {
                std::int64_t value = m_entries.constant(a_child, bound, "an array dimension");
                count = value > 0 ? std::uint64_t(value) : 0;
            } else if (m_entries.attribute(a_child, DW_AT_upper_bound, bound)) {
                std::int64_t upper = m_entries.constant(a_child, bound, "an array bound");
                std::int64_t lower = 0;
                if (m_entries.attribute(a_child, DW_AT_lower_bound, bound))
                    lower = m_entries.constant(a_child, bound, "an array bound");
                if (upper >= lower)
                    count = std::min(std::uint64_t(upper) - std::uint64_t(lower), cut - 1) + 1;
            }
            total = std::min(total * std::min(count, cut), cut);
            return total != 0;
        });
        return total;
    }

    std::int32_t checkedOffset(std::uint64_t a_offset, Dwarf_Die& a_die) const
    {
        if (a_offset > MAX_OFFSET)
            m_entries.malformed("an offset out of range in " + m_entries.describe(a_die));
        return static_cast<std::int32_t>(a_offset);
    }

    // A member's offset: a constant, or the expression "DW_OP_plus_uconst N"
    // of DWARF 2 and 3.
    std::int32_t memberLocation(Dwarf_Die& a_member, Dwarf_Attribute& a_location) const
    {
        switch (dwarf_whatform(&a_location)) {
        case DW_FORM_block:
        case DW_FORM_block1:
        case DW_FORM_block2:
        case DW_FORM_block4:
        case DW_FORM_exprloc: {
            Dwarf_Op* operations = nullptr;
            std::size_t count = 0;
            if (dwarf_getlocation(&a_location, &operations, &count) != 0)
                m_entries.failed(dwarf_errno(), "an unreadable member location");
            if (count != 1 || operations[0].atom != DW_OP_plus_uconst)
                m_entries.malformed("a member location that is not a constant offset in " +
                                    m_entries.describe(a_member));
            return checkedOffset(operations[0].number, a_member);
        }
        default: {
            std::int64_t offset = m_entries.constant(a_member, a_location, "a member offset");
            if (offset < 0)
                m_entries.malformed("a negative member offset in " + m_entries.describe(a_member));
            return checkedOffset(static_cast<std::uint64_t>(offset), a_member);
        }
        }
    }

    MemberPlace placeOf(Dwarf_Die& a_member)
    {
        MemberPlace place;
        Dwarf_Attribute attribute;
        Dwarf_Die type;
        if (m_entries.attribute(a_member, DW_AT_data_bit_offset, attribute)) {
            // DWARF 4 and 5: the bit-field's first bit from the structure's
            // start; its unit is the aligned unit of its type's size.
            std::uint64_t bits = m_entries.unsignedValue(attribute);
            if (!m_entries.type(a_member, type))
                m_entries.malformed("a member without a type in " + m_entries.describe(a_member));
            place.m_unit_size = byteSize(type);
            if (place.m_unit_size == 0)
                m_entries.malformed("a bit-field of an empty type in " + m_entries.describe(a_member));
            place.m_offset = checkedOffset(bits / 8 / place.m_unit_size * place.m_unit_size, a_member);
            place.m_bit_field = true;
            return place;
        }
        // An absent location is offset 0: union members, first members.
        if (m_entries.attribute(a_member, DW_AT_data_member_location, attribute))
            place.m_offset = memberLocation(a_member, attribute);
        if (m_entries.attribute(a_member, DW_AT_bit_size, attribute)) {
            // DWARF 2 to 4: the location is the storage unit's, the byte size
            // (or the type's) its size.
            place.m_bit_field = true;
            if (m_entries.attribute(a_member, DW_AT_byte_size, attribute)) {
                place.m_unit_size = static_cast<unsigned>(checkedOffset(m_entries.unsignedValue(attribute), a_member));
            } else {
                if (!m_entries.type(a_member, type))
                    m_entries.malformed("a member without a type in " + m_entries.describe(a_member));
                place.m_unit_size = byteSize(type);
            }
        }
        return place;
    }

    // Follows a type, unless it is already being expanded on this path.
    void descend(Dwarf_Die& a_type, const std::string& a_struct_name, const std::string& a_c_name,
                 const std::string& a_a_name, bool a_pointer)
    {
        if (m_expanding.count(a_type.addr))
            return;
        if (m_depth >= m_max_depth)
            stopCapacity("more than " + std::to_string(m_max_depth) + " nested type levels");
        step();
        m_expanding.insert(a_type.addr);
        ++m_depth;
        mapType(a_type, a_struct_name, a_c_name, a_a_name, a_pointer);
        --m_depth;
        m_expanding.erase(a_type.addr);
    }

    // The cells of one type (qualifiers already skipped) at the names given.
    void mapType(Dwarf_Die& a_type, const std::string& a_struct_name, const std::string& a_c_name,
                 const std::string& a_a_name, bool a_pointer)
    {
        int tag = m_entries.tag(a_type);
        switch (tag) {
        case DW_TAG_typedef: {
            Dwarf_Die target;
            if (!m_entries.type(a_type, target))
                m_entries.malformed("a typedef of nothing in " + m_entries.describe(a_type));
            target = skipQualifiers(target);
            descend(target, m_entries.name(a_type), a_c_name, a_a_name, a_pointer);
            return;
        }
        case DW_TAG_structure_type:
        case DW_TAG_class_type:
            walkMembers(a_type, a_struct_name, a_c_name, a_a_name, a_pointer);
            return;
        case DW_TAG_base_type:
        case DW_TAG_enumeration_type:
        case DW_TAG_union_type:
            m_sink.insertPair(a_c_name, a_a_name, byteSize(a_type));
            return;
        case DW_TAG_array_type:
            mapArray(a_type, a_c_name, a_a_name);
            return;
        default:
            if (isPointer(tag)) {
                mapPointer(a_type, a_c_name, a_a_name);
                return;
            }
            m_entries.malformed("a type of unknown kind (tag " + hex(unsigned(tag)) + ") in " +
                                m_entries.describe(a_type));
        }
    }

    // A value of type a_type held in the cells a_c_name and a_a_name.
    void mapValue(Dwarf_Die a_type, const std::string& a_c_name, const std::string& a_a_name)
    {
        Dwarf_Die type = skipQualifiers(a_type);
        int tag = m_entries.tag(type);
        if (isPointer(tag))
            mapPointer(type, a_c_name, a_a_name);
        else if (tag == DW_TAG_base_type)
            m_sink.insertPair(a_c_name, a_a_name, byteSize(type));
        else
            descend(type, m_entries.name(type), a_c_name, a_a_name, false);
    }

    // The pointer's own pair, then the members of the structure it points to.
    void mapPointer(Dwarf_Die& a_pointer, const std::string& a_c_name, const std::string& a_a_name)
    {
        m_sink.insertPair(a_c_name, a_a_name, byteSize(a_pointer));
        Dwarf_Die pointee;
        if (!m_entries.type(a_pointer, pointee))
            return;
        pointee = skipQualifiers(pointee);
        if (isStructure(m_entries.tag(resolve(pointee))))
            descend(pointee, m_entries.name(pointee), a_c_name, a_a_name, true);
    }

    // Every element at its own offset, as a value of the element type.
    void mapArray(Dwarf_Die& a_array, const std::string& a_c_name, const std::string& a_a_name)
    {
        Dwarf_Die element;
        if (!m_entries.type(a_array, element))
            m_entries.malformed("an array without an element type in " + m_entries.describe(a_array));
        std::uint64_t count = elementCount(a_array);
        if (count == 0)
            return;
        if (count > m_max_steps - std::min(m_steps, m_max_steps))
            stopCapacity("more than " + std::to_string(m_max_steps) + " steps through the node's structure");
        Dwarf_Attribute stride_attribute;
        std::uint64_t stride = m_entries.attribute(a_array, DW_AT_byte_stride, stride_attribute)
                                   ? m_entries.unsignedValue(stride_attribute)
                                   : byteSize(element);
        if (stride > MAX_OFFSET || (count - 1) * stride > MAX_OFFSET)
            m_entries.malformed("an array larger than 2 GB in " + m_entries.describe(a_array));
        for (std::uint64_t index = 0; index < count; ++index) {
            step();
            std::string c_name;
            std::string a_name;
            std::int32_t offset = static_cast<std::int32_t>(index * stride);
            if (!memberCellName(a_c_name, offset, false, c_name) || !memberCellName(a_a_name, offset, false, a_name))
                return;
            mapValue(element, c_name, a_name);
        }
    }

    void walkMembers(Dwarf_Die& a_structure, const std::string& a_struct_name, const std::string& a_c_name,
                     const std::string& a_a_name, bool a_pointer)
    {
        // The units of this structure's bit-fields that have their pair.
        std::set<std::int32_t> units;
        m_entries.forEachChild(a_structure, [&](Dwarf_Die& a_child) {
            if (m_entries.tag(a_child) == DW_TAG_member)
                mapMember(a_child, a_struct_name, a_c_name, a_a_name, a_pointer, units);
            return true;
        });
    }

    void mapMember(Dwarf_Die& a_member, const std::string& a_struct_name, const std::string& a_c_name,
                   const std::string& a_a_name, bool a_pointer, std::set<std::int32_t>& a_units)
    {
        step();
        MemberPlace place = placeOf(a_member);
        m_sink.recordMemberOffset(a_struct_name, m_entries.name(a_member), place.m_offset);
        std::string c_name;
        std::string a_name;
        if (!memberCellName(a_c_name, place.m_offset, a_pointer, c_name) ||
            !memberCellName(a_a_name, place.m_offset, a_pointer, a_name)) {
            misc::traceOut() << "NOT GOOD in dwarf\n";
            return;
        }
        if (place.m_bit_field) {
            if (a_units.insert(place.m_offset).second)
                m_sink.insertPair(c_name, a_name, place.m_unit_size);
            return;
        }
        Dwarf_Die type;
        if (!m_entries.type(a_member, type))
            m_entries.malformed("a member without a type in " + m_entries.describe(a_member));
        mapValue(type, c_name, a_name);
    }

    const EntryReader& m_entries;
    StructureSink& m_sink;
    const int m_max_depth;
    const std::size_t m_max_steps;
    // The entries (by their address in the section) being expanded on the
    // current path.
    std::set<const void*> m_expanding;
    std::map<const void*, Dwarf_Die> m_resolved;
    int m_depth = 0;
    std::size_t m_steps = 0;
};

// The node: an external function of the unit with that name; a declaration
// only when the unit holds no definition.
bool findNode(const EntryReader& a_entries, Dwarf_Die& a_unit, const char* a_name, Dwarf_Die& a_node)
{
    bool found = false;
    a_entries.forEachChild(a_unit, [&](Dwarf_Die& a_child) {
        if (a_entries.tag(a_child) != DW_TAG_subprogram || a_entries.name(a_child, true) != a_name ||
            !a_entries.flag(a_child, DW_AT_external, true))
            return true;
        bool declaration = a_entries.flag(a_child, DW_AT_declaration);
        if (!found || !declaration)
            a_node = a_child;
        found = true;
        return declaration;
    });
    return found;
}

} // namespace

ModernDebugInfo::ModernDebugInfo(std::vector<char>& a_image, const std::string& a_path) : m_path(a_path)
{
    checkImage(a_image);
    elf_version(EV_CURRENT);
    m_elf = elf_memory(a_image.data(), a_image.size());
    if (!m_elf)
        unreadable(elf_errmsg(-1));
    m_dwarf = dwarf_begin_elf(m_elf, DWARF_C_READ, nullptr);
    if (!m_dwarf) {
        std::string reason = dwarf_errmsg(-1);
        elf_end(m_elf);
        m_elf = nullptr;
        unreadable(reason);
    }
}

ModernDebugInfo::~ModernDebugInfo()
{
    dwarf_end(m_dwarf);
    elf_end(m_elf);
}

void ModernDebugInfo::unreadable(const std::string& a_reason) const
{
    stopRun("Cannot read the debugging information of " + m_path + ": " + a_reason + "\n");
}

// What libelf and libdw take on trust: every table and section inside the
// file, and compressed sections that inflate to a bounded size.
void ModernDebugInfo::checkImage(const std::vector<char>& a_image) const
{
    const char* bytes = a_image.data();
    const std::uint64_t size = a_image.size();
    auto fits = [&](std::uint64_t a_offset, std::uint64_t a_count) {
        return a_offset <= size && a_count <= size - a_offset;
    };
    VELCOR_ASSERT(size >= EHDR_SIZE);
    if (bigEndianHalf(bytes + 16) == ET_REL)
        unreadable("a relocatable object (link it into an executable first)");
    const std::uint64_t phoff = bigEndianWord(bytes + 28);
    const std::uint64_t shoff = bigEndianWord(bytes + 32);
    const std::uint64_t phnum = bigEndianHalf(bytes + 44);
    const std::uint64_t shnum = bigEndianHalf(bytes + 48);
    const std::uint64_t shstrndx = bigEndianHalf(bytes + 50);
    if (phnum != 0 && (bigEndianHalf(bytes + 42) != PHDR_SIZE || !fits(phoff, phnum * PHDR_SIZE)))
        unreadable("program headers outside the file");
    if (shnum == 0 || bigEndianHalf(bytes + 46) != SHDR_SIZE || !fits(shoff, shnum * SHDR_SIZE) ||
        shstrndx >= shnum)
        unreadable("a broken section table");
    const std::uint64_t names_offset = bigEndianWord(bytes + shoff + shstrndx * SHDR_SIZE + 16);
    const std::uint64_t names_size = bigEndianWord(bytes + shoff + shstrndx * SHDR_SIZE + 20);
    if (!fits(names_offset, names_size))
        unreadable("a section-name table outside the file");
    const char* names = bytes + names_offset;
    for (std::uint64_t index = 0; index < shnum; ++index) {
        const char* header = bytes + shoff + index * SHDR_SIZE;
        if (bigEndianWord(header + 4) == SHT_NOBITS)
            continue;
        const std::uint64_t offset = bigEndianWord(header + 16);
        const std::uint64_t length = bigEndianWord(header + 20);
        const std::string section = "section " + std::to_string(index);
        if (!fits(offset, length))
            unreadable(section + " lies outside the file");
        const std::uint64_t name = bigEndianWord(header);
        static const char gnu_compressed[] = ".zdebug";
        const bool gnu_style = name < names_size && names_size - name >= sizeof gnu_compressed - 1 &&
                               std::memcmp(names + name, gnu_compressed, sizeof gnu_compressed - 1) == 0;
        std::uint64_t inflated = 0;
        if (bigEndianWord(header + 8) & SHF_COMPRESSED) {
            if (length < CHDR_SIZE)
                unreadable(section + " is too short for its compression header");
            inflated = bigEndianWord(bytes + offset + 4);
        } else if (gnu_style) {
            // "ZLIB" and the inflated size in eight big-endian bytes.
            if (length < 12 || std::memcmp(bytes + offset, "ZLIB", 4) != 0)
                unreadable(section + " is not compressed as its name says");
            inflated = (std::uint64_t(bigEndianWord(bytes + offset + 4)) << 32) | bigEndianWord(bytes + offset + 8);
        }
        if (inflated > MAX_INFLATED_SIZE)
            unreadable(section + " inflates to more than " + std::to_string(MAX_INFLATED_SIZE >> 20) + " MiB");
    }
}

void ModernDebugInfo::mapParameter(const char* a_unit, const char* a_node, StructureSink& a_sink, int a_max_depth,
                                   std::size_t a_max_steps)
{
    EntryReader entries(m_path);
    // Units named as given, then those whose name ends with it as a file
    // name (the compiler keeps the path as it was typed).
    std::vector<std::pair<Dwarf_Die, int>> named;
    std::vector<std::pair<Dwarf_Die, int>> by_file_name;
    Dwarf_CU* unit = nullptr;
    Dwarf_CU* next = nullptr;
    Dwarf_Half version = 0;
    std::uint8_t unit_type = 0;
    Dwarf_Die unit_entry;
    int status = 0;
    dwarf_errno();
    while ((status = dwarf_get_units(m_dwarf, unit, &next, &version, &unit_type, &unit_entry, nullptr)) == 0) {
        unit = next;
        if (unit_type != DW_UT_compile || entries.tag(unit_entry) != DW_TAG_compile_unit)
            continue;
        std::string name = entries.name(unit_entry);
        if (name == a_unit)
            named.emplace_back(unit_entry, version);
        else if (std::strcmp(lastPathComponent(name.c_str()), a_unit) == 0)
            by_file_name.emplace_back(unit_entry, version);
    }
    if (status < 0)
        entries.failed(dwarf_errno(), "an unreadable unit header");
    if (named.empty() && by_file_name.empty())
        stopRun(std::string(" compilation entry ") + a_unit + " does not exits\n");
    named.insert(named.end(), by_file_name.begin(), by_file_name.end());
    for (auto& candidate : named) {
        Dwarf_Die node;
        if (!findNode(entries, candidate.first, a_node, node))
            continue;
        misc::traceOut() << "Unit " << a_unit << " (DWARF " << candidate.second << "), node " << a_node << '\n';
        StructureWalk(entries, a_sink, a_max_depth, a_max_steps).mapParameterOf(node);
        return;
    }
    stopRun(std::string("ERROR - no subroutine ") + a_node + " in compilation unit\n");
}
