#include "structure_walk.h"

#include <algorithm>
#include <limits>

#include "memory_name.h"
#include "misc/stop.h"
#include "misc/trace.h"

namespace {

// const, volatile, restrict and _Atomic: no real type wears more than a few.
constexpr int MAX_QUALIFIERS = 16;
constexpr std::uint64_t MAX_OFFSET = std::numeric_limits<std::int32_t>::max();

} // namespace

StructureWalk::StructureWalk(const EntryReader& a_entries, StructureSink& a_sink, int a_max_depth,
                             std::size_t a_max_steps)
    : m_entries(a_entries), m_sink(a_sink), m_max_depth(a_max_depth), m_max_steps(a_max_steps)
{
}

void StructureWalk::mapParameterOf(Dwarf_Die& a_node)
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

// Whether a_parameter is a pointer to a structure (through typedefs
// and qualifiers); a_pointee is then the type it points to.
bool StructureWalk::pointsToStructure(Dwarf_Die& a_parameter, Dwarf_Die& a_pointee)
{
    Dwarf_Die type;
    if (!m_entries.type(a_parameter, type, true))
        return false;
    type = resolve(type);
    if (m_entries.tag(type) != DW_TAG_pointer_type || !m_entries.type(type, a_pointee))
        return false;
    a_pointee = skipQualifiers(a_pointee);
    return isStructureTag(m_entries.tag(resolve(a_pointee)));
}

// The type below a_type's qualifiers (a qualified void stays itself).
Dwarf_Die StructureWalk::skipQualifiers(Dwarf_Die a_type) const
{
    for (int count = 0; isQualifierTag(m_entries.tag(a_type)); ++count) {
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
Dwarf_Die StructureWalk::resolve(Dwarf_Die a_type)
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
void StructureWalk::step()
{
    if (++m_steps > m_max_steps)
        stopCapacity("more than " + std::to_string(m_max_steps) + " steps through the node's structure");
}

unsigned StructureWalk::byteSize(Dwarf_Die a_type, int a_level)
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
    if (isPointerTag(tag))
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
std::uint64_t StructureWalk::elementCount(Dwarf_Die& a_array) const
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

std::int32_t StructureWalk::checkedOffset(std::uint64_t a_offset, Dwarf_Die& a_die) const
{
    if (a_offset > MAX_OFFSET)
        m_entries.malformed("an offset out of range in " + m_entries.describe(a_die));
    return static_cast<std::int32_t>(a_offset);
}

// A member's offset: a constant, or the expression "DW_OP_plus_uconst N"
// of DWARF 2 and 3.
std::int32_t StructureWalk::memberLocation(Dwarf_Die& a_member, Dwarf_Attribute& a_location) const
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

StructureWalk::MemberPlace StructureWalk::placeOf(Dwarf_Die& a_member)
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
void StructureWalk::descend(Dwarf_Die& a_type, const std::string& a_struct_name, const std::string& a_c_name,
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
void StructureWalk::mapType(Dwarf_Die& a_type, const std::string& a_struct_name, const std::string& a_c_name,
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
        if (isPointerTag(tag)) {
            mapPointer(a_type, a_c_name, a_a_name);
            return;
        }
        m_entries.malformed("a type of unknown kind (tag " + hexNumber(unsigned(tag)) + ") in " +
                            m_entries.describe(a_type));
    }
}

// A value of type a_type held in the cells a_c_name and a_a_name.
void StructureWalk::mapValue(Dwarf_Die a_type, const std::string& a_c_name, const std::string& a_a_name)
{
    Dwarf_Die type = skipQualifiers(a_type);
    int tag = m_entries.tag(type);
    if (isPointerTag(tag))
        mapPointer(type, a_c_name, a_a_name);
    else if (tag == DW_TAG_base_type)
        m_sink.insertPair(a_c_name, a_a_name, byteSize(type));
    else
        descend(type, m_entries.name(type), a_c_name, a_a_name, false);
}

// The pointer's own pair, then the members of the structure it points to.
void StructureWalk::mapPointer(Dwarf_Die& a_pointer, const std::string& a_c_name, const std::string& a_a_name)
{
    m_sink.insertPair(a_c_name, a_a_name, byteSize(a_pointer));
    Dwarf_Die pointee;
    if (!m_entries.type(a_pointer, pointee))
        return;
    pointee = skipQualifiers(pointee);
    if (isStructureTag(m_entries.tag(resolve(pointee))))
        descend(pointee, m_entries.name(pointee), a_c_name, a_a_name, true);
}

// Every element at its own offset, as a value of the element type.
void StructureWalk::mapArray(Dwarf_Die& a_array, const std::string& a_c_name, const std::string& a_a_name)
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

void StructureWalk::walkMembers(Dwarf_Die& a_structure, const std::string& a_struct_name, const std::string& a_c_name,
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

void StructureWalk::mapMember(Dwarf_Die& a_member, const std::string& a_struct_name, const std::string& a_c_name,
                              const std::string& a_a_name, bool a_pointer, std::set<std::int32_t>& a_units)
{
    step();
    MemberPlace place = placeOf(a_member);
    m_sink.recordMemberOffset(a_struct_name.c_str(), m_entries.name(a_member).c_str(), place.m_offset);
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
