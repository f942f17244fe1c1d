// Test-executable builder: turns a small text description into a 32-bit
// big-endian PowerPC ELF file whose ".debug" section holds DWARF version 1
// entries, laid out as the compilers of such executables lay them out:
// AT_sibling first, AT_name second, a null entry after each list of
// children, and each sibling reference pointing at the entry after the last
// descendant. It can also write the broken files that a reader must survive.
// Used by the mkdwarf command and, directly, by the unit tests.
//
// Description format: one item a line, blanks between words, "#" starts a
// comment. Numbers are decimal or 0x-hexadecimal; HEX is a run of hex digits
// (blanks allowed between bytes, "-" for none).
//
//   ELF file (anywhere at the outer level):
//     elf class N         identification class byte (1: 32-bit, 2: 64-bit)
//     elf data N          identification data byte (1: little-, 2: big-endian)
//     elf magic HEX       the first bytes of the file instead of 7f 45 4c 46
//     elf shoff N | elf shnum N | elf shstrndx N    header fields as given
//     elf truncate N      the file ends after N bytes
//     elf machine N | elf type N    e_machine (20) and e_type (2) as given
//     section NAME [offset N] [size N] [name N] [address N] [type N] [flags N]
//                         starts a section; the entries that follow go into
//                         it (a section without entries is empty); the
//                         options replace sh_offset, sh_size, sh_name,
//                         sh_addr, sh_type (1) and sh_flags (0). Entries
//                         before any section line go into ".debug". Code is
//                         a section of "raw" entries, for example
//                         section .text address 0x10000000 flags 6
//     symbol NAME VALUE SIZE [local | weak] [type N] [section N]
//                         an entry of the symbol table (".symtab", with its
//                         ".strtab", written when there is one): a global
//                         function (STT_FUNC) of the section declared last,
//                         unless told otherwise
//   Entries (blocks end with "end"; their children follow a null entry):
//     unit NAME                                block, TAG_compile_unit
//     subroutine NAME [returns TYPE]           block, TAG_global_subroutine
//     static-subroutine NAME [returns TYPE]    block, TAG_subroutine
//     struct NAME [size N] | union NAME [size N]   blocks
//     parameter NAME TYPE                      in register r3, r4, ...
//     variable NAME TYPE [at N]                global (OP_ADDR N) in a unit,
//                                              local (r1 + N) in a subroutine
//     typedef NAME TYPE
//     member NAME TYPE at N                    location OP_CONST N, OP_ADD
//     array NAME COUNT TYPE                    elements 0 .. COUNT-1 of TYPE
//     raw HEX                                  bytes as they are
//   TYPE: modifiers (pointer, const, volatile, reference) then a fundamental
//   type (char, signed-char, unsigned-char, short, unsigned-short, int,
//   unsigned, long, unsigned-long, float, double, void, bool) or a reference
//   to an entry of this section: struct NAME, union NAME, array NAME, or the
//   bare NAME of a typedef.
//   Any entry line (a block's first line) may end with "with" and options:
//     length N | tag N | sibling N     the field written as given
//     no-sibling | no-name             the attribute left out
//     attr CODE HEX                    one more attribute at the end
//     lead-attr CODE HEX               one more attribute before all others
#ifndef VELCOR_TOOLS_DWARF_BUILDER_H
#define VELCOR_TOOLS_DWARF_BUILDER_H

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace mkdwarf {

// A description error, with the line it was found on.
class Error : public std::runtime_error {
public:
    Error(int a_line, const std::string& a_message)
        : std::runtime_error("line " + std::to_string(a_line) + ": " + a_message) {}
};

namespace detail {

using Bytes = std::vector<unsigned char>;

inline void putHalf(Bytes& a_out, std::uint32_t a_value)
{
    a_out.push_back(static_cast<unsigned char>(a_value >> 8));
    a_out.push_back(static_cast<unsigned char>(a_value));
}

inline void putWord(Bytes& a_out, std::uint32_t a_value)
{
    putHalf(a_out, a_value >> 16);
    putHalf(a_out, a_value & 0xffff);
}

inline void setWord(Bytes& a_out, std::size_t a_at, std::uint32_t a_value)
{
    for (int i = 0; i < 4; ++i)
        a_out[a_at + i] = static_cast<unsigned char>(a_value >> (24 - 8 * i));
}

inline void setHalf(Bytes& a_out, std::size_t a_at, std::uint32_t a_value)
{
    a_out[a_at] = static_cast<unsigned char>(a_value >> 8);
    a_out[a_at + 1] = static_cast<unsigned char>(a_value);
}

// DWARF 1 codes the builder writes.
enum : std::uint32_t {
    AT_SIBLING = 0x0012,
    AT_LOCATION = 0x0023,
    AT_NAME = 0x0038,
    AT_FUND_TYPE = 0x0055,
    AT_MOD_FUND_TYPE = 0x0063,
    AT_USER_DEF_TYPE = 0x0072,
    AT_MOD_U_D_TYPE = 0x0083,
    AT_SUBSCR_DATA = 0x00a3,
    AT_BYTE_SIZE = 0x00b6,
    AT_LANGUAGE = 0x0136,
    LANG_C89 = 0x0001,
    OP_REG = 0x01,
    OP_BASEREG = 0x02,
    OP_ADDR = 0x03,
    OP_CONST = 0x04,
    OP_ADD = 0x07,
    FMT_FT_C_C = 0x0,
    FMT_ET = 0x8,
    FT_INTEGER = 0x0007
};

struct Type {
    std::vector<unsigned char> m_modifiers;
    std::uint32_t m_fundamental = 0; // 0 when the base is a reference
    std::string m_label;
};

// An attribute whose value may hold a reference to be filled in once every
// label of the section has its offset.
struct Attribute {
    std::uint32_t m_code = 0;
    Bytes m_value;
    long m_reference_at = -1; // position of the reference inside m_value
    std::string m_label;
};

struct Node {
    int m_line = 0;
    bool m_block = false;
    bool m_raw = false;
    Bytes m_raw_bytes;
    std::uint32_t m_tag = 0;
    std::string m_name;
    std::string m_label;
    std::vector<Attribute> m_attributes; // after AT_sibling and AT_name
    std::vector<Attribute> m_lead;
    std::vector<Attribute> m_extra;
    bool m_no_sibling = false;
    bool m_no_name = false;
    bool m_has_length = false;
    std::uint32_t m_length = 0;
    bool m_has_sibling = false;
    std::uint32_t m_sibling = 0;
    std::vector<std::unique_ptr<Node>> m_children;
};

struct Section {
    std::string m_name;
    bool m_has_offset = false, m_has_size = false, m_has_name = false;
    std::uint32_t m_offset = 0, m_size = 0, m_name_offset = 0;
    std::uint32_t m_type = 1, m_flags = 0, m_address = 0, m_link = 0, m_info = 0, m_entry_size = 0;
    std::vector<std::unique_ptr<Node>> m_entries;
    Bytes m_bytes;
};

class Builder {
public:
    std::string build(const std::string& a_description)
    {
        std::istringstream in(a_description);
        std::string text;
        while (std::getline(in, text)) {
            ++m_line;
            std::string::size_type comment = text.find('#');
            if (comment != std::string::npos)
                text.erase(comment);
            std::istringstream words(text);
            std::vector<std::string> tokens;
            for (std::string word; words >> word;)
                tokens.push_back(word);
            if (!tokens.empty())
                parseLine(tokens);
        }
        if (!m_open.empty())
            throw Error(m_line, "\"end\" missing for the block of line " + std::to_string(m_open.back()->m_line));
        for (Section& section : m_sections)
            layOut(section);
        addSymbolTable();
        return writeFile();
    }

private:
    [[noreturn]] void fail(const std::string& a_message) const { throw Error(m_line, a_message); }

    // Decimal, or hexadecimal after "0x"; nothing else.
    static bool parseNumber(const std::string& a_text, unsigned long long& a_value)
    {
        bool hex = a_text.size() > 2 && a_text[0] == '0' && (a_text[1] == 'x' || a_text[1] == 'X');
        std::string digits = hex ? a_text.substr(2) : a_text;
        const char* allowed = hex ? "0123456789abcdefABCDEF" : "0123456789";
        if (digits.empty() || digits.find_first_not_of(allowed) != std::string::npos)
            return false;
        try {
            a_value = std::stoull(digits, nullptr, hex ? 16 : 10);
        } catch (const std::exception&) {
            return false;
        }
        return true;
    }

    std::uint32_t number(const std::string& a_text) const
    {
        unsigned long long value = 0;
        if (!parseNumber(a_text, value))
            fail("not a number: " + a_text);
        if (value > 0xffffffffull)
            fail("number too large: " + a_text);
        return static_cast<std::uint32_t>(value);
    }

    Bytes hexBytes(std::vector<std::string>::const_iterator a_from,
                   std::vector<std::string>::const_iterator a_to) const
    {
        std::string digits;
        for (; a_from != a_to; ++a_from)
            if (*a_from != "-")
                digits += *a_from;
        if (digits.size() % 2)
            fail("odd number of hex digits: " + digits);
        Bytes bytes;
        for (std::size_t i = 0; i < digits.size(); i += 2) {
            std::string pair = digits.substr(i, 2);
            if (pair.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
                fail("not hex: " + pair);
            bytes.push_back(static_cast<unsigned char>(std::stoul(pair, nullptr, 16)));
        }
        return bytes;
    }

    Section& currentSection()
    {
        if (m_sections.empty()) {
            m_sections.emplace_back();
            m_sections.back().m_name = ".debug";
        }
        return m_sections.back();
    }

    void parseLine(const std::vector<std::string>& a_tokens)
    {
        const std::string& word = a_tokens[0];
        if (word == "elf") {
            parseElf(a_tokens);
            return;
        }
        if (word == "section") {
            parseSection(a_tokens);
            return;
        }
        if (word == "symbol") {
            parseSymbol(a_tokens);
            return;
        }
        if (word == "end") {
            if (m_open.empty())
                fail("\"end\" without a block");
            m_open.pop_back();
            return;
        }
        std::unique_ptr<Node> node(new Node);
        node->m_line = m_line;
        if (word == "raw") {
            node->m_raw = true;
            node->m_raw_bytes = hexBytes(a_tokens.begin() + 1, a_tokens.end());
        } else {
            std::vector<std::string> tokens = a_tokens;
            std::vector<std::string> options;
            for (std::size_t i = 0; i < tokens.size(); ++i) {
                if (tokens[i] == "with") {
                    options.assign(tokens.begin() + i + 1, tokens.end());
                    tokens.resize(i);
                    break;
                }
            }
            parseEntry(*node, tokens);
            parseOptions(*node, options);
        }
        Node* added = node.get();
        if (m_open.empty())
            currentSection().m_entries.push_back(std::move(node));
        else
            m_open.back()->m_children.push_back(std::move(node));
        if (added->m_block)
            m_open.push_back(added);
    }

    void parseElf(const std::vector<std::string>& a_tokens)
    {
        if (!m_open.empty())
            fail("\"elf\" inside a block");
        if (a_tokens.size() < 3)
            fail("\"elf\" needs a field and a value");
        const std::string& field = a_tokens[1];
        if (field == "magic") {
            m_magic = hexBytes(a_tokens.begin() + 2, a_tokens.end());
            m_has_magic = true;
            return;
        }
        if (a_tokens.size() != 3)
            fail("\"elf " + field + "\" takes one value");
        std::uint32_t value = number(a_tokens[2]);
        if (field == "class")
            m_class = value;
        else if (field == "data")
            m_data = value;
        else if (field == "shoff")
            m_shoff = value, m_has_shoff = true;
        else if (field == "shnum")
            m_shnum = value, m_has_shnum = true;
        else if (field == "shstrndx")
            m_shstrndx = value, m_has_shstrndx = true;
        else if (field == "truncate")
            m_truncate = value, m_has_truncate = true;
        else if (field == "machine")
            m_machine = value;
        else if (field == "type")
            m_type = value;
        else
            fail("unknown elf field: " + field);
    }

    void parseSection(const std::vector<std::string>& a_tokens)
    {
        if (!m_open.empty())
            fail("\"section\" inside a block");
        if (a_tokens.size() < 2 || a_tokens.size() % 2)
            fail("usage: section NAME [offset N] [size N] [name N] [address N] [type N] [flags N]");
        Section section;
        section.m_name = a_tokens[1];
        for (std::size_t i = 2; i < a_tokens.size(); i += 2) {
            std::uint32_t value = number(a_tokens[i + 1]);
            if (a_tokens[i] == "offset")
                section.m_offset = value, section.m_has_offset = true;
            else if (a_tokens[i] == "size")
                section.m_size = value, section.m_has_size = true;
            else if (a_tokens[i] == "name")
                section.m_name_offset = value, section.m_has_name = true;
            else if (a_tokens[i] == "address")
                section.m_address = value;
            else if (a_tokens[i] == "type")
                section.m_type = value;
            else if (a_tokens[i] == "flags")
                section.m_flags = value;
            else
                fail("unknown section option: " + a_tokens[i]);
        }
        m_sections.push_back(std::move(section));
    }

    struct Symbol {
        std::string m_name;
        std::uint32_t m_value = 0, m_size = 0, m_section = 0;
        unsigned m_binding = 1, m_type = 2; // STB_GLOBAL, STT_FUNC
    };

    void parseSymbol(const std::vector<std::string>& a_tokens)
    {
        if (!m_open.empty())
            fail("\"symbol\" inside a block");
        if (a_tokens.size() < 4)
            fail("usage: symbol NAME VALUE SIZE [local | weak] [type N] [section N]");
        Symbol symbol;
        symbol.m_name = a_tokens[1];
        symbol.m_value = number(a_tokens[2]);
        symbol.m_size = number(a_tokens[3]);
        // Section 0 is the null section.
        symbol.m_section = static_cast<std::uint32_t>(m_sections.size());
        for (std::size_t i = 4; i < a_tokens.size(); ++i) {
            if (a_tokens[i] == "local")
                symbol.m_binding = 0;
            else if (a_tokens[i] == "weak")
                symbol.m_binding = 2;
            else if (a_tokens[i] == "type" && i + 1 < a_tokens.size())
                symbol.m_type = number(a_tokens[++i]);
            else if (a_tokens[i] == "section" && i + 1 < a_tokens.size())
                symbol.m_section = number(a_tokens[++i]);
            else
                fail("unknown symbol option: " + a_tokens[i]);
        }
        m_symbols.push_back(symbol);
    }

    // ".symtab" and ".strtab" after the described sections: the null
    // symbol, the local ones, then the others.
    void addSymbolTable()
    {
        if (m_symbols.empty())
            return;
        Section table, names;
        table.m_name = ".symtab";
        table.m_type = 2; // SHT_SYMTAB
        table.m_entry_size = 16;
        table.m_link = static_cast<std::uint32_t>(m_sections.size() + 2);
        names.m_name = ".strtab";
        names.m_type = 3; // SHT_STRTAB
        names.m_bytes.push_back(0);
        table.m_bytes.assign(16, 0);
        std::stable_partition(m_symbols.begin(), m_symbols.end(), [](const Symbol& a_symbol) { return a_symbol.m_binding == 0; });
        table.m_info = 1;
        for (const Symbol& symbol : m_symbols) {
            if (symbol.m_binding == 0)
                ++table.m_info;
            putWord(table.m_bytes, static_cast<std::uint32_t>(names.m_bytes.size()));
            names.m_bytes.insert(names.m_bytes.end(), symbol.m_name.begin(), symbol.m_name.end());
            names.m_bytes.push_back(0);
            putWord(table.m_bytes, symbol.m_value);
            putWord(table.m_bytes, symbol.m_size);
            table.m_bytes.push_back(static_cast<unsigned char>(symbol.m_binding << 4 | symbol.m_type));
            table.m_bytes.push_back(0);
            putHalf(table.m_bytes, symbol.m_section);
        }
        m_sections.push_back(std::move(table));
        m_sections.push_back(std::move(names));
    }

    // Fundamental type codes by name; 0 when the word names none.
    static std::uint32_t fundamental(const std::string& a_word)
    {
        static const std::map<std::string, std::uint32_t> codes = {
            {"char", 0x0001},  {"signed-char", 0x0002}, {"unsigned-char", 0x0003}, {"short", 0x0004},
            {"unsigned-short", 0x0006}, {"int", 0x0007}, {"unsigned", 0x0009},  {"long", 0x000a},
            {"unsigned-long", 0x000c}, {"float", 0x000e}, {"double", 0x000f},  {"void", 0x0014},
            {"bool", 0x0015}};
        std::map<std::string, std::uint32_t>::const_iterator found = codes.find(a_word);
        return found == codes.end() ? 0 : found->second;
    }

    Type parseType(const std::vector<std::string>& a_words) const
    {
        static const std::map<std::string, unsigned char> modifiers = {
            {"pointer", 0x01}, {"reference", 0x02}, {"const", 0x03}, {"volatile", 0x04}};
        Type type;
        std::size_t i = 0;
        for (; i < a_words.size() && modifiers.count(a_words[i]); ++i)
            type.m_modifiers.push_back(modifiers.at(a_words[i]));
        std::size_t rest = a_words.size() - i;
        if (rest == 1 && fundamental(a_words[i]))
            type.m_fundamental = fundamental(a_words[i]);
        else if (rest == 1)
            type.m_label = a_words[i];
        else if (rest == 2 && (a_words[i] == "struct" || a_words[i] == "union" || a_words[i] == "array"))
            type.m_label = a_words[i] + " " + a_words[i + 1];
        else
            fail("not a type");
        return type;
    }

    static Attribute plain(std::uint32_t a_code, const Bytes& a_value)
    {
        Attribute attribute;
        attribute.m_code = a_code;
        attribute.m_value = a_value;
        return attribute;
    }

    // The type attribute of an entry: fundamental, user-defined, or either
    // behind modifiers.
    static Attribute typeAttribute(const Type& a_type)
    {
        Attribute attribute;
        Bytes& value = attribute.m_value;
        if (!a_type.m_modifiers.empty()) {
            attribute.m_code = a_type.m_fundamental ? AT_MOD_FUND_TYPE : AT_MOD_U_D_TYPE;
            std::size_t length = a_type.m_modifiers.size() + (a_type.m_fundamental ? 2 : 4);
            putHalf(value, static_cast<std::uint32_t>(length));
            value.insert(value.end(), a_type.m_modifiers.begin(), a_type.m_modifiers.end());
        } else {
            attribute.m_code = a_type.m_fundamental ? AT_FUND_TYPE : AT_USER_DEF_TYPE;
        }
        if (a_type.m_fundamental) {
            putHalf(value, a_type.m_fundamental);
        } else {
            attribute.m_reference_at = static_cast<long>(value.size());
            attribute.m_label = a_type.m_label;
            putWord(value, 0);
        }
        return attribute;
    }

    static Attribute location(const Bytes& a_atoms)
    {
        Bytes value;
        putHalf(value, static_cast<std::uint32_t>(a_atoms.size()));
        value.insert(value.end(), a_atoms.begin(), a_atoms.end());
        return plain(AT_LOCATION, value);
    }

    static Bytes atom(std::uint32_t a_operation, std::uint32_t a_operand)
    {
        Bytes bytes{static_cast<unsigned char>(a_operation)};
        putWord(bytes, a_operand);
        return bytes;
    }

    // Takes a_keyword and the word after it out of a_words; that word is the
    // value.
    static bool splitAt(std::vector<std::string>& a_words, const std::string& a_keyword, std::string& a_value)
    {
        for (std::size_t i = 0; i + 1 < a_words.size(); ++i) {
            if (a_words[i] == a_keyword) {
                a_value = a_words[i + 1];
                a_words.erase(a_words.begin() + i, a_words.begin() + i + 2);
                return true;
            }
        }
        return false;
    }

    Node* enclosing() const { return m_open.empty() ? nullptr : m_open.back(); }

    void parseEntry(Node& a_node, const std::vector<std::string>& a_tokens)
    {
        const std::string& kind = a_tokens[0];
        if (a_tokens.size() < 2)
            fail("\"" + kind + "\" needs a name");
        a_node.m_name = a_tokens[1];
        std::vector<std::string> rest(a_tokens.begin() + 2, a_tokens.end());
        std::string value;
        if (kind == "unit") {
            a_node.m_tag = 0x0011;
            a_node.m_block = true;
            Bytes language;
            putWord(language, LANG_C89);
            a_node.m_attributes.push_back(plain(AT_LANGUAGE, language));
        } else if (kind == "subroutine" || kind == "static-subroutine") {
            a_node.m_tag = kind == "subroutine" ? 0x0006 : 0x0014;
            a_node.m_block = true;
            if (!rest.empty()) {
                if (rest[0] != "returns")
                    fail("expected \"returns TYPE\"");
                a_node.m_attributes.push_back(typeAttribute(parseType({rest.begin() + 1, rest.end()})));
            }
        } else if (kind == "struct" || kind == "union") {
            a_node.m_tag = kind == "struct" ? 0x0013 : 0x0017;
            a_node.m_block = true;
            a_node.m_label = kind + " " + a_node.m_name;
            if (splitAt(rest, "size", value)) {
                Bytes size;
                putWord(size, number(value));
                a_node.m_attributes.push_back(plain(AT_BYTE_SIZE, size));
            }
            if (!rest.empty())
                fail("unexpected words after the name");
        } else if (kind == "parameter") {
            a_node.m_tag = 0x0005;
            Node* function = enclosing();
            std::uint32_t index = 0;
            if (function)
                for (const auto& child : function->m_children)
                    index += child->m_tag == 0x0005;
            a_node.m_attributes.push_back(typeAttribute(parseType(rest)));
            a_node.m_attributes.push_back(location(atom(OP_REG, 3 + index)));
        } else if (kind == "variable") {
            Node* scope = enclosing();
            bool local = scope && (scope->m_tag == 0x0006 || scope->m_tag == 0x0014);
            a_node.m_tag = local ? 0x000c : 0x0007;
            bool placed = splitAt(rest, "at", value);
            a_node.m_attributes.push_back(typeAttribute(parseType(rest)));
            if (placed && local) {
                Bytes atoms = atom(OP_BASEREG, 1);
                Bytes offset = atom(OP_CONST, number(value));
                atoms.insert(atoms.end(), offset.begin(), offset.end());
                atoms.push_back(OP_ADD);
                a_node.m_attributes.push_back(location(atoms));
            } else if (placed) {
                a_node.m_attributes.push_back(location(atom(OP_ADDR, number(value))));
            }
        } else if (kind == "typedef") {
            a_node.m_tag = 0x0016;
            a_node.m_label = a_node.m_name;
            a_node.m_attributes.push_back(typeAttribute(parseType(rest)));
        } else if (kind == "member") {
            a_node.m_tag = 0x000d;
            if (!splitAt(rest, "at", value))
                fail("a member needs \"at OFFSET\"");
            a_node.m_attributes.push_back(typeAttribute(parseType(rest)));
            Bytes atoms = atom(OP_CONST, number(value));
            atoms.push_back(OP_ADD);
            a_node.m_attributes.push_back(location(atoms));
        } else if (kind == "array") {
            a_node.m_tag = 0x0001;
            a_node.m_label = "array " + a_node.m_name;
            if (rest.empty())
                fail("usage: array NAME COUNT TYPE");
            std::uint32_t count = number(rest[0]);
            Attribute element = typeAttribute(parseType({rest.begin() + 1, rest.end()}));
            Bytes data{FMT_FT_C_C};
            putHalf(data, FT_INTEGER);
            putWord(data, 0);
            putWord(data, count - 1);
            data.push_back(FMT_ET);
            putHalf(data, element.m_code);
            Attribute subscripts;
            subscripts.m_code = AT_SUBSCR_DATA;
            putHalf(subscripts.m_value, static_cast<std::uint32_t>(data.size() + element.m_value.size()));
            subscripts.m_value.insert(subscripts.m_value.end(), data.begin(), data.end());
            if (element.m_reference_at >= 0) {
                subscripts.m_reference_at = static_cast<long>(subscripts.m_value.size()) + element.m_reference_at;
                subscripts.m_label = element.m_label;
            }
            subscripts.m_value.insert(subscripts.m_value.end(), element.m_value.begin(), element.m_value.end());
            a_node.m_attributes.push_back(subscripts);
        } else {
            fail("unknown entry: " + kind);
        }
    }

    void parseOptions(Node& a_node, const std::vector<std::string>& a_options)
    {
        for (std::size_t i = 0; i < a_options.size(); ++i) {
            const std::string& option = a_options[i];
            auto next = [&]() -> const std::string& {
                if (i + 1 >= a_options.size())
                    fail("option \"" + option + "\" needs a value");
                return a_options[++i];
            };
            if (option == "length") {
                a_node.m_length = number(next());
                a_node.m_has_length = true;
            } else if (option == "tag") {
                a_node.m_tag = number(next());
            } else if (option == "sibling") {
                a_node.m_sibling = number(next());
                a_node.m_has_sibling = true;
            } else if (option == "no-sibling") {
                a_node.m_no_sibling = true;
            } else if (option == "no-name") {
                a_node.m_no_name = true;
            } else if (option == "attr" || option == "lead-attr") {
                std::uint32_t code = number(next());
                next();
                Attribute attribute = plain(code, hexBytes(a_options.begin() + i, a_options.begin() + i + 1));
                (option == "attr" ? a_node.m_extra : a_node.m_lead).push_back(attribute);
            } else {
                fail("unknown option: " + option);
            }
        }
    }

    void putAttribute(Bytes& a_out, const Attribute& a_attribute)
    {
        putHalf(a_out, a_attribute.m_code);
        std::size_t start = a_out.size();
        a_out.insert(a_out.end(), a_attribute.m_value.begin(), a_attribute.m_value.end());
        if (a_attribute.m_reference_at >= 0)
            m_references.push_back({start + a_attribute.m_reference_at, a_attribute.m_label, m_node_line});
    }

    void writeEntry(Section& a_section, const Node& a_node)
    {
        Bytes& out = a_section.m_bytes;
        if (a_node.m_raw) {
            out.insert(out.end(), a_node.m_raw_bytes.begin(), a_node.m_raw_bytes.end());
            return;
        }
        m_node_line = a_node.m_line;
        std::size_t start = out.size();
        if (!a_node.m_label.empty()) {
            if (m_labels.count(a_node.m_label))
                throw Error(a_node.m_line, "\"" + a_node.m_label + "\" declared twice in one section");
            m_labels[a_node.m_label] = static_cast<std::uint32_t>(start);
        }
        putWord(out, 0);
        putHalf(out, a_node.m_tag);
        for (const Attribute& attribute : a_node.m_lead)
            putAttribute(out, attribute);
        std::size_t sibling_at = 0;
        if (!a_node.m_no_sibling) {
            putHalf(out, AT_SIBLING);
            sibling_at = out.size();
            putWord(out, 0);
        }
        if (!a_node.m_no_name) {
            putHalf(out, AT_NAME);
            out.insert(out.end(), a_node.m_name.begin(), a_node.m_name.end());
            out.push_back(0);
        }
        for (const Attribute& attribute : a_node.m_attributes)
            putAttribute(out, attribute);
        for (const Attribute& attribute : a_node.m_extra)
            putAttribute(out, attribute);
        setWord(out, start, a_node.m_has_length ? a_node.m_length : static_cast<std::uint32_t>(out.size() - start));
        if (a_node.m_block) {
            for (const auto& child : a_node.m_children)
                writeEntry(a_section, *child);
            putWord(out, 4); // the null entry that ends the children
        }
        if (!a_node.m_no_sibling)
            setWord(out, sibling_at, a_node.m_has_sibling ? a_node.m_sibling : static_cast<std::uint32_t>(out.size()));
    }

    void layOut(Section& a_section)
    {
        m_labels.clear();
        m_references.clear();
        for (const auto& entry : a_section.m_entries)
            writeEntry(a_section, *entry);
        for (const Reference& reference : m_references) {
            std::map<std::string, std::uint32_t>::const_iterator found = m_labels.find(reference.m_label);
            if (found == m_labels.end())
                throw Error(reference.m_line, "no entry \"" + reference.m_label + "\" in section " + a_section.m_name);
            setWord(a_section.m_bytes, reference.m_at, found->second);
        }
    }

    static void align(Bytes& a_out)
    {
        while (a_out.size() % 4)
            a_out.push_back(0);
    }

    std::string writeFile()
    {
        // Section 0 is the null section; the name table comes last.
        Bytes names{0};
        std::vector<std::uint32_t> name_offsets;
        for (const Section& section : m_sections) {
            name_offsets.push_back(static_cast<std::uint32_t>(names.size()));
            names.insert(names.end(), section.m_name.begin(), section.m_name.end());
            names.push_back(0);
        }
        const std::uint32_t names_name = static_cast<std::uint32_t>(names.size());
        static const char shstrtab[] = ".shstrtab";
        names.insert(names.end(), shstrtab, shstrtab + sizeof shstrtab);

        Bytes file(52, 0);
        std::vector<std::uint32_t> offsets;
        for (const Section& section : m_sections) {
            align(file);
            offsets.push_back(static_cast<std::uint32_t>(file.size()));
            file.insert(file.end(), section.m_bytes.begin(), section.m_bytes.end());
        }
        align(file);
        const std::uint32_t names_offset = static_cast<std::uint32_t>(file.size());
        file.insert(file.end(), names.begin(), names.end());
        align(file);
        const std::uint32_t shoff = static_cast<std::uint32_t>(file.size());
        const std::uint32_t shnum = static_cast<std::uint32_t>(m_sections.size() + 2);

        Bytes table(40, 0); // section 0
        for (std::size_t i = 0; i < m_sections.size(); ++i) {
            const Section& section = m_sections[i];
            putSectionHeader(table, section.m_has_name ? section.m_name_offset : name_offsets[i],
                             section.m_has_offset ? section.m_offset : offsets[i],
                             section.m_has_size ? section.m_size : static_cast<std::uint32_t>(section.m_bytes.size()),
                             section);
        }
        Section names_section;
        names_section.m_type = 3;
        putSectionHeader(table, names_name, names_offset, static_cast<std::uint32_t>(names.size()), names_section);
        file.insert(file.end(), table.begin(), table.end());

        Bytes header;
        const unsigned char ident[16] = {0x7f, 'E', 'L', 'F', static_cast<unsigned char>(m_class),
                                         static_cast<unsigned char>(m_data), 1};
        header.insert(header.end(), ident, ident + 16);
        putHalf(header, m_type);     // e_type: ET_EXEC
        putHalf(header, m_machine);  // e_machine: EM_PPC
        putWord(header, 1);          // e_version
        putWord(header, 0x10000000); // e_entry
        putWord(header, 0);          // e_phoff
        putWord(header, m_has_shoff ? m_shoff : shoff);
        putWord(header, 0);  // e_flags
        putHalf(header, 52); // e_ehsize
        putHalf(header, 32); // e_phentsize
        putHalf(header, 0);  // e_phnum
        putHalf(header, 40); // e_shentsize
        putHalf(header, m_has_shnum ? m_shnum : shnum);
        putHalf(header, m_has_shstrndx ? m_shstrndx : shnum - 1);
        std::copy(header.begin(), header.end(), file.begin());

        if (m_has_magic)
            for (std::size_t i = 0; i < m_magic.size(); ++i) {
                if (i < file.size())
                    file[i] = m_magic[i];
                else
                    file.push_back(m_magic[i]);
            }
        if (m_has_truncate && m_truncate < file.size())
            file.resize(m_truncate);
        return std::string(file.begin(), file.end());
    }

    // The header of a_section with its name, offset and size as given.
    static void putSectionHeader(Bytes& a_table, std::uint32_t a_name, std::uint32_t a_offset, std::uint32_t a_size,
                                 const Section& a_section)
    {
        putWord(a_table, a_name);
        putWord(a_table, a_section.m_type);
        putWord(a_table, a_section.m_flags);
        putWord(a_table, a_section.m_address);
        putWord(a_table, a_offset);
        putWord(a_table, a_size);
        putWord(a_table, a_section.m_link);
        putWord(a_table, a_section.m_info);
        putWord(a_table, 1); // sh_addralign
        putWord(a_table, a_section.m_entry_size);
    }

    struct Reference {
        std::size_t m_at;
        std::string m_label;
        int m_line;
    };

    int m_line = 0;
    int m_node_line = 0;
    std::vector<Section> m_sections;
    std::vector<Node*> m_open;
    std::map<std::string, std::uint32_t> m_labels;
    std::vector<Reference> m_references;

    std::uint32_t m_class = 1, m_data = 2, m_machine = 20, m_type = 2;
    std::vector<Symbol> m_symbols;
    bool m_has_magic = false;
    Bytes m_magic;
    bool m_has_shoff = false, m_has_shnum = false, m_has_shstrndx = false, m_has_truncate = false;
    std::uint32_t m_shoff = 0, m_shnum = 0, m_shstrndx = 0, m_truncate = 0;
};

} // namespace detail

// The bytes of the executable that a_description describes; throws Error.
inline std::string build(const std::string& a_description)
{
    return detail::Builder().build(a_description);
}

} // namespace mkdwarf

#endif
