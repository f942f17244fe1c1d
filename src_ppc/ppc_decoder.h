// Decoding of 32-bit PowerPC instruction words, apart from their meaning: a
// big-endian word and its address in, the instruction's opcode and operands
// out, each operand with its kind. Only the forms of 32-bit user code that
// the listing format can state are decoded; any other word (an undefined
// opcode, a reserved bit set, an overflow-enabled "o" form, an absolute
// branch, an invalid form such as a load with update into its own base) is
// "no instruction", so nothing ever stands for a different instruction than
// the word holds.
#ifndef VELCOR_SRC_PPC_PPC_DECODER_H
#define VELCOR_SRC_PPC_PPC_DECODER_H

#include <array>
#include <cstdint>

#include "parse.h"

enum class OperandKind {
    GENERAL_REGISTER,         // rN
    GENERAL_REGISTER_OR_ZERO, // the (rA|0) field: r0 reads as the number 0
    FLOAT_REGISTER,           // fN
    CONDITION_FIELD,          // 0 to 7
    CONDITION_BIT,            // 0 to 31
    NUMBER,                   // immediates and numeric fields (BO, TO, SH, MB, ME, SPR, CRM, BH)
    DISPLACEMENT,             // m_value(rm_base); the base is (rA|0) unless m_base_updated
    TARGET                    // a branch target, m_value its address
};

struct DecodedOperand {
    OperandKind m_kind = OperandKind::NUMBER;
    std::int64_t m_value = 0;
    int m_base = 0;
    bool m_base_updated = false;
};

constexpr int MAX_DECODED_OPERANDS = 5;

struct DecodedInstruction {
    std::uint32_t m_address = 0;
    std::uint32_t m_word = 0;
    // TOP_UNDEFINED when the word is no instruction of the decoded set.
    TOP m_opcode = TOP_UNDEFINED;
    int m_operand_count = 0;
    std::array<DecodedOperand, MAX_DECODED_OPERANDS> m_operands{};

    bool isInstruction() const { return m_opcode != TOP_UNDEFINED; }
    // The branch target operand, or null.
    const DecodedOperand* target() const;
    // The BO field of a conditional branch (bc, bcl, bclr, bclrl, bcctr,
    // bcctrl); meaningless for other opcodes.
    int branchOptions() const;
};

// The instruction a_word holds at a_address.
DecodedInstruction decodeInstruction(std::uint32_t a_word, std::uint32_t a_address);

// The big-endian word at a_bytes.
std::uint32_t bigEndianWord(const unsigned char* a_bytes);

#endif
