#include "rawtransition.h"

#include <string>

#include "machine.h"
#include "misc/stop.h"

RawTransition::RawTransition()
{
    initRawTransition();
}

void RawTransition::initRawTransition()
{
    m_operation = TOP_UNDEFINED;
    m_operands_count = 0;
    m_destination_count = 0;
    m_destination = true;
    m_transition.reset(new Transition());
    m_transition->setMaxRegister(0);
}

void RawTransition::startTransition()
{
    m_transition.reset(new Transition());
}

void RawTransition::addOperand(TN& a_operand)
{
    if (m_operands_count >= MAX_OPERANDS)
        stopRun("Too many operands (m_operands_count < 10) at offset " + std::to_string(m_operands[0]->TNValue()) +
                "\n");
    m_operands[m_operands_count++] = &a_operand;
    if (m_destination)
        ++m_destination_count;
}

void RawTransition::addLineAddress(long a_offset)
{
    // Made anew rather than set: setting a constant operand's value would
    // tell every expression to compute its constants again.
    VELCOR_ASSERT(m_operands_count == 0);
    m_line_address.emplace(a_offset);
    addOperand(*m_line_address);
}

void RawTransition::addOperation(TOP a_opcode)
{
    m_destination = false;
    m_operation = a_opcode;
}

void RawTransition::endOperation()
{
    if (m_translating)
        machine.translate_opcode(m_transition.get(), m_operands, m_operation, m_operands_count,
                                 m_destination_count, m_destination);
    m_operands_count = 0;
    m_destination_count = 0;
    m_destination = true;
    m_operation = TOP_UNDEFINED;
}

void RawTransition::addPredicatedAssignment(unsigned, const char*, ExpHandle)
{
    // Predicated assignments carry no meaning on this machine; the value is
    // released with the handle.
}

void RawTransition::clear()
{
    m_translating = true;
    m_transition.reset();
    m_operands_count = 0;
    m_destination_count = 0;
    m_destination = true;
    m_operation = TOP_UNDEFINED;
}
