#include "machine_state.h"

#include <string>
#include <vector>

using smt::Sort;
using smt::Term;
using smt::TermTable;

smt::Term FloatViews::value(const FloatValue& a_register)
{
    if (!a_register.m_value.isNull())
        return a_register.m_value;
    return m_terms.fpFromBits(Sort::doubleFloat(), a_register.m_bits);
}

smt::Term FloatViews::bits(const FloatValue& a_register)
{
    if (!a_register.m_bits.isNull())
        return a_register.m_bits;
    return m_bits_of(a_register.m_value);
}

namespace {

std::string twoDigits(int a_number)
{
    return std::string(1, char('0' + a_number / 10)) + char('0' + a_number % 10);
}

} // namespace

MachineState MachineState::initial(TermTable& a_terms)
{
    MachineState state;
    for (int i = 0; i < 32; ++i) {
        state.m_gpr[i] = a_terms.symbol("r" + std::to_string(i), Sort::bitVec(32));
        state.m_cr[i] = a_terms.symbol("cr" + twoDigits(i), Sort::boolean());
        state.m_fpr[i].m_value = a_terms.symbol("f" + std::to_string(i), Sort::doubleFloat());
    }
    state.m_ca = a_terms.symbol("ca", Sort::boolean());
    state.m_so = a_terms.symbol("so", Sort::boolean());
    state.m_lr = a_terms.symbol("lr", Sort::bitVec(32));
    state.m_ctr = a_terms.symbol("ctr", Sort::bitVec(32));
    state.m_memory = a_terms.symbol("MEM", Sort::memory());
    return state;
}

smt::Term commonMemory(const TermTable& a_terms, Term a_left, Term a_right)
{
    // Both climb to the same depth, then together until they meet: the
    // walk is as long as the stores the two made apart.
    std::uint32_t left_depth = a_terms.storeDepth(a_left);
    std::uint32_t right_depth = a_terms.storeDepth(a_right);
    for (; left_depth > right_depth; --left_depth)
        a_left = a_terms.child(a_left, 0);
    for (; right_depth > left_depth; --right_depth)
        a_right = a_terms.child(a_right, 0);
    while (a_left != a_right) {
        if (left_depth == 0)
            return Term{};
        a_left = a_terms.child(a_left, 0);
        a_right = a_terms.child(a_right, 0);
        --left_depth;
    }
    return a_left;
}

namespace {

// The stores of a_memory above a_base, oldest first.
std::vector<StoreRecord> storesAbove(const TermTable& a_terms, Term a_memory, Term a_base)
{
    std::vector<StoreRecord> stores;
    for (Term memory = a_memory; memory != a_base; memory = a_terms.child(memory, 0))
        stores.push_back(StoreRecord{a_terms.child(memory, 1), a_terms.child(memory, 2)});
    return std::vector<StoreRecord>(stores.rbegin(), stores.rend());
}

// Each store takes effect only when a_guard holds; otherwise it writes
// back what is there.
Term guardedStores(TermTable& a_terms, Term a_memory, Term a_guard, const std::vector<StoreRecord>& a_stores)
{
    Term memory = a_memory;
    for (const StoreRecord& store : a_stores)
        memory = a_terms.store(memory, store.m_address,
                               a_terms.ite(a_guard, store.m_byte, a_terms.select(memory, store.m_address)));
    return memory;
}

Term chooseMemory(TermTable& a_terms, Term a_condition, Term a_then, Term a_else)
{
    if (a_then == a_else)
        return a_then;
    Term base = commonMemory(a_terms, a_then, a_else);
    if (base.isNull())
        return a_terms.ite(a_condition, a_then, a_else);
    Term memory = guardedStores(a_terms, base, a_condition, storesAbove(a_terms, a_then, base));
    return guardedStores(a_terms, memory, a_terms.notOf(a_condition), storesAbove(a_terms, a_else, base));
}

FloatValue chooseFloat(TermTable& a_terms, FloatViews& a_views, Term a_condition, const FloatValue& a_then,
                       const FloatValue& a_else)
{
    if (a_then == a_else)
        return a_then;
    FloatValue chosen;
    // Bits are kept whenever one side has them: they may be an integer
    // that only looks like a float (a conversion's result).
    if (!a_then.m_bits.isNull() || !a_else.m_bits.isNull())
        chosen.m_bits = a_terms.ite(a_condition, a_views.bits(a_then), a_views.bits(a_else));
    else
        chosen.m_value = a_terms.ite(a_condition, a_then.m_value, a_else.m_value);
    return chosen;
}

} // namespace

MachineState MachineState::choose(TermTable& a_terms, FloatViews& a_views, Term a_condition,
                                  const MachineState& a_then, const MachineState& a_else)
{
    MachineState state;
    for (int i = 0; i < 32; ++i) {
        state.m_gpr[i] = a_terms.ite(a_condition, a_then.m_gpr[i], a_else.m_gpr[i]);
        state.m_cr[i] = a_terms.ite(a_condition, a_then.m_cr[i], a_else.m_cr[i]);
        state.m_fpr[i] = chooseFloat(a_terms, a_views, a_condition, a_then.m_fpr[i], a_else.m_fpr[i]);
    }
    state.m_ca = a_terms.ite(a_condition, a_then.m_ca, a_else.m_ca);
    state.m_so = a_terms.ite(a_condition, a_then.m_so, a_else.m_so);
    state.m_lr = a_terms.ite(a_condition, a_then.m_lr, a_else.m_lr);
    state.m_ctr = a_terms.ite(a_condition, a_then.m_ctr, a_else.m_ctr);
    state.m_memory = chooseMemory(a_terms, a_condition, a_then.m_memory, a_else.m_memory);
    return state;
}
