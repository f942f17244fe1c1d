// The exact meaning of PowerPC instructions: what each one does to the
// machine's state as bit-precise terms, and where it sends control. Apart
// from decoding (the listing and the decoder say which instruction a line
// is) and from the walk over the node's paths (exact_translator).
#ifndef VELCOR_SRC_PPC_EXACT_SEMANTICS_H
#define VELCOR_SRC_PPC_EXACT_SEMANTICS_H

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "constant_memory.h"
#include "machine_state.h"
#include "parse.h"
#include "smt_term.h"

// One operand of an instruction, checked against the instruction's shape.
struct ExactOperand {
    long m_value = 0;      // the number, register number, or displacement
    int m_base = -1;       // a displacement's base register
    bool m_external = false; // a branch target outside the node
    const std::string* m_symbol = nullptr; // a branch target's symbol, in the listing's record
};

struct ListingInstruction;

struct ExactInstruction {
    int m_line = 0;
    std::uint32_t m_address = 0;
    long m_offset = 0;
    std::string m_mnemonic;
    // Operand k is m_operands[k]; operand 0 is the instruction's own place.
    std::vector<ExactOperand> m_operands;
    // Index of the target operand, or 0 when there is none.
    int m_target_operand = 0;
    // Where its meaning is in the table of exact instructions (-1: none).
    int m_meaning = -1;
};

// Where an instruction sends control, and on what condition (otherwise
// control goes on with the next instruction).
struct ControlOutcome {
    enum Kind {
        NEXT,      // the next instruction
        BRANCH,    // to the instruction's target
        RETURN,    // leaves the node
        CALL,      // calls a function whose effect is unknown, then goes on
        TAIL_CALL, // calls a function whose effect is unknown, then leaves
        COMPUTED   // to the address in the count register
    };
    Kind m_kind = NEXT;
    smt::Term m_condition; // Bool; true for an unconditional transfer
};

// Everything the meaning of instructions needs besides the state: the
// terms, fresh values, the constraints that tie them, constant memory.
class ExactContext {
public:
    // At most this many bytes of constants are stated.
    static constexpr std::size_t MAX_PINNED_BYTES = 1 << 20;

    ExactContext(smt::TermTable& a_terms, const ConstantMemory* a_constants);

    smt::TermTable& terms() { return m_terms; }
    FloatViews& floats() { return m_floats; }
    const ConstantMemory* constants() const { return m_constants; }

    // A new unconstrained value (declared by the output), named by a_kind.
    smt::Term fresh(const char* a_kind, smt::Sort a_sort);
    // A constraint that holds whatever the code does (it only ties fresh
    // values to what they stand for).
    void constrain(smt::Term a_fact) { m_constraints.push_back(a_fact); }

    const std::vector<smt::Term>& freshValues() const { return m_fresh; }
    const std::vector<smt::Term>& constraints() const { return m_constraints; }

    // The 64 bits of a double value (see FloatViews).
    smt::Term bitsOf(smt::Term a_value);

    // States that the memory before the code holds the executable's
    // constants from a_start on, for a_size bytes (each byte once): where
    // the code reads constants at an address it computes (a jump table, a
    // table of constants), their value is part of what the code does.
    void pinConstants(std::uint32_t a_start, std::uint32_t a_size);

private:
    // Whether a value without bits is the result of arithmetic on every path.
    bool isArithmeticResult(smt::Term a_value) const;

    smt::TermTable& m_terms;
    const ConstantMemory* m_constants;
    FloatViews m_floats;
    std::vector<smt::Term> m_fresh;
    std::vector<smt::Term> m_constraints;
    std::unordered_map<std::uint32_t, smt::Term> m_bits_of; // value -> bits
    std::unordered_set<std::uint32_t> m_pinned;             // addresses already pinned
    int m_fresh_count = 0;
};

class ExactSemantics {
public:
    // Whether the mnemonic has an exact meaning.
    static bool hasExactMeaning(const std::string& a_mnemonic);
    // The instruction of a listing line with its operands checked against
    // what the mnemonic takes. A message without the place ("no exact
    // semantics for ori", "operand 2 of lwz is not a displacement") when
    // the line has no exact meaning, "" otherwise.
    static std::string prepare(const ListingInstruction& a_line, ExactInstruction& a_instruction);

    explicit ExactSemantics(ExactContext& a_context) : m_context(a_context) {}

    // Applies the instruction's effect on the data to a_state and tells
    // where control goes.
    ControlOutcome execute(const ExactInstruction& a_instruction, MachineState& a_state);

    // What a call does to the state, as far as the caller knows: the
    // registers the ABI lets a callee change, and all of memory, become
    // fresh values.
    void unknownCall(MachineState& a_state);

    // The memory access helpers, shared with the jump-table reader.
    smt::Term loadBytes(const MachineState& a_state, smt::Term a_address, unsigned a_bytes);

private:
    ExactContext& m_context;
};

#endif
