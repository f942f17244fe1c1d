// The executable's image: a 32-bit big-endian PowerPC ELF file held in
// memory and read through libelf. It answers where things are: the function
// symbol of a name, the function symbol that holds an address, the section
// that holds an address range and its bytes, and whether that section is
// read-only (the code, and the constants and jump tables that code reads).
#ifndef VELCOR_SRC_PPC_ELF_IMAGE_H
#define VELCOR_SRC_PPC_ELF_IMAGE_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "constant_memory.h"

struct Elf;

class ElfImage : public ConstantMemory {
public:
    struct Symbol {
        std::string m_name;
        std::uint32_t m_address = 0;
        std::uint32_t m_size = 0;
        std::size_t m_section = 0; // the index of the section that holds it
        bool m_global = false;     // global or weak binding
    };

    // Bytes of a section that has contents in the file.
    struct Bytes {
        const unsigned char* m_data = nullptr;
        std::size_t m_size = 0;
    };

    // Whether a file whose first bytes are a_start is an ELF file.
    static bool startsLikeElf(const std::vector<unsigned char>& a_start);

    // The image of the file whose bytes are a_bytes, named a_path in
    // messages; null with the reason in a_problem when they are not a
    // 32-bit big-endian PowerPC executable or shared object that libelf can
    // read whole.
    static std::unique_ptr<ElfImage> fromBytes(std::vector<unsigned char> a_bytes, const std::string& a_path,
                                               std::string& a_problem);
    // The same for the rest of the open stream a_file, after the bytes of
    // a_start that were already read from it.
    static std::unique_ptr<ElfImage> fromStream(FILE* a_file, std::vector<unsigned char> a_start,
                                                const std::string& a_path, std::string& a_problem);
    ~ElfImage() override;
    ElfImage(const ElfImage&) = delete;
    ElfImage& operator=(const ElfImage&) = delete;

    const std::string& path() const { return m_path; }

    // The defined function symbols named a_name, global (or weak) ones
    // first.
    std::vector<const Symbol*> functionsNamed(const std::string& a_name) const;
    // The defined function symbol that starts at a_address or holds it
    // (a global one before others), or null.
    const Symbol* functionHolding(std::uint32_t a_address) const;

    // The bytes from a_address to a_address + a_size when section
    // a_section holds all of them; m_data is null otherwise (no such
    // section, a section without contents, a range outside it). a_problem
    // is set when libelf cannot read the section's contents.
    Bytes sectionBytes(std::size_t a_section, std::uint32_t a_address, std::uint32_t a_size,
                       std::string& a_problem) const;
    // The bytes from a_address to a_address + a_size when they lie in one
    // loaded section that the program cannot write (or, in an executable
    // linked at fixed addresses, in its global offset table .got or .got2);
    // m_data is null otherwise.
    Bytes readOnlyBytes(std::uint32_t a_address, std::uint32_t a_size) const;
    // One of those bytes.
    bool readByte(std::uint32_t a_address, std::uint8_t& a_byte) const override;
    // The defined data object symbol that holds a_address.
    bool objectHolding(std::uint32_t a_address, std::uint32_t& a_start, std::uint32_t& a_size) const override;

private:
    struct Section {
        std::uint32_t m_type = 0;
        std::uint32_t m_flags = 0;
        std::uint32_t m_address = 0;
        std::uint32_t m_size = 0;
        std::string m_name;
    };

    ElfImage(std::vector<unsigned char> a_bytes, const std::string& a_path);
    bool isConstant(const Section& a_section) const;
    bool read(std::string& a_problem);
    bool readSymbols(std::size_t a_table, std::string& a_problem);

    std::vector<unsigned char> m_bytes;
    std::string m_path;
    Elf* m_elf = nullptr;
    bool m_fixed_addresses = false; // ET_EXEC, not a position-independent one
    std::vector<Section> m_sections;
    // Defined function symbols, sorted by address (symbol-table order among
    // equal addresses).
    std::vector<Symbol> m_functions;
    // Defined data object symbols of a size, sorted by address.
    std::vector<Symbol> m_objects;
};

#endif
