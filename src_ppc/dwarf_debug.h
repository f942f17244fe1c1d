// Reader of the executable's debugging information (a big-endian 32-bit ELF
// file whose ".debug" section holds DWARF version 1 entries), and the mapping
// of the node's parameter structure onto memory names of both sides. An
// executable without ".debug" but with ".debug_info" (DWARF 2 to 5) has its
// structure read by the modern reader (dwarf_modern.h), which reports its
// cells back here: one mapping, whichever format described the structure.
//
// Entry pointers are char* into the ".debug" table. Every read through them
// is bounded by the table: bytes that do not describe what the reader needs
// end the run with a message, never with a read outside the table.
#ifndef VELCOR_SRC_PPC_DWARF_DEBUG_H
#define VELCOR_SRC_PPC_DWARF_DEBUG_H

#include <elf.h>

#include <cstddef>
#include <cstdint>
#include <istream>
#include <set>
#include <string>
#include <vector>

#include "dwarf_modern.h"
#include "misc/hash_map.h"

class Transition;

// DWARF version 1 codes (revision 1.0.1).

enum dwarf_tag {
    TAG_padding = 0x0000,
    TAG_array_type = 0x0001,
    TAG_class_type = 0x0002,
    TAG_entry_point = 0x0003,
    TAG_enumeration_type = 0x0004,
    TAG_formal_parameter = 0x0005,
    TAG_global_subroutine = 0x0006,
    TAG_global_variable = 0x0007,
    TAG_label = 0x000a,
    TAG_lexical_block = 0x000b,
    TAG_local_variable = 0x000c,
    TAG_member = 0x000d,
    TAG_pointer_type = 0x000f,
    TAG_reference_type = 0x0010,
    TAG_compile_unit = 0x0011,
    TAG_string_type = 0x0012,
    TAG_structure_type = 0x0013,
    TAG_subroutine = 0x0014,
    TAG_subroutine_type = 0x0015,
    TAG_typedef = 0x0016,
    TAG_union_type = 0x0017,
    TAG_unspecified_parameters = 0x0018,
    TAG_variant = 0x0019,
    TAG_common_block = 0x001a,
    TAG_common_inclusion = 0x001b,
    TAG_inheritance = 0x001c,
    TAG_inlined_subroutine = 0x001d,
    TAG_module = 0x001e,
    TAG_ptr_to_member_type = 0x001f,
    TAG_set_type = 0x0020,
    TAG_subrange_type = 0x0021,
    TAG_with_stmt = 0x0022,
    TAG_lo_user = 0x8000,
    TAG_hi_user = 0xffff
};

enum dwarf_form {
    FORM_ADDR = 0x1,
    FORM_REF = 0x2,
    FORM_BLOCK2 = 0x3,
    FORM_BLOCK4 = 0x4,
    FORM_DATA2 = 0x5,
    FORM_DATA4 = 0x6,
    FORM_DATA8 = 0x7,
    FORM_STRING = 0x8
};

// An attribute code is its base value with the form in the low four bits.
enum dwarf_attribute {
    AT_sibling = 0x0010 | FORM_REF,
    AT_location = 0x0020 | FORM_BLOCK2,
    AT_name = 0x0030 | FORM_STRING,
    AT_fund_type = 0x0050 | FORM_DATA2,
    AT_mod_fund_type = 0x0060 | FORM_BLOCK2,
    AT_user_def_type = 0x0070 | FORM_REF,
    AT_mod_u_d_type = 0x0080 | FORM_BLOCK2,
    AT_ordering = 0x0090 | FORM_DATA2,
    AT_subscr_data = 0x00a0 | FORM_BLOCK2,
    AT_byte_size = 0x00b0 | FORM_DATA4,
    AT_bit_offset = 0x00c0 | FORM_DATA2,
    AT_bit_size = 0x00d0 | FORM_DATA4,
    AT_element_list = 0x00f0 | FORM_BLOCK4,
    AT_stmt_list = 0x0100 | FORM_DATA4,
    AT_low_pc = 0x0110 | FORM_ADDR,
    AT_high_pc = 0x0120 | FORM_ADDR,
    AT_language = 0x0130 | FORM_DATA4,
    AT_member = 0x0140 | FORM_REF,
    AT_discr = 0x0150 | FORM_REF,
    AT_discr_value = 0x0160 | FORM_BLOCK2,
    AT_string_length = 0x0190 | FORM_BLOCK2,
    AT_common_reference = 0x01a0 | FORM_REF,
    AT_comp_dir = 0x01b0 | FORM_STRING,
    AT_const_value_string = 0x01c0 | FORM_STRING,
    AT_const_value_data2 = 0x01c0 | FORM_DATA2,
    AT_const_value_data4 = 0x01c0 | FORM_DATA4,
    AT_const_value_data8 = 0x01c0 | FORM_DATA8,
    AT_const_value_block2 = 0x01c0 | FORM_BLOCK2,
    AT_const_value_block4 = 0x01c0 | FORM_BLOCK4,
    AT_containing_type = 0x01d0 | FORM_REF,
    AT_default_value_addr = 0x01e0 | FORM_ADDR,
    AT_default_value_data2 = 0x01e0 | FORM_DATA2,
    AT_default_value_data4 = 0x01e0 | FORM_DATA4,
    AT_default_value_data8 = 0x01e0 | FORM_DATA8,
    AT_default_value_string = 0x01e0 | FORM_STRING,
    AT_friends = 0x01f0 | FORM_BLOCK2,
    AT_inline = 0x0200 | FORM_STRING,
    AT_is_optional = 0x0210 | FORM_STRING,
    AT_lower_bound_ref = 0x0220 | FORM_REF,
    AT_lower_bound_data2 = 0x0220 | FORM_DATA2,
    AT_lower_bound_data4 = 0x0220 | FORM_DATA4,
    AT_lower_bound_data8 = 0x0220 | FORM_DATA8,
    AT_program = 0x0230 | FORM_STRING,
    AT_private = 0x0240 | FORM_STRING,
    AT_producer = 0x0250 | FORM_STRING,
    AT_protected = 0x0260 | FORM_STRING,
    AT_prototyped = 0x0270 | FORM_STRING,
    AT_public = 0x0280 | FORM_STRING,
    AT_pure_virtual = 0x0290 | FORM_STRING,
    AT_return_addr = 0x02a0 | FORM_BLOCK2,
    AT_abstract_origin = 0x02b0 | FORM_REF,
    AT_start_scope = 0x02c0 | FORM_DATA4,
    AT_stride_size = 0x02e0 | FORM_DATA4,
    AT_upper_bound_ref = 0x02f0 | FORM_REF,
    AT_upper_bound_data2 = 0x02f0 | FORM_DATA2,
    AT_upper_bound_data4 = 0x02f0 | FORM_DATA4,
    AT_upper_bound_data8 = 0x02f0 | FORM_DATA8,
    AT_virtual = 0x0300 | FORM_STRING,
    AT_lo_user = 0x2000,
    AT_hi_user = 0x3ff0
};

enum dwarf_location_atom {
    OP_REG = 0x01,
    OP_BASEREG = 0x02,
    OP_ADDR = 0x03,
    OP_CONST = 0x04,
    OP_DEREF2 = 0x05,
    OP_DEREF4 = 0x06,
    OP_ADD = 0x07,
    OP_LO_USER = 0x80,
    OP_HI_USER = 0xff
};

enum dwarf_fundamental_type {
    FT_char = 0x0001,
    FT_signed_char = 0x0002,
    FT_unsigned_char = 0x0003,
    FT_short = 0x0004,
    FT_signed_short = 0x0005,
    FT_unsigned_short = 0x0006,
    FT_integer = 0x0007,
    FT_signed_integer = 0x0008,
    FT_unsigned_integer = 0x0009,
    FT_long = 0x000a,
    FT_signed_long = 0x000b,
    FT_unsigned_long = 0x000c,
    FT_pointer = 0x000d,
    FT_float = 0x000e,
    FT_dbl_prec_float = 0x000f,
    FT_ext_prec_float = 0x0010,
    FT_complex = 0x0011,
    FT_dbl_prec_complex = 0x0012,
    FT_void = 0x0014,
    FT_boolean = 0x0015,
    FT_ext_prec_complex = 0x0016,
    FT_label = 0x0017,
    FT_lo_user = 0x8000,
    FT_hi_user = 0xffff
};

enum dwarf_type_modifier {
    MOD_pointer_to = 0x01,
    MOD_reference_to = 0x02,
    MOD_const = 0x03,
    MOD_volatile = 0x04,
    MOD_lo_user = 0x80,
    MOD_hi_user = 0xff
};

enum dwarf_array_dim_ordering { ORD_row_major = 0, ORD_col_major = 1 };

enum dwarf_subscr_data_formats {
    FMT_FT_C_C = 0x0,
    FMT_FT_C_X = 0x1,
    FMT_FT_X_C = 0x2,
    FMT_FT_X_X = 0x3,
    FMT_UT_C_C = 0x4,
    FMT_UT_C_X = 0x5,
    FMT_UT_X_C = 0x6,
    FMT_UT_X_X = 0x7,
    FMT_ET = 0x8
};

enum dwarf_source_language {
    LANG_C89 = 0x0001,
    LANG_C = 0x0002,
    LANG_ADA83 = 0x0003,
    LANG_C_PLUS_PLUS = 0x0004,
    LANG_COBOL74 = 0x0005,
    LANG_COBOL85 = 0x0006,
    LANG_FORTRAN77 = 0x0007,
    LANG_FORTRAN90 = 0x0008,
    LANG_PASCAL83 = 0x0009,
    LANG_MODULA2 = 0x000a,
    LANG_lo_user = 0x8000,
    LANG_hi_user = 0xffff
};

enum dwarf_macinfo_record_type {
    MACINFO_start = 's',
    MACINFO_resume = 'r',
    MACINFO_define = 'd',
    MACINFO_undef = 'u'
};

// One mapped cell: its target-side memory name and the number of bytes it
// holds (0 when the debugging information does not tell).
struct MemberCell {
    std::string m_target;
    unsigned m_byte_size = 0;
};

// Source-side memory name -> its cell. Keys compare by identity: every
// insertion adds a pair, even for an equal text.
using t_members = misc::StringHashMap<MemberCell>;
// Structure address pairs (source name -> target name).
using t_struct_asserts = misc::StringHashMap<std::string>;
// "structure#member" -> byte offset of the member.
using type_field_offsets = misc::StringHashMap<int>;

class dwarf_debug : private StructureSink {
public:
    // Bounds of the structure walk. The walk recurses once per nested type,
    // a few frames a level: 10000 levels fit the run's stack many times
    // over. A file of a few kilobytes can describe types whose expansion is
    // exponential in the nesting depth: the number of cells is bounded too.
    static constexpr int MAX_TYPE_DEPTH = 10000;
    static constexpr std::size_t MAX_MEMBER_PAIRS = 100000;
    // Members, array elements and types a walk of modern entries visits:
    // arrays of empty structures, say, add no cell however long they are.
    static constexpr std::size_t MAX_WALK_STEPS = 10 * MAX_MEMBER_PAIRS;

    // Bytes of a DWARF 1 fundamental type on the target; 0 for void, labels
    // and codes of no standard meaning.
    static unsigned fundamentalTypeSize(unsigned a_code);

    dwarf_debug();

    // ELF access. Reads the ELF header, the section table, the section-name
    // table and the ".debug" section; a_path names the file in messages.
    // Without ".debug" but with ".debug_info" it keeps the whole file for
    // the modern reader.
    void readDwarf(std::istream& a_exe_file, const char* a_path);
    void readDwarf(std::istream& a_exe_file);
    int getDwarfSize() const { return m_size; }
    void setDwarfSize(int a_size);

    const Elf32_Ehdr& getHeader() const { return header; }
    const std::vector<Elf32_Shdr>& getSectionHeaders() const { return section_header; }
    int getDebugSectionIndex() const { return debug_section_index; }
    // Whether the structure comes from DWARF 2 to 5 entries.
    bool hasModernDebugInfo() const { return m_modern; }
    const std::vector<char>& getStringTable() const { return strtable; }

    // Entries.
    char* getFirstEntry();
    unsigned int getSize(char* a_entry);
    dwarf_tag getTag(char* a_pointer);
    // The name that the usual layout puts at offset 14 (after the length,
    // the tag, AT_sibling and the AT_name code); for another layout the
    // AT_name attribute, and "" for an entry without a name.
    char* getEntryName(char* a_pointer);
    // The entry that physically follows, or null when that one is a null
    // entry (length 4 or less) or the table ends.
    char* getKid(char* a_pointer);
    // The entry AT_sibling refers to; null when that lies past the table.
    char* getSibling(char* a_pointer);
    // The address of the value of attribute a_att_field (whole code, form
    // included) in the entry, or null.
    char* checkAttribute(dwarf_attribute a_att_field, char* a_pointer);
    // Size of the value at a_attp of an attribute with code a_attr; -1 for a
    // form outside 1 to 8.
    int attributeSize(char* a_attp, unsigned int a_attr);
    unsigned int getAttributeValueI(dwarf_attribute a_att_field, char* a_pointer);
    char* getAttributeValueS(dwarf_attribute a_att_field, char* a_pointer);
    // The type offset of a plain pointer to a user-defined type.
    unsigned int getAttributeValueT(dwarf_attribute a_att_field, char* a_pointer);
    // The operand of the first atom of AT_location.
    unsigned long getLoc(char* a_pointer);
    // Top-level walk from a_entry (the first entry when null).
    char* getCompilationUnit(char* a_entry, const char* a_name);
    // Walk over siblings from a_entry (the first entry when null).
    char* getGlobalSubroutine(char* a_entry, const char* a_name);
    // True when a_att lies at or beyond the end of the entry.
    bool checkIn(char* a_pointer, char* a_att);
    char* getRegister(const char* a_name);

    // Source variable mapping.
    // a_name is not used.
    void outMembers(const char* a_name, const char* a_function_name, const char* a_compilation_unit);
    void recursive_outMembers(char* a_entry, const char* a_struct_name, const char* a_var_c_name,
                              const char* a_var_a_name, bool a_pointer);
    // Preservation assertions of the mapped cells a_transition does not write.
    void addVars(Transition* a_transition);
    // The mapping assertions.
    void print();
    void printStructAsserts();
    // Offset of the member under "structure#member"; -1 when unknown.
    int getOffset(const char* a_type_field_pair);
    // The target name paired with the very key text a_memory_name (a key
    // handed out by iterating getMembers()); null when there is none.
    const char* getSourceName(const char* a_memory_name) const;

    const t_members& getMembers() const { return m_members; }
    const t_struct_asserts& getStructAsserts() const { return struct_assert_table; }
    const type_field_offsets& getTypeFieldOffsets() const { return type_field_offset_table; }

    // Forgets everything read (a new run).
    void clear();

private:
    std::size_t offsetOf(const char* a_pointer) const;
    char* at(std::size_t a_offset) { return m_debug_table.data() + a_offset; }
    bool fits(std::size_t a_offset, std::size_t a_count) const
    {
        return a_offset <= std::size_t(m_size) && a_count <= std::size_t(m_size) - a_offset;
    }
    std::uint32_t wordAt(std::size_t a_offset) const;
    std::uint16_t halfAt(std::size_t a_offset) const;
    // End offset of the entry at a_offset, which must lie wholly in the table.
    std::size_t entryEnd(std::size_t a_offset) const;
    // The entry at a_offset must be whole and hold a tag.
    void requireEntry(std::size_t a_offset) const;
    bool isWholeEntry(std::size_t a_offset) const;
    // Size of the value at a_offset of an attribute a_code, which must end
    // by a_end; -1 for an unknown form.
    long valueSize(std::size_t a_offset, unsigned int a_code, std::size_t a_end) const;
    // The same, with a value that does not fit reported in a_corrupt.
    long valueSize(std::size_t a_offset, unsigned int a_code, std::size_t a_end, bool& a_corrupt) const;
    // Reads the attributes of the entry at a_offset into m_scanned.
    void scanAttributes(std::size_t a_offset);
    // Forgets m_scanned (the table or its size changed).
    void forgetScannedEntry() { m_scanned.m_offset = NO_ENTRY; }
    std::size_t siblingOffset(std::size_t a_offset);
    [[noreturn]] void corrupt() const;

    void outDwarf1Members(const char* a_function_name, const char* a_compilation_unit);
    void readExactly(std::istream& a_file, std::uint64_t a_offset, void* a_buffer, std::size_t a_count,
                     std::uint64_t a_file_size) const;
    void walkMembers(std::size_t a_first, const char* a_struct_name, const char* a_var_c_name,
                     const char* a_var_a_name, bool a_pointer);
    void mapMember(char* a_entry, const char* a_struct_name, const char* a_var_c_name, const char* a_var_a_name,
                   bool a_pointer);
    // Follows a type reference, unless that type is already being expanded
    // on the current path.
    void descend(std::uint32_t a_target, const char* a_struct_name, const std::string& a_var_c_name,
                 const std::string& a_var_a_name, bool a_pointer);
    std::size_t referencedEntry(std::uint32_t a_offset) const;
    // The size of a member or typedef of fundamental type, plain or with
    // modifiers (pointers take 4 bytes).
    unsigned fundamentalSize(char* a_entry);

    // The one way into the mapping, for both walks.
    void insertPair(const std::string& a_var_c_name, const std::string& a_var_a_name, unsigned a_byte_size) override;
    void recordMemberOffset(const char* a_struct_name, const char* a_member_name, std::int32_t a_offset) override;

    Elf32_Ehdr header;
    std::vector<Elf32_Shdr> section_header;
    int debug_section_index = 0;
    std::vector<char> strtable;
    // The ".debug" bytes and one NUL after them, so that no string read from
    // the table can run past it.
    std::vector<char> m_debug_table;
    t_members m_members;
    t_struct_asserts struct_assert_table;
    type_field_offsets type_field_offset_table;
    int m_size = 0;

    // The whole file, for the modern reader.
    bool m_modern = false;
    std::vector<char> m_image;

    std::string m_path;
    std::set<std::size_t> m_expanding;
    int m_depth = 0;

    // The attributes of the entry checkAttribute read last, in their order,
    // up to the first that cannot be read: the mapping asks one member for
    // four or five attributes in turn, and each question read them all.
    static constexpr std::size_t NO_ENTRY = static_cast<std::size_t>(-1);
    struct ScannedEntry {
        enum Failure { NONE, CORRUPT, UNKNOWN_FORM };
        std::size_t m_offset = NO_ENTRY;
        std::vector<std::pair<unsigned int, std::size_t>> m_attributes; // code, offset of the value
        Failure m_failure = NONE;
    };
    ScannedEntry m_scanned;
    // The key of recordMemberOffset, kept to spare an allocation a member.
    std::string m_offset_key;
};

extern dwarf_debug dwarf_debug_o;

#endif
