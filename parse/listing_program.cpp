#include "listing_program.h"

#include <utility>

ListingProgram listing_program;

void ListingProgram::beginLine(int a_line, std::uint64_t a_address)
{
    if (!m_recording)
        return;
    m_current = ListingInstruction();
    m_current.m_operands.reserve(3);
    m_current.m_line = a_line;
    m_current.m_address = a_address;
    m_have_opcode = false;
}

void ListingProgram::addAddress(const char* a_symbol, long a_offset)
{
    if (!m_recording)
        return;
    if (!m_have_opcode) {
        m_current.m_symbol = a_symbol ? a_symbol : "";
        m_current.m_offset = a_offset;
        return;
    }
    ListingOperand operand;
    operand.m_kind = ListingOperand::ADDRESS;
    operand.m_name = a_symbol ? a_symbol : "";
    operand.m_value = a_offset;
    m_current.m_operands.push_back(std::move(operand));
}

void ListingProgram::setOpcode(TOP a_opcode)
{
    if (!m_recording)
        return;
    m_current.m_opcode = a_opcode;
    m_have_opcode = true;
}

void ListingProgram::addName(const char* a_name)
{
    if (!m_recording)
        return;
    ListingOperand operand;
    operand.m_kind = ListingOperand::NAME;
    operand.m_name = a_name;
    m_current.m_operands.push_back(std::move(operand));
}

void ListingProgram::addNumber(long a_value)
{
    if (!m_recording)
        return;
    ListingOperand operand;
    operand.m_value = a_value;
    m_current.m_operands.push_back(std::move(operand));
}

void ListingProgram::addDisplacement(long a_value, const char* a_base)
{
    if (!m_recording)
        return;
    ListingOperand operand;
    operand.m_kind = ListingOperand::DISPLACEMENT;
    operand.m_name = a_base;
    operand.m_value = a_value;
    m_current.m_operands.push_back(std::move(operand));
}

void ListingProgram::endLine()
{
    if (!m_recording)
        return;
    m_instructions.push_back(std::move(m_current));
    m_current = ListingInstruction();
    m_have_opcode = false;
}

void ListingProgram::clear()
{
    m_recording = false;
    m_have_opcode = false;
    m_current = ListingInstruction();
    m_instructions.clear();
}
