#include "dwarf_debug.h"

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <limits>

#include "common.h"
#include "memory_name.h"
#include "misc/stop.h"
#include "misc/trace.h"
#include "misc/writer.h"
#include "parse.h"
#include "swap.h"
#include "symbols.h"
#include "transition.h"

namespace {

constexpr std::size_t EHDR_SIZE = 52;
constexpr std::size_t SHDR_SIZE = 40;
// The length and the tag: an entry shorter than this holds no tag.
constexpr std::size_t ENTRY_PREFIX = 6;
// Length, tag, AT_sibling code and value, AT_name code.
constexpr std::size_t NAME_OFFSET = 14;

static_assert(sizeof(Elf32_Ehdr) == EHDR_SIZE, "Elf32_Ehdr is kept as it lies in the file");
static_assert(sizeof(Elf32_Shdr) == SHDR_SIZE, "Elf32_Shdr is kept as it lies in the file");

char g_no_name[1] = "";

} // namespace

dwarf_debug::dwarf_debug()
    : m_debug_table(1, '\0'), m_members(100, misc::KeyCompare::Identity), struct_assert_table(100),
      type_field_offset_table(100)
{
    std::memset(&header, 0, sizeof header);
}

void dwarf_debug::clear()
{
    std::memset(&header, 0, sizeof header);
    section_header.clear();
    debug_section_index = 0;
    strtable.clear();
    m_debug_table.assign(1, '\0');
    forgetScannedEntry();
    m_members = t_members(100, misc::KeyCompare::Identity);
    struct_assert_table = t_struct_asserts(100);
    type_field_offset_table = type_field_offsets(100);
    m_size = 0;
    m_path.clear();
    m_modern = false;
    m_image.clear();
    m_expanding.clear();
    m_depth = 0;
}

void dwarf_debug::corrupt() const
{
    stopRun("Truncated or corrupt executable: " + m_path + "\n");
}

// ---------------------------------------------------------------- ELF access

void dwarf_debug::readExactly(std::istream& a_file, std::uint64_t a_offset, void* a_buffer, std::size_t a_count,
                              std::uint64_t a_file_size) const
{
    if (a_offset > a_file_size || a_count > a_file_size - a_offset)
        corrupt();
    if (a_count == 0)
        return;
    a_file.clear();
    a_file.seekg(static_cast<std::streamoff>(a_offset), std::ios::beg);
    a_file.read(static_cast<char*>(a_buffer), static_cast<std::streamsize>(a_count));
    if (!a_file || static_cast<std::size_t>(a_file.gcount()) != a_count)
        corrupt();
}

void dwarf_debug::readDwarf(std::istream& a_exe_file)
{
    readDwarf(a_exe_file, "");
}

void dwarf_debug::readDwarf(std::istream& a_exe_file, const char* a_path)
{
    std::memset(&header, 0, sizeof header);
    section_header.clear();
    debug_section_index = 0;
    strtable.clear();
    m_debug_table.assign(1, '\0');
    forgetScannedEntry();
    m_size = 0;
    m_path = a_path ? a_path : "";
    m_modern = false;
    m_image.clear();

    std::uint64_t file_size = 0;
    a_exe_file.clear();
    if (a_exe_file.seekg(0, std::ios::end)) {
        std::streamoff end = a_exe_file.tellg();
        if (end > 0)
            file_size = static_cast<std::uint64_t>(end);
    }

    // The identification first: magic, 32-bit class, big-endian data.
    unsigned char bytes[EHDR_SIZE] = {};
    std::size_t got = 0;
    a_exe_file.clear();
    if (a_exe_file.seekg(0, std::ios::beg)) {
        a_exe_file.read(reinterpret_cast<char*>(bytes), EHDR_SIZE);
        got = static_cast<std::size_t>(a_exe_file.gcount());
    }
    if (got <= EI_DATA || bytes[EI_MAG0] != ELFMAG0 || bytes[EI_MAG1] != ELFMAG1 || bytes[EI_MAG2] != ELFMAG2 ||
        bytes[EI_MAG3] != ELFMAG3 || bytes[EI_CLASS] != ELFCLASS32 || bytes[EI_DATA] != ELFDATA2MSB)
        stopRun("Not a 32-bit big-endian ELF file: " + m_path + "\n");
    if (got < EHDR_SIZE)
        corrupt();
    std::memcpy(&header, bytes, EHDR_SIZE);

    const std::uint64_t shoff = bigEndianWord(&header.e_shoff);
    const std::size_t shnum = bigEndianHalf(&header.e_shnum);
    const std::size_t shstrndx = bigEndianHalf(&header.e_shstrndx);
    if (shstrndx >= shnum)
        corrupt();
    section_header.resize(shnum);
    readExactly(a_exe_file, shoff, section_header.data(), shnum * SHDR_SIZE, file_size);

    const Elf32_Shdr& names = section_header[shstrndx];
    const std::uint64_t names_size = bigEndianWord(&names.sh_size);
    misc::traceOut() << "---strtable malloc of " << names_size << '\n';
    if (names_size > file_size)
        corrupt();
    strtable.resize(names_size);
    readExactly(a_exe_file, bigEndianWord(&names.sh_offset), strtable.data(), names_size, file_size);

    static const char debug_name[] = ".debug";
    static const char modern_name[] = ".debug_info";
    auto named = [&](std::size_t a_index, const char* a_name, std::size_t a_size) {
        std::uint64_t name = bigEndianWord(&section_header[a_index].sh_name);
        return name < strtable.size() && strtable.size() - name >= a_size &&
               std::memcmp(strtable.data() + name, a_name, a_size) == 0;
    };
    bool has_debug = false;
    bool has_modern = false;
    for (std::size_t i = 0; i < shnum; ++i) {
        if (named(i, debug_name, sizeof debug_name)) {
            debug_section_index = static_cast<int>(i);
            has_debug = true;
        }
        has_modern = has_modern || named(i, modern_name, sizeof modern_name);
    }

    if (!has_debug && has_modern) {
        m_modern = true;
        m_image.resize(file_size);
        readExactly(a_exe_file, 0, m_image.data(), file_size, file_size);
        return;
    }

    const Elf32_Shdr& debug = section_header[debug_section_index];
    const std::uint64_t debug_size = bigEndianWord(&debug.sh_size);
    if (debug_size > file_size || debug_size > std::uint64_t(std::numeric_limits<int>::max()) - 1)
        corrupt();
    m_debug_table.assign(debug_size + 1, '\0');
    readExactly(a_exe_file, bigEndianWord(&debug.sh_offset), m_debug_table.data(), debug_size, file_size);
    setDwarfSize(static_cast<int>(debug_size));
}

void dwarf_debug::setDwarfSize(int a_size)
{
    VELCOR_ASSERT(a_size >= 0 && std::size_t(a_size) < m_debug_table.size());
    m_size = a_size;
    forgetScannedEntry();
}

// ------------------------------------------------------- bounded table access

std::size_t dwarf_debug::offsetOf(const char* a_pointer) const
{
    const char* begin = m_debug_table.data();
    VELCOR_ASSERT(a_pointer >= begin && a_pointer <= begin + m_size);
    return static_cast<std::size_t>(a_pointer - begin);
}

std::uint32_t dwarf_debug::wordAt(std::size_t a_offset) const
{
    if (!fits(a_offset, 4))
        corrupt();
    return bigEndianWord(m_debug_table.data() + a_offset);
}

std::uint16_t dwarf_debug::halfAt(std::size_t a_offset) const
{
    if (!fits(a_offset, 2))
        corrupt();
    return bigEndianHalf(m_debug_table.data() + a_offset);
}

bool dwarf_debug::isWholeEntry(std::size_t a_offset) const
{
    return fits(a_offset, 4) && fits(a_offset, bigEndianWord(m_debug_table.data() + a_offset));
}

std::size_t dwarf_debug::entryEnd(std::size_t a_offset) const
{
    if (!isWholeEntry(a_offset))
        corrupt();
    return a_offset + wordAt(a_offset);
}

void dwarf_debug::requireEntry(std::size_t a_offset) const
{
    if (entryEnd(a_offset) - a_offset < ENTRY_PREFIX)
        corrupt();
}

long dwarf_debug::valueSize(std::size_t a_offset, unsigned int a_code, std::size_t a_end) const
{
    bool corrupt_value = false;
    const long size = valueSize(a_offset, a_code, a_end, corrupt_value);
    if (corrupt_value)
        corrupt();
    return size;
}

long dwarf_debug::valueSize(std::size_t a_offset, unsigned int a_code, std::size_t a_end, bool& a_corrupt) const
{
    a_corrupt = false;
    std::uint64_t size = 0;
    switch (a_code & 0xf) {
    case FORM_ADDR:
    case FORM_REF:
    case FORM_DATA4:
        size = 4;
        break;
    case FORM_DATA2:
        size = 2;
        break;
    case FORM_DATA8:
        size = 8;
        break;
    case FORM_BLOCK2:
        if (a_end - a_offset < 2) {
            a_corrupt = true;
            return 0;
        }
        size = 2 + std::uint64_t(halfAt(a_offset));
        break;
    case FORM_BLOCK4:
        if (a_end - a_offset < 4) {
            a_corrupt = true;
            return 0;
        }
        size = 4 + std::uint64_t(wordAt(a_offset));
        break;
    case FORM_STRING: {
        const void* nul = std::memchr(m_debug_table.data() + a_offset, '\0', a_end - a_offset);
        if (!nul) {
            a_corrupt = true;
            return 0;
        }
        size = static_cast<const char*>(nul) - (m_debug_table.data() + a_offset) + 1;
        break;
    }
    default:
        return -1;
    }
    if (size > a_end - a_offset) {
        a_corrupt = true;
        return 0;
    }
    return static_cast<long>(size);
}

// ------------------------------------------------------------------- entries

char* dwarf_debug::getFirstEntry()
{
    return m_debug_table.data();
}

unsigned int dwarf_debug::getSize(char* a_entry)
{
    return wordAt(offsetOf(a_entry));
}

dwarf_tag dwarf_debug::getTag(char* a_pointer)
{
    std::size_t offset = offsetOf(a_pointer);
    requireEntry(offset);
    return static_cast<dwarf_tag>(halfAt(offset + 4));
}

char* dwarf_debug::getEntryName(char* a_pointer)
{
    std::size_t offset = offsetOf(a_pointer);
    requireEntry(offset);
    std::size_t end = entryEnd(offset);
    if (end - offset > NAME_OFFSET && halfAt(offset + ENTRY_PREFIX) == AT_sibling &&
        halfAt(offset + NAME_OFFSET - 2) == AT_name &&
        std::memchr(at(offset + NAME_OFFSET), '\0', end - offset - NAME_OFFSET))
        return at(offset + NAME_OFFSET);
    char* name = checkAttribute(AT_name, a_pointer);
    return name ? name : g_no_name;
}

char* dwarf_debug::getKid(char* a_pointer)
{
    std::size_t offset = offsetOf(a_pointer);
    std::uint64_t next = std::uint64_t(offset) + wordAt(offset);
    if (next > std::uint64_t(m_size) || !fits(next, 4) || wordAt(next) <= 4)
        return nullptr;
    return at(next);
}

std::size_t dwarf_debug::siblingOffset(std::size_t a_offset)
{
    char* value = checkAttribute(AT_sibling, at(a_offset));
    if (!value)
        stopRun(" No sibiling entry exits\n");
    return bigEndianWord(value);
}

char* dwarf_debug::getSibling(char* a_pointer)
{
    std::size_t sibling = siblingOffset(offsetOf(a_pointer));
    return sibling <= std::size_t(m_size) ? at(sibling) : nullptr;
}

// The first attribute of that code, read in order: one that cannot be read
// before it ends the run, whether it comes first or is read again from
// m_scanned.
char* dwarf_debug::checkAttribute(dwarf_attribute a_att_field, char* a_pointer)
{
    std::size_t offset = offsetOf(a_pointer);
    if (offset != m_scanned.m_offset)
        scanAttributes(offset);
    for (const auto& attribute : m_scanned.m_attributes)
        if (attribute.first == static_cast<unsigned int>(a_att_field))
            return at(attribute.second);
    if (m_scanned.m_failure == ScannedEntry::CORRUPT)
        corrupt();
    if (m_scanned.m_failure == ScannedEntry::UNKNOWN_FORM)
        stopRun(" wrong attribute size\n");
    return nullptr;
}

void dwarf_debug::scanAttributes(std::size_t a_offset)
{
    forgetScannedEntry();
    const std::size_t end = entryEnd(a_offset);
    m_scanned.m_attributes.clear();
    m_scanned.m_failure = ScannedEntry::NONE;
    for (std::size_t position = a_offset + ENTRY_PREFIX; position < end;) {
        if (end - position < 2) {
            m_scanned.m_failure = ScannedEntry::CORRUPT;
            break;
        }
        unsigned int code = halfAt(position);
        position += 2;
        bool corrupt_value = false;
        long size = valueSize(position, code, end, corrupt_value);
        if (corrupt_value) {
            m_scanned.m_failure = ScannedEntry::CORRUPT;
            break;
        }
        if (size < 0) {
            m_scanned.m_failure = ScannedEntry::UNKNOWN_FORM;
            break;
        }
        m_scanned.m_attributes.emplace_back(code, position);
        position += static_cast<std::size_t>(size);
    }
    m_scanned.m_offset = a_offset;
}

int dwarf_debug::attributeSize(char* a_attp, unsigned int a_attr)
{
    long size = valueSize(offsetOf(a_attp), a_attr, std::size_t(m_size));
    return size > std::numeric_limits<int>::max() ? -1 : static_cast<int>(size);
}

unsigned int dwarf_debug::getAttributeValueI(dwarf_attribute a_att_field, char* a_pointer)
{
    char* value = checkAttribute(a_att_field, a_pointer);
    if (!value)
        stopRun("ERROR - attribute does not exists\n");
    switch (a_att_field & 0xf) {
    case FORM_ADDR:
    case FORM_REF:
    case FORM_DATA4:
        return bigEndianWord(value);
    case FORM_DATA2:
        return bigEndianHalf(value);
    case FORM_BLOCK2:
    case FORM_BLOCK4:
        stopRun(" ERROR - should not be of block form\n");
    default:
        stopRun("ERROR : Wrong form of attribute\n");
    }
}

char* dwarf_debug::getAttributeValueS(dwarf_attribute a_att_field, char* a_pointer)
{
    if ((a_att_field & 0xf) != FORM_STRING)
        std::cerr << " no string found\n";
    char* value = checkAttribute(a_att_field, a_pointer);
    if (!value)
        stopRun(" no such attribute\n");
    // Whatever the form, the NUL after the table ends the text in bounds.
    return value;
}

unsigned int dwarf_debug::getAttributeValueT(dwarf_attribute a_att_field, char* a_pointer)
{
    VELCOR_ASSERT(a_att_field == AT_mod_u_d_type);
    char* value = checkAttribute(a_att_field, a_pointer);
    if (!value)
        stopRun("ERROR - attribute does not exists\n");
    if (bigEndianHalf(value) != 5)
        stopRun("Precondition failed: length2==5 in getAttributeValueT\n");
    if (static_cast<unsigned char>(value[2]) != MOD_pointer_to)
        stopRun("Precondition failed: *attp==MOD_pointer_to in getAttributeValueT\n");
    return bigEndianWord(value + 3);
}

unsigned long dwarf_debug::getLoc(char* a_pointer)
{
    char* value = checkAttribute(AT_location, a_pointer);
    if (!value)
        stopRun("ERROR - no location attribute\n");
    // The block: its 2-byte length, the first atom's operation, its operand.
    if (bigEndianHalf(value) < 5)
        corrupt();
    return bigEndianWord(value + 3);
}

char* dwarf_debug::getCompilationUnit(char* a_entry, const char* a_name)
{
    std::size_t offset = a_entry ? offsetOf(a_entry) : 0;
    while (fits(offset, 4)) {
        std::uint32_t size = wordAt(offset);
        misc::traceOut() << "Entry=" << offset << ", GetSize(entry)=" << size << ", while PREFIX SIZE is" << 5 << '\n';
        misc::traceOut() << "DWARFSize=" << getDwarfSize() << " m_debug_table size=" << getDwarfSize() << ", together "
                  << std::uint64_t(offset) + size << '\n';
        if (size <= 5 || !fits(offset, size))
            break;
        dwarf_tag tag = getTag(at(offset));
        misc::traceOut() << "We are here and this is good, TAG_compile_unit is " << TAG_compile_unit
                  << ", getTag(entry)=" << tag << '\n';
        if (tag == TAG_compile_unit) {
            const char* name = getAttributeValueS(AT_name, at(offset));
            misc::traceOut() << "TAG_unit\n";
            misc::traceOut() << "STR=" << name << ", while name=" << a_name << '\n';
            if (std::strcmp(name, a_name) == 0)
                return at(offset);
        }
        // Siblings only lead forward; any other reference ends the walk.
        std::size_t next = siblingOffset(offset);
        if (next <= offset)
            break;
        offset = next;
    }
    stopRun(std::string(" compilation entry ") + a_name + " does not exits\n");
}

char* dwarf_debug::getGlobalSubroutine(char* a_entry, const char* a_name)
{
    std::size_t offset = a_entry ? offsetOf(a_entry) : 0;
    while (fits(offset, 4)) {
        std::uint32_t size = wordAt(offset);
        if (size < ENTRY_PREFIX || !fits(offset, size))
            break;
        if (getTag(at(offset)) == TAG_global_subroutine &&
            std::strcmp(getAttributeValueS(AT_name, at(offset)), a_name) == 0)
            return at(offset);
        std::size_t next = siblingOffset(offset);
        if (next <= offset)
            break;
        offset = next;
    }
    stopRun(std::string("ERROR - no subroutine ") + a_name + " in compilation unit\n");
}

bool dwarf_debug::checkIn(char* a_pointer, char* a_att)
{
    return offsetOf(a_att) >= entryEnd(offsetOf(a_pointer));
}

char* dwarf_debug::getRegister(const char*)
{
    return nullptr;
}

// --------------------------------------------------- source variable mapping

void dwarf_debug::outMembers(const char*, const char* a_function_name, const char* a_compilation_unit)
{
    m_expanding.clear();
    m_depth = 0;
    if (m_modern)
        ModernDebugInfo(m_image, m_path)
            .mapParameter(a_compilation_unit, a_function_name, *this, MAX_TYPE_DEPTH, MAX_WALK_STEPS);
    else
        outDwarf1Members(a_function_name, a_compilation_unit);
    VELCOR_ASSERT(parse_symbol_table);
    for (const auto& pair : m_members) {
        parse_symbol_table->addTN(TN_SYM_REG, pair.first.c_str());
        parse_symbol_table->addTN(TN_SYM_REG, pair.second.m_target.c_str());
    }
}

void dwarf_debug::outDwarf1Members(const char* a_function_name, const char* a_compilation_unit)
{
    char* unit = getCompilationUnit(nullptr, a_compilation_unit);
    char* function = getGlobalSubroutine(getKid(unit), a_function_name);
    char* parameter = getKid(function);
    if (!parameter)
        return;
    if (getTag(parameter) == TAG_formal_parameter)
        parameter = at(referencedEntry(getAttributeValueT(AT_mod_u_d_type, parameter)));
    else
        std::cerr << "ERROR - NO FORMAL PARAMETRS\n";
    if (getTag(parameter) != TAG_typedef)
        stopRun(" ERROR - expects user define type\n");
    m_expanding.insert(offsetOf(parameter));
    recursive_outMembers(parameter, getEntryName(parameter), "C_", "r3", true);
    m_expanding.clear();
}

std::size_t dwarf_debug::referencedEntry(std::uint32_t a_offset) const
{
    requireEntry(a_offset);
    return a_offset;
}

void dwarf_debug::insertPair(const std::string& a_var_c_name, const std::string& a_var_a_name, unsigned a_byte_size)
{
    if (m_members.size() >= MAX_MEMBER_PAIRS)
        stopCapacity("more than " + std::to_string(MAX_MEMBER_PAIRS) + " mapped memory cells");
    m_members.insert(a_var_c_name.c_str(), MemberCell{a_var_a_name, a_byte_size});
}

void dwarf_debug::recordMemberOffset(const char* a_struct_name, const char* a_member_name, std::int32_t a_offset)
{
    m_offset_key.assign(a_struct_name).append(1, '#').append(a_member_name);
    type_field_offset_table[m_offset_key.c_str()] = a_offset;
}

unsigned dwarf_debug::fundamentalTypeSize(unsigned a_code)
{
    switch (a_code) {
    case FT_char:
    case FT_signed_char:
    case FT_unsigned_char:
    case FT_boolean:
        return 1;
    case FT_short:
    case FT_signed_short:
    case FT_unsigned_short:
        return 2;
    case FT_integer:
    case FT_signed_integer:
    case FT_unsigned_integer:
    case FT_long:
    case FT_signed_long:
    case FT_unsigned_long:
    case FT_float:
        return 4;
    case FT_pointer:
        return TARGET_POINTER_SIZE;
    case FT_dbl_prec_float:
    case FT_complex:
        return 8;
    case FT_ext_prec_float:
    case FT_dbl_prec_complex:
        return 16;
    case FT_ext_prec_complex:
        return 32;
    default:
        return 0;
    }
}

unsigned dwarf_debug::fundamentalSize(char* a_entry)
{
    if (char* code = checkAttribute(AT_fund_type, a_entry))
        return fundamentalTypeSize(bigEndianHalf(code));
    char* block = checkAttribute(AT_mod_fund_type, a_entry);
    if (!block)
        return 0;
    // The block (already bounded by its entry): its length, the modifiers,
    // the fundamental type's code in the last two bytes.
    const std::size_t length = bigEndianHalf(block);
    if (length < 2)
        return 0;
    for (std::size_t i = 0; i + 2 < length; ++i) {
        unsigned modifier = static_cast<unsigned char>(block[2 + i]);
        if (modifier == MOD_pointer_to || modifier == MOD_reference_to)
            return TARGET_POINTER_SIZE;
    }
    return fundamentalTypeSize(bigEndianHalf(block + length));
}

void dwarf_debug::descend(std::uint32_t a_target, const char* a_struct_name, const std::string& a_var_c_name,
                          const std::string& a_var_a_name, bool a_pointer)
{
    std::size_t target = referencedEntry(a_target);
    if (m_expanding.count(target))
        return;
    if (m_depth >= MAX_TYPE_DEPTH)
        stopCapacity("more than " + std::to_string(MAX_TYPE_DEPTH) + " nested type levels");
    m_expanding.insert(target);
    ++m_depth;
    recursive_outMembers(at(target), a_struct_name, a_var_c_name.c_str(), a_var_a_name.c_str(), a_pointer);
    --m_depth;
    m_expanding.erase(target);
}

void dwarf_debug::recursive_outMembers(char* a_entry, const char* a_struct_name, const char* a_var_c_name,
                                       const char* a_var_a_name, bool a_pointer)
{
    switch (getTag(a_entry)) {
    case TAG_typedef:
        if (checkAttribute(AT_user_def_type, a_entry))
            descend(getAttributeValueI(AT_user_def_type, a_entry), getEntryName(a_entry), a_var_c_name,
                    a_var_a_name, a_pointer);
        else if (checkAttribute(AT_fund_type, a_entry))
            insertPair(a_var_c_name, a_var_a_name, fundamentalSize(a_entry));
        else
            stopRun(std::string("No AT_user_Def_Type attribute in ") + getEntryName(a_entry) + "\n");
        break;
    case TAG_structure_type:
        if (char* first = getKid(a_entry))
            walkMembers(offsetOf(first), a_struct_name, a_var_c_name, a_var_a_name, a_pointer);
        break;
    case TAG_member:
        walkMembers(offsetOf(a_entry), a_struct_name, a_var_c_name, a_var_a_name, a_pointer);
        break;
    default:
        // Unions, arrays, enumerations and the rest map to nothing.
        break;
    }
}

// The members of one structure, one after another until the null entry that
// ends the list; an entry of another kind there is taken as the next
// recursion would take it, and ends the walk.
void dwarf_debug::walkMembers(std::size_t a_first, const char* a_struct_name, const char* a_var_c_name,
                              const char* a_var_a_name, bool a_pointer)
{
    for (std::size_t offset = a_first;;) {
        requireEntry(offset);
        if (getTag(at(offset)) != TAG_member) {
            recursive_outMembers(at(offset), a_struct_name, a_var_c_name, a_var_a_name, a_pointer);
            return;
        }
        mapMember(at(offset), a_struct_name, a_var_c_name, a_var_a_name, a_pointer);
        // A list must end with its null entry inside the table.
        std::size_t next = entryEnd(offset);
        if (wordAt(next) <= 4)
            return;
        offset = next;
    }
}

void dwarf_debug::mapMember(char* a_entry, const char* a_struct_name, const char* a_var_c_name,
                            const char* a_var_a_name, bool a_pointer)
{
    const std::int32_t offset = static_cast<std::int32_t>(static_cast<std::uint32_t>(getLoc(a_entry)));
    recordMemberOffset(a_struct_name, getEntryName(a_entry), offset);

    std::string c_name;
    std::string a_name;
    if (!memberCellName(a_var_c_name, offset, a_pointer, c_name) ||
        !memberCellName(a_var_a_name, offset, a_pointer, a_name)) {
        misc::traceOut() << "NOT GOOD in dwarf\n";
        return;
    }
    if (!a_pointer)
        misc::traceOut() << " PREV C NAME=" << a_var_c_name << " +offset " << offset << ", we get " << c_name << '\n';

    if (checkAttribute(AT_mod_u_d_type, a_entry)) {
        insertPair(c_name, a_name, TARGET_POINTER_SIZE);
        std::uint32_t target = getAttributeValueT(AT_mod_u_d_type, a_entry);
        descend(target, getEntryName(at(referencedEntry(target))), c_name, a_name, true);
    } else if (checkAttribute(AT_user_def_type, a_entry)) {
        std::uint32_t target = getAttributeValueI(AT_user_def_type, a_entry);
        descend(target, getEntryName(at(referencedEntry(target))), c_name, a_name, false);
    } else {
        insertPair(c_name, a_name, fundamentalSize(a_entry));
    }
}

void dwarf_debug::addVars(Transition* a_transition)
{
    if (!a_transition)
        return;
    misc::Writer out(*getOutFile());
    for (const auto& pair : m_members) {
        const char* target = pair.second.m_target.c_str();
        if (a_transition->isIn(target))
            out << " %FORM addVARS\n" << assertStr() << "P" << target << "=" << target << endStr() << '\n';
    }
}

void dwarf_debug::print()
{
    misc::Writer out(*getOutFile());
    for (const auto& pair : m_members) {
        out << assertStr() << pair.first << "=" << pair.second.m_target << ";\n";
        out << assertStr() << "P" << pair.first << "=" << "P" << pair.second.m_target << ";\n";
    }
}

void dwarf_debug::printStructAsserts()
{
    misc::Writer out(*getOutFile());
    for (const auto& pair : struct_assert_table) {
        out << "ASSERT ADDRESS(" << pair.first << ")=ADDRESS(" << pair.second << ");\n";
        out << "ASSERT ADDRESS(P" << pair.first << ")=ADDRESS(P" << pair.second << ");\n";
    }
}

int dwarf_debug::getOffset(const char* a_type_field_pair)
{
    type_field_offsets::const_iterator found = type_field_offset_table.find(a_type_field_pair);
    if (found == type_field_offset_table.end()) {
        misc::traceOut() << "NOT FOUND!! -" << a_type_field_pair << "=" << '\n';
        return -1;
    }
    return found->second;
}

const char* dwarf_debug::getSourceName(const char* a_memory_name) const
{
    t_members::const_iterator found = m_members.findKeyObject(a_memory_name);
    return found == m_members.end() ? nullptr : found->second.m_target.c_str();
}
