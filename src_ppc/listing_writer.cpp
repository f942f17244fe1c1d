#include "listing_writer.h"

#include <cctype>
#include <cstdio>

ListingWriter::ListingWriter(const std::string& a_node, std::uint32_t a_start, OutsideNamer a_outside)
    : m_node(a_node), m_start(a_start), m_outside(std::move(a_outside))
{
}

std::string ListingWriter::symbolicAddress(const std::string& a_name, std::int64_t a_offset)
{
    if (a_offset == 0)
        return "<" + a_name + ">";
    return "<" + a_name + "+" + std::to_string(a_offset) + ">";
}

bool ListingWriter::isListingName(const std::string& a_name)
{
    if (a_name.empty() || !(std::isalpha(static_cast<unsigned char>(a_name[0])) || a_name[0] == '_'))
        return false;
    for (char c : a_name)
        if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.'))
            return false;
    return get_topcode(a_name.c_str()) == TOP_UNDEFINED;
}

void ListingWriter::writeOperand(std::ostream& a_out, const ListingLine& a_line, const DecodedOperand& a_operand) const
{
    switch (a_operand.m_kind) {
    case OperandKind::GENERAL_REGISTER:
    case OperandKind::GENERAL_REGISTER_OR_ZERO:
        a_out << 'r' << a_operand.m_value;
        break;
    case OperandKind::FLOAT_REGISTER:
        a_out << 'f' << a_operand.m_value;
        break;
    case OperandKind::CONDITION_FIELD:
    case OperandKind::CONDITION_BIT:
    case OperandKind::NUMBER:
        a_out << a_operand.m_value;
        break;
    case OperandKind::DISPLACEMENT:
        a_out << a_operand.m_value << "(r" << a_operand.m_base << ')';
        break;
    case OperandKind::TARGET: {
        if (a_line.m_target_in_listing) {
            a_out << symbolicAddress(m_node, a_line.m_target_offset);
            break;
        }
        const std::uint32_t address = static_cast<std::uint32_t>(a_operand.m_value);
        std::string name = m_outside ? m_outside(address) : std::string();
        if (name.empty())
            name = symbolicAddress(m_node, static_cast<std::int32_t>(address - m_start));
        a_out << name;
        break;
    }
    }
}

void ListingWriter::write(std::ostream& a_out, const ListingLine& a_line) const
{
    const DecodedInstruction& instruction = a_line.m_instruction;
    if (a_line.m_starts_copy)
        a_out << "% copy of the shared tail at " << symbolicAddress(m_node, a_line.m_copy_of)
              << ", for the backward branches that return through it\n";
    char address[16];
    std::snprintf(address, sizeof address, "%08x", static_cast<unsigned>(instruction.m_address));
    a_out << address << ": " << symbolicAddress(m_node, a_line.m_offset) << ": ";
    if (!instruction.isInstruction()) {
        char word[16];
        std::snprintf(word, sizeof word, "0x%08x", static_cast<unsigned>(instruction.m_word));
        a_out << ".long " << word << '\n';
        return;
    }
    a_out << topName(instruction.m_opcode);
    for (int i = 0; i < instruction.m_operand_count; ++i) {
        a_out << (i == 0 ? ' ' : ',');
        writeOperand(a_out, a_line, instruction.m_operands[i]);
    }
    a_out << '\n';
}
