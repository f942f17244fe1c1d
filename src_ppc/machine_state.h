// The PowerPC's state as exact terms: 32 general registers, the 32 bits of
// the condition register, XER's carry and summary overflow, the link and
// count registers, 32 float registers and the byte-addressed memory.
#ifndef VELCOR_SRC_PPC_MACHINE_STATE_H
#define VELCOR_SRC_PPC_MACHINE_STATE_H

#include <array>
#include <functional>

#include "smt_term.h"

// A float register. Loads, moves and sign operations know its 64 bits
// exactly; arithmetic knows its value; a single load (and a sign operation
// on a single) knows both. Either view is made from the other when asked
// for (see FloatViews).
struct FloatValue {
    smt::Term m_bits;  // (_ BitVec 64), or null
    smt::Term m_value; // (_ FloatingPoint 11 53), or null
    bool operator==(const FloatValue& a_other) const
    {
        return m_bits == a_other.m_bits && m_value == a_other.m_value;
    }
};

// Turns one view of a float register into the other. The bits of an
// arithmetic result are a fresh bit-vector whose float is that value: the
// same bits for every value but NaN, whose payload is left free.
class FloatViews {
public:
    using BitsOf = std::function<smt::Term(smt::Term a_value)>;
    FloatViews(smt::TermTable& a_terms, BitsOf a_bits_of) : m_terms(a_terms), m_bits_of(std::move(a_bits_of)) {}

    smt::Term value(const FloatValue& a_register);
    smt::Term bits(const FloatValue& a_register);

private:
    smt::TermTable& m_terms;
    BitsOf m_bits_of;
};

struct MachineState {
    std::array<smt::Term, 32> m_gpr;
    std::array<smt::Term, 32> m_cr; // Bool; bit 0 is the most significant
    smt::Term m_ca;                 // Bool
    smt::Term m_so;                 // Bool
    smt::Term m_lr;
    smt::Term m_ctr;
    std::array<FloatValue, 32> m_fpr;
    smt::Term m_memory;

    // The state before the code: every register its declared pre-state
    // name (r0, cr00, ca, lr, f0, ..., MEM).
    static MachineState initial(smt::TermTable& a_terms);

    // The state that is a_then when a_condition holds and a_else otherwise.
    // Memory stays one chain of stores over their common part, each store
    // guarded; memories without a common part become a conditional array.
    static MachineState choose(smt::TermTable& a_terms, FloatViews& a_views, smt::Term a_condition,
                               const MachineState& a_then, const MachineState& a_else);
};

// Memory of a_memory's chain above a_base (a_base must lie on the chain),
// as the stores in the order they were made.
struct StoreRecord {
    smt::Term m_address;
    smt::Term m_byte;
};

// The chain below both memories that they share, or null when they share
// none.
smt::Term commonMemory(const smt::TermTable& a_terms, smt::Term a_left, smt::Term a_right);

#endif
