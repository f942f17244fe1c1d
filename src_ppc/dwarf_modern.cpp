#include "dwarf_modern.h"

#include <dwarf.h>
#include <elf.h>
#include <elfutils/libdw.h>
#include <libelf.h>

#include <cstring>
#include <utility>

#include "dwarf_entries.h"
#include "misc/stop.h"
#include "misc/trace.h"
#include "structure_walk.h"
#include "swap.h"

namespace {

constexpr std::size_t EHDR_SIZE = 52;
constexpr std::size_t SHDR_SIZE = 40;
constexpr std::size_t PHDR_SIZE = 32;
constexpr std::size_t CHDR_SIZE = 12;
// libdw inflates a compressed section whole: none may grow past this.
constexpr std::uint64_t MAX_INFLATED_SIZE = std::uint64_t(64) << 20;

const char* lastPathComponent(const char* a_path)
{
    const char* slash = std::strrchr(a_path, '/');
    return slash ? slash + 1 : a_path;
}

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
    EntryReader(m_path).malformed(a_reason);
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
