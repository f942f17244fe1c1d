#include "dwarf_entries.h"

#include <cstdio>
#include <limits>

#include "misc/stop.h"

bool isQualifierTag(int a_tag)
{
    return a_tag == DW_TAG_const_type || a_tag == DW_TAG_volatile_type || a_tag == DW_TAG_restrict_type ||
           a_tag == DW_TAG_atomic_type;
}

bool isStructureTag(int a_tag)
{
    return a_tag == DW_TAG_structure_type || a_tag == DW_TAG_class_type;
}

bool isPointerTag(int a_tag)
{
    return a_tag == DW_TAG_pointer_type || a_tag == DW_TAG_reference_type || a_tag == DW_TAG_rvalue_reference_type;
}

std::string hexNumber(std::uint64_t a_value)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(a_value));
    return text;
}

void EntryReader::malformed(const std::string& a_reason) const
{
    stopRun("Cannot read the debugging information of " + m_path + ": " + a_reason + "\n");
}

void EntryReader::failed(int a_error, const char* a_what) const
{
    malformed(a_error != 0 ? dwarf_errmsg(a_error) : a_what);
}

std::string EntryReader::describe(Dwarf_Die a_die) const
{
    return "the entry at " + hexNumber(dwarf_dieoffset(&a_die));
}

// libdw keeps the last error until it is asked for it: each access asks
// once before (forgetting an older error) and once after.
int EntryReader::tag(Dwarf_Die a_die) const
{
    dwarf_errno();
    int tag = dwarf_tag(&a_die);
    if (tag == DW_TAG_invalid)
        failed(dwarf_errno(), "an entry without a tag");
    return tag;
}

bool EntryReader::attribute(Dwarf_Die& a_die, unsigned a_code, Dwarf_Attribute& a_attribute, bool a_integrate) const
{
    dwarf_errno();
    Dwarf_Attribute* found =
        a_integrate ? dwarf_attr_integrate(&a_die, a_code, &a_attribute) : dwarf_attr(&a_die, a_code, &a_attribute);
    int error = dwarf_errno();
    if (!found && error != 0)
        failed(error, "an unreadable attribute");
    return found != nullptr;
}

std::string EntryReader::name(Dwarf_Die& a_die, bool a_integrate) const
{
    Dwarf_Attribute attribute_mem;
    if (!attribute(a_die, DW_AT_name, attribute_mem, a_integrate))
        return "";
    const char* text = dwarf_formstring(&attribute_mem);
    if (!text)
        failed(dwarf_errno(), "a name that is not a string");
    return text;
}

bool EntryReader::flag(Dwarf_Die& a_die, unsigned a_code, bool a_integrate) const
{
    Dwarf_Attribute attribute_mem;
    if (!attribute(a_die, a_code, attribute_mem, a_integrate))
        return false;
    bool value = false;
    if (dwarf_formflag(&attribute_mem, &value) != 0)
        failed(dwarf_errno(), "a flag that is not a flag");
    return value;
}

std::uint64_t EntryReader::unsignedValue(Dwarf_Attribute& a_attribute) const
{
    Dwarf_Word value = 0;
    if (dwarf_formudata(&a_attribute, &value) != 0)
        failed(dwarf_errno(), "a number that is not a constant");
    return value;
}

std::int64_t EntryReader::constant(Dwarf_Die& a_die, Dwarf_Attribute& a_attribute, const char* a_what) const
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

bool EntryReader::type(Dwarf_Die& a_die, Dwarf_Die& a_type, bool a_integrate) const
{
    Dwarf_Attribute attribute_mem;
    if (!attribute(a_die, DW_AT_type, attribute_mem, a_integrate))
        return false;
    if (!dwarf_formref_die(&attribute_mem, &a_type))
        failed(dwarf_errno(), "a type reference that leads nowhere");
    return true;
}
