#include "elf_image.h"

#include <gelf.h>
#include <libelf.h>

#include <algorithm>

namespace {

const char* const NOT_POWERPC = "not a 32-bit big-endian PowerPC executable";

const char* const PAST_THE_END = "truncated or corrupt executable (a part lies past the end of the file)";

std::string libelfProblem()
{
    const char* message = elf_errmsg(-1);
    return std::string("truncated or corrupt executable (") + (message ? message : "unknown libelf error") + ")";
}

bool holds(std::uint32_t a_start, std::uint32_t a_size, std::uint32_t a_address, std::uint32_t a_length)
{
    return a_address >= a_start && std::uint64_t(a_address) + a_length <= std::uint64_t(a_start) + a_size;
}

} // namespace

bool ElfImage::startsLikeElf(const std::vector<unsigned char>& a_start)
{
    return a_start.size() >= SELFMAG && std::equal(a_start.begin(), a_start.begin() + SELFMAG, ELFMAG);
}

std::unique_ptr<ElfImage> ElfImage::fromBytes(std::vector<unsigned char> a_bytes, const std::string& a_path,
                                              std::string& a_problem)
{
    std::unique_ptr<ElfImage> image(new ElfImage(std::move(a_bytes), a_path));
    if (!image->read(a_problem))
        return nullptr;
    return image;
}

std::unique_ptr<ElfImage> ElfImage::fromStream(FILE* a_file, std::vector<unsigned char> a_start,
                                               const std::string& a_path, std::string& a_problem)
{
    unsigned char buffer[65536];
    std::size_t count;
    while ((count = std::fread(buffer, 1, sizeof buffer, a_file)) > 0)
        a_start.insert(a_start.end(), buffer, buffer + count);
    if (std::ferror(a_file)) {
        a_problem = "cannot be read";
        return nullptr;
    }
    return fromBytes(std::move(a_start), a_path, a_problem);
}

ElfImage::ElfImage(std::vector<unsigned char> a_bytes, const std::string& a_path)
    : m_bytes(std::move(a_bytes)), m_path(a_path)
{
}

ElfImage::~ElfImage()
{
    if (m_elf)
        elf_end(m_elf);
}

bool ElfImage::read(std::string& a_problem)
{
    // The identification is checked before libelf sees the file, so that
    // any other class or byte order gets the same answer.
    if (!startsLikeElf(m_bytes) || m_bytes.size() < EI_NIDENT || m_bytes[EI_CLASS] != ELFCLASS32 ||
        m_bytes[EI_DATA] != ELFDATA2MSB) {
        a_problem = NOT_POWERPC;
        return false;
    }
    elf_version(EV_CURRENT);
    m_elf = elf_memory(reinterpret_cast<char*>(m_bytes.data()), m_bytes.size());
    if (!m_elf || elf_kind(m_elf) != ELF_K_ELF) {
        a_problem = libelfProblem();
        return false;
    }
    const Elf32_Ehdr* header = elf32_getehdr(m_elf);
    if (!header) {
        a_problem = libelfProblem();
        return false;
    }
    if (header->e_machine != EM_PPC) {
        a_problem = NOT_POWERPC;
        return false;
    }
    if (header->e_type != ET_EXEC && header->e_type != ET_DYN) {
        // A relocatable object has neither addresses nor resolved calls.
        a_problem = "not an executable (link the object first)";
        return false;
    }
    m_fixed_addresses = header->e_type == ET_EXEC;
    std::size_t count = 0;
    if (elf_getshdrnum(m_elf, &count) != 0) {
        a_problem = libelfProblem();
        return false;
    }
    // libelf takes a section table cut by the end of the file for no table
    // at all; the table, and every section, must be there whole. (With
    // more sections than e_shnum can hold, the count is in section 0.)
    const std::uint64_t listed =
        header->e_shoff ? std::max<std::uint64_t>(header->e_shnum, std::max<std::size_t>(count, 1)) : 0;
    if (std::uint64_t(header->e_shoff) + listed * sizeof(Elf32_Shdr) > m_bytes.size()) {
        a_problem = PAST_THE_END;
        return false;
    }
    m_sections.resize(count);
    std::size_t symbol_table = 0;
    std::size_t dynamic_table = 0;
    std::size_t names = 0;
    const bool have_names = elf_getshdrstrndx(m_elf, &names) == 0;
    for (std::size_t i = 1; i < count; ++i) {
        Elf_Scn* scn = elf_getscn(m_elf, i);
        const Elf32_Shdr* section = scn ? elf32_getshdr(scn) : nullptr;
        if (!section) {
            a_problem = libelfProblem();
            return false;
        }
        if (section->sh_type != SHT_NOBITS && std::uint64_t(section->sh_offset) + section->sh_size > m_bytes.size()) {
            a_problem = PAST_THE_END;
            return false;
        }
        m_sections[i] = {section->sh_type, section->sh_flags, section->sh_addr, section->sh_size, std::string()};
        const char* name = have_names ? elf_strptr(m_elf, names, section->sh_name) : nullptr;
        if (name)
            m_sections[i].m_name = name;
        if (section->sh_type == SHT_SYMTAB && !symbol_table)
            symbol_table = i;
        if (section->sh_type == SHT_DYNSYM && !dynamic_table)
            dynamic_table = i;
    }
    // A stripped executable keeps only its dynamic symbols.
    std::size_t table = symbol_table ? symbol_table : dynamic_table;
    if (table && !readSymbols(table, a_problem))
        return false;
    return true;
}

bool ElfImage::readSymbols(std::size_t a_table, std::string& a_problem)
{
    Elf_Scn* scn = elf_getscn(m_elf, a_table);
    const Elf32_Shdr* header = elf32_getshdr(scn);
    Elf_Data* data = elf_getdata(scn, nullptr);
    if (!data || (data->d_size && !data->d_buf)) {
        a_problem = libelfProblem();
        return false;
    }
    const std::size_t count = data->d_size / sizeof(Elf32_Sym);
    const Elf32_Sym* symbols = static_cast<const Elf32_Sym*>(data->d_buf);
    std::vector<Symbol> globals, others;
    for (std::size_t i = 0; i < count; ++i) {
        const Elf32_Sym& symbol = symbols[i];
        if (ELF32_ST_TYPE(symbol.st_info) == STT_OBJECT && symbol.st_shndx != SHN_UNDEF && symbol.st_size > 0) {
            Symbol object;
            object.m_address = symbol.st_value;
            object.m_size = symbol.st_size;
            m_objects.push_back(object);
            continue;
        }
        if (ELF32_ST_TYPE(symbol.st_info) != STT_FUNC || symbol.st_shndx == SHN_UNDEF)
            continue;
        const char* name = elf_strptr(m_elf, header->sh_link, symbol.st_name);
        if (!name || !*name)
            continue;
        const unsigned binding = ELF32_ST_BIND(symbol.st_info);
        Symbol entry;
        entry.m_name = name;
        entry.m_address = symbol.st_value;
        entry.m_size = symbol.st_size;
        // Symbols of no ordinary section (absolute, common, extended
        // numbering) are held by none.
        entry.m_section = symbol.st_shndx < SHN_LORESERVE ? symbol.st_shndx : 0;
        entry.m_global = binding == STB_GLOBAL || binding == STB_WEAK;
        (entry.m_global ? globals : others).push_back(entry);
    }
    std::sort(m_objects.begin(), m_objects.end(),
              [](const Symbol& a_left, const Symbol& a_right) { return a_left.m_address < a_right.m_address; });
    m_functions = std::move(globals);
    m_functions.insert(m_functions.end(), others.begin(), others.end());
    std::stable_sort(m_functions.begin(), m_functions.end(),
                     [](const Symbol& a_left, const Symbol& a_right) { return a_left.m_address < a_right.m_address; });
    return true;
}

std::vector<const ElfImage::Symbol*> ElfImage::functionsNamed(const std::string& a_name) const
{
    std::vector<const Symbol*> found;
    for (const Symbol& symbol : m_functions)
        if (symbol.m_name == a_name)
            found.push_back(&symbol);
    std::stable_sort(found.begin(), found.end(), [](const Symbol* a_left, const Symbol* a_right) {
        return a_left->m_global && !a_right->m_global;
    });
    return found;
}

const ElfImage::Symbol* ElfImage::functionHolding(std::uint32_t a_address) const
{
    // The symbols at the greatest address not above a_address.
    auto after =
        std::upper_bound(m_functions.begin(), m_functions.end(), a_address,
                         [](std::uint32_t a_value, const Symbol& a_symbol) { return a_value < a_symbol.m_address; });
    if (after == m_functions.begin())
        return nullptr;
    const std::uint32_t start = std::prev(after)->m_address;
    const Symbol* best = nullptr;
    for (auto it = std::prev(after);; --it) {
        if (it->m_address != start)
            break;
        bool holds_address = a_address == start || a_address - start < it->m_size;
        if (holds_address && (!best || (it->m_global && !best->m_global)))
            best = &*it;
        if (it == m_functions.begin())
            break;
    }
    return best;
}

ElfImage::Bytes ElfImage::sectionBytes(std::size_t a_section, std::uint32_t a_address, std::uint32_t a_size,
                                       std::string& a_problem) const
{
    Bytes bytes;
    if (a_section == 0 || a_section >= m_sections.size())
        return bytes;
    const Section& section = m_sections[a_section];
    if (section.m_type == SHT_NOBITS || !holds(section.m_address, section.m_size, a_address, a_size))
        return bytes;
    Elf_Data* data = elf_getdata(elf_getscn(m_elf, a_section), nullptr);
    if (!data || (data->d_size && !data->d_buf)) {
        a_problem = libelfProblem();
        return bytes;
    }
    const std::uint32_t offset = a_address - section.m_address;
    if (std::uint64_t(offset) + a_size > data->d_size) {
        a_problem = "truncated or corrupt executable (section contents shorter than the section)";
        return bytes;
    }
    bytes.m_data = static_cast<const unsigned char*>(data->d_buf) + offset;
    bytes.m_size = a_size;
    return bytes;
}

bool ElfImage::isConstant(const Section& a_section) const
{
    if (!(a_section.m_flags & SHF_ALLOC) || a_section.m_type == SHT_NOBITS)
        return false;
    if (!(a_section.m_flags & SHF_WRITE))
        return true;
    // The global offset tables of an executable linked at fixed addresses
    // hold what the linker put there: no loader relocates them, and the
    // code only reads them.
    return m_fixed_addresses && (a_section.m_name == ".got" || a_section.m_name == ".got2");
}

bool ElfImage::objectHolding(std::uint32_t a_address, std::uint32_t& a_start, std::uint32_t& a_size) const
{
    auto after =
        std::upper_bound(m_objects.begin(), m_objects.end(), a_address,
                         [](std::uint32_t a_value, const Symbol& a_symbol) { return a_value < a_symbol.m_address; });
    // Objects may overlap (aliases): the nearest one that starts below and
    // reaches a_address.
    for (auto it = after; it != m_objects.begin();) {
        --it;
        if (a_address - it->m_address < it->m_size) {
            a_start = it->m_address;
            a_size = it->m_size;
            return true;
        }
        if (a_address - it->m_address >= 0x100000u)
            break;
    }
    return false;
}

bool ElfImage::readByte(std::uint32_t a_address, std::uint8_t& a_byte) const
{
    Bytes bytes = readOnlyBytes(a_address, 1);
    if (!bytes.m_data)
        return false;
    a_byte = bytes.m_data[0];
    return true;
}

ElfImage::Bytes ElfImage::readOnlyBytes(std::uint32_t a_address, std::uint32_t a_size) const
{
    for (std::size_t i = 1; i < m_sections.size(); ++i) {
        const Section& section = m_sections[i];
        if (!isConstant(section) || !holds(section.m_address, section.m_size, a_address, a_size))
            continue;
        std::string problem;
        return sectionBytes(i, a_address, a_size, problem);
    }
    return Bytes();
}
