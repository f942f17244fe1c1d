#include "smt_term.h"

#include <algorithm>

#include "misc/stop.h"

namespace smt {

std::uint64_t truncate(std::uint64_t a_value, unsigned a_width)
{
    return a_width >= 64 ? a_value : (a_value & ((std::uint64_t(1) << a_width) - 1));
}

std::int64_t signedValue(std::uint64_t a_value, unsigned a_width)
{
    std::uint64_t value = truncate(a_value, a_width);
    if (a_width < 64 && (value >> (a_width - 1)) & 1)
        value |= ~((std::uint64_t(1) << a_width) - 1);
    return static_cast<std::int64_t>(value);
}

namespace {

constexpr std::size_t INITIAL_SLOTS = 1 << 12;

std::uint64_t mix(std::uint64_t a_hash, std::uint64_t a_value)
{
    a_hash ^= a_value + 0x9e3779b97f4a7c15ull + (a_hash << 6) + (a_hash >> 2);
    return a_hash;
}

// The treap's heap order: a hash of the key, the same for every copy of a
// node.
std::uint32_t mapPriority(std::uint32_t a_key)
{
    return static_cast<std::uint32_t>(mix(a_key, 0x5bd1e995u));
}

} // namespace

TermTable::TermTable()
{
    m_map_nodes.push_back(MapNode{0, Term{}, 0, 0});
    m_nodes.push_back(Node()); // index 0: no term
    m_slots.assign(INITIAL_SLOTS, Slot{0, 0});
}

void TermTable::checkSort(bool a_condition, const char* a_what) const
{
    if (!a_condition)
        internalError(a_what, __FILE__, "TermTable");
}

std::size_t TermTable::hashOf(const Node& a_node) const
{
    std::uint64_t hash = static_cast<std::uint64_t>(a_node.m_op);
    hash = mix(hash, (std::uint64_t(a_node.m_sort.m_tag) << 32) | (std::uint64_t(a_node.m_sort.m_exponent) << 16) |
                         a_node.m_sort.m_width);
    hash = mix(hash, (std::uint64_t(a_node.m_param[0]) << 32) | a_node.m_param[1]);
    hash = mix(hash, a_node.m_value);
    for (int i = 0; i < a_node.m_arity; ++i)
        hash = mix(hash, a_node.m_child[i].m_id);
    // The table probes linearly from the low bits: spread every input bit.
    hash ^= hash >> 33;
    hash *= 0xff51afd7ed558ccdull;
    hash ^= hash >> 33;
    hash *= 0xc4ceb9fe1a85ec53ull;
    hash ^= hash >> 33;
    return static_cast<std::size_t>(hash);
}

bool TermTable::sameNode(const Node& a_left, const Node& a_right) const
{
    if (a_left.m_op != a_right.m_op || a_left.m_arity != a_right.m_arity || a_left.m_sort != a_right.m_sort ||
        a_left.m_value != a_right.m_value || a_left.m_param[0] != a_right.m_param[0] ||
        a_left.m_param[1] != a_right.m_param[1])
        return false;
    for (int i = 0; i < a_left.m_arity; ++i)
        if (a_left.m_child[i] != a_right.m_child[i])
            return false;
    return true;
}

void TermTable::reserve(std::size_t a_terms)
{
    std::size_t wanted = m_slots.size();
    while (4 * a_terms > 3 * wanted && wanted < (std::size_t(1) << 31))
        wanted *= 2;
    if (wanted > m_slots.size())
        rehash(wanted);
}

void TermTable::grow()
{
    rehash(m_slots.size() * 2);
}

void TermTable::rehash(std::size_t a_slots)
{
    std::vector<Slot> slots(a_slots, Slot{0, 0});
    std::size_t mask = slots.size() - 1;
    for (const Slot& slot : m_slots) {
        if (!slot.m_id)
            continue;
        std::size_t hash = hashOf(m_nodes[slot.m_id]);
        std::size_t at = hash & mask;
        while (slots[at].m_id)
            at = (at + 1) & mask;
        slots[at] = slot;
    }
    m_slots.swap(slots);
}

Term TermTable::intern(const Node& a_node)
{
    std::size_t mask = m_slots.size() - 1;
    std::size_t hash = hashOf(a_node);
    std::uint32_t check = static_cast<std::uint32_t>(hash >> 32);
    std::size_t at = hash & mask;
    // The hash's high half in the slot spares a look at most nodes that
    // are not the one sought.
    while (std::uint32_t id = m_slots[at].m_id) {
        if (m_slots[at].m_check == check && sameNode(m_nodes[id], a_node))
            return Term{id};
        at = (at + 1) & mask;
    }
    if (m_nodes.size() >= 0xfffffff0u)
        stopCapacity("more than 4294967280 terms");
    std::uint32_t id = static_cast<std::uint32_t>(m_nodes.size());
    m_nodes.push_back(a_node);
    m_slots[at] = Slot{id, check};
    // Three quarters full at most: the slots' hash halves keep the probes
    // cheap.
    if (4 * m_nodes.size() > 3 * m_slots.size())
        grow();
    return Term{id};
}

Term TermTable::make(Op a_op, Sort a_sort, std::initializer_list<Term> a_children, std::uint64_t a_value,
                     std::uint32_t a_param0, std::uint32_t a_param1)
{
    Node node;
    node.m_op = a_op;
    node.m_sort = a_sort;
    node.m_value = a_value;
    node.m_param[0] = a_param0;
    node.m_param[1] = a_param1;
    for (Term child : a_children) {
        checkSort(!child.isNull(), "child term is null");
        node.m_child[node.m_arity++] = child;
    }
    return intern(node);
}

// ------------------------------------------------------------------ leaves

Term TermTable::symbol(const std::string& a_name, Sort a_sort)
{
    auto found = m_symbols.find(a_name);
    if (found != m_symbols.end()) {
        checkSort(sort(found->second) == a_sort, "one symbol declared with two sorts");
        return found->second;
    }
    m_names.push_back(a_name);
    Term made = make(Op::Symbol, a_sort, {}, m_names.size() - 1);
    m_symbols.emplace(a_name, made);
    return made;
}

const std::string& TermTable::symbolName(Term a_term) const
{
    checkSort(op(a_term) == Op::Symbol, "symbolName of a non-symbol");
    return m_names[node(a_term).m_value];
}

Term TermTable::boolean(bool a_value)
{
    return make(Op::BoolConst, Sort::boolean(), {}, a_value ? 1 : 0);
}

Term TermTable::bitVec(unsigned a_width, std::uint64_t a_value)
{
    checkSort(a_width >= 1 && a_width <= 64, "bit-vector constant wider than 64 bits");
    return make(Op::BvConst, Sort::bitVec(a_width), {}, truncate(a_value, a_width));
}

Term TermTable::roundingMode(RoundingMode a_mode)
{
    return make(Op::RoundingMode, Sort::roundingMode(), {}, static_cast<std::uint64_t>(a_mode));
}

bool TermTable::isConst(Term a_term) const
{
    Op kind = op(a_term);
    return kind == Op::BoolConst || kind == Op::BvConst;
}

bool TermTable::isTrue(Term a_term) const
{
    return op(a_term) == Op::BoolConst && node(a_term).m_value == 1;
}

bool TermTable::isFalse(Term a_term) const
{
    return op(a_term) == Op::BoolConst && node(a_term).m_value == 0;
}

// ---------------------------------------------------------------- booleans

Term TermTable::notOf(Term a_term)
{
    checkSort(sort(a_term).isBool(), "not of a non-boolean");
    if (isConst(a_term))
        return boolean(!isTrue(a_term));
    if (op(a_term) == Op::Not)
        return child(a_term, 0);
    return make(Op::Not, Sort::boolean(), {a_term});
}

Term TermTable::commutative(Op a_op, Sort a_sort, Term a_left, Term a_right)
{
    if (a_right.m_id < a_left.m_id)
        std::swap(a_left, a_right);
    return make(a_op, a_sort, {a_left, a_right});
}

Term TermTable::andOf(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBool() && sort(a_right).isBool(), "and of non-booleans");
    if (isFalse(a_left) || isFalse(a_right))
        return falseTerm();
    if (isTrue(a_left))
        return a_right;
    if (isTrue(a_right) || a_left == a_right)
        return a_left;
    if ((op(a_left) == Op::Not && child(a_left, 0) == a_right) ||
        (op(a_right) == Op::Not && child(a_right, 0) == a_left))
        return falseTerm();
    return commutative(Op::And, Sort::boolean(), a_left, a_right);
}

Term TermTable::orOf(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBool() && sort(a_right).isBool(), "or of non-booleans");
    if (isTrue(a_left) || isTrue(a_right))
        return trueTerm();
    if (isFalse(a_left))
        return a_right;
    if (isFalse(a_right) || a_left == a_right)
        return a_left;
    if ((op(a_left) == Op::Not && child(a_left, 0) == a_right) ||
        (op(a_right) == Op::Not && child(a_right, 0) == a_left))
        return trueTerm();
    return commutative(Op::Or, Sort::boolean(), a_left, a_right);
}

Term TermTable::implies(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBool() && sort(a_right).isBool(), "implication of non-booleans");
    if (isTrue(a_left))
        return a_right;
    if (isFalse(a_left) || isTrue(a_right) || a_left == a_right)
        return trueTerm();
    return make(Op::Implies, Sort::boolean(), {a_left, a_right});
}

Term TermTable::ite(Term a_condition, Term a_then, Term a_else)
{
    checkSort(sort(a_condition).isBool(), "ite condition is not boolean");
    checkSort(sort(a_then) == sort(a_else), "ite branches of different sorts");
    if (isTrue(a_condition) || a_then == a_else)
        return a_then;
    if (isFalse(a_condition))
        return a_else;
    if (op(a_condition) == Op::Not)
        return ite(child(a_condition, 0), a_else, a_then);
    // A branch that tests the same condition again knows its outcome.
    if (op(a_then) == Op::Ite && child(a_then, 0) == a_condition)
        return ite(a_condition, child(a_then, 1), a_else);
    if (op(a_else) == Op::Ite && child(a_else, 0) == a_condition)
        return ite(a_condition, a_then, child(a_else, 2));
    if (sort(a_then).isBool()) {
        if (isTrue(a_then) && isFalse(a_else))
            return a_condition;
        if (isFalse(a_then) && isTrue(a_else))
            return notOf(a_condition);
        if (isTrue(a_then))
            return orOf(a_condition, a_else);
        if (isFalse(a_else))
            return andOf(a_condition, a_then);
    }
    return make(Op::Ite, sort(a_then), {a_condition, a_then, a_else});
}

Term TermTable::eq(Term a_left, Term a_right)
{
    checkSort(sort(a_left) == sort(a_right), "equality of different sorts");
    if (a_left == a_right)
        return trueTerm();
    if (isConst(a_left) && isConst(a_right))
        return falseTerm(); // equal constants are one node
    if (sort(a_left).isBool()) {
        if (isTrue(a_left))
            return a_right;
        if (isTrue(a_right))
            return a_left;
        if (isFalse(a_left))
            return notOf(a_right);
        if (isFalse(a_right))
            return notOf(a_left);
    }
    return commutative(Op::Eq, Sort::boolean(), a_left, a_right);
}

// ------------------------------------------------------------- bit-vectors

Term TermTable::foldBinary(Op a_op, Term a_left, Term a_right)
{
    unsigned width = this->width(a_left);
    std::uint64_t left = constValue(a_left);
    std::uint64_t right = constValue(a_right);
    std::int64_t signed_left = signedValue(left, width);
    std::int64_t signed_right = signedValue(right, width);
    switch (a_op) {
    case Op::BvAdd:
        return bitVec(width, left + right);
    case Op::BvSub:
        return bitVec(width, left - right);
    case Op::BvMul:
        return bitVec(width, left * right);
    case Op::BvAnd:
        return bitVec(width, left & right);
    case Op::BvOr:
        return bitVec(width, left | right);
    case Op::BvXor:
        return bitVec(width, left ^ right);
    case Op::BvShl:
        return bitVec(width, right >= width ? 0 : left << right);
    case Op::BvLshr:
        return bitVec(width, right >= width ? 0 : left >> right);
    case Op::BvAshr:
        return bitVec(width, static_cast<std::uint64_t>(right >= width ? (signed_left < 0 ? -1 : 0)
                                                                     : signed_left >> right));
    case Op::BvUlt:
        return boolean(left < right);
    case Op::BvUle:
        return boolean(left <= right);
    case Op::BvSlt:
        return boolean(signed_left < signed_right);
    case Op::BvSle:
        return boolean(signed_left <= signed_right);
    default:
        internalError("no folding for this operator", __FILE__, "foldBinary");
    }
}

Term TermTable::bvNot(Term a_term)
{
    checkSort(sort(a_term).isBitVec(), "bvnot of a non-bit-vector");
    if (op(a_term) == Op::BvConst)
        return bitVec(width(a_term), ~constValue(a_term));
    if (op(a_term) == Op::BvNot)
        return child(a_term, 0);
    return make(Op::BvNot, sort(a_term), {a_term});
}

Term TermTable::bvNeg(Term a_term)
{
    checkSort(sort(a_term).isBitVec(), "bvneg of a non-bit-vector");
    if (op(a_term) == Op::BvConst)
        return bitVec(width(a_term), 0 - constValue(a_term));
    if (op(a_term) == Op::BvNeg)
        return child(a_term, 0);
    return make(Op::BvNeg, sort(a_term), {a_term});
}

Term TermTable::bvAdd(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBitVec() && sort(a_left) == sort(a_right), "bvadd of different sorts");
    if (op(a_left) == Op::BvConst)
        std::swap(a_left, a_right);
    if (op(a_right) == Op::BvConst) {
        if (op(a_left) == Op::BvConst)
            return foldBinary(Op::BvAdd, a_left, a_right);
        if (constValue(a_right) == 0)
            return a_left;
        // (x + c1) + c2 is x + (c1 + c2): addresses keep one shape.
        if (op(a_left) == Op::BvAdd && op(child(a_left, 1)) == Op::BvConst)
            return bvAdd(child(a_left, 0), bitVec(width(a_left), constValue(child(a_left, 1)) + constValue(a_right)));
        return make(Op::BvAdd, sort(a_left), {a_left, a_right});
    }
    return commutative(Op::BvAdd, sort(a_left), a_left, a_right);
}

Term TermTable::bvAddConst(Term a_term, std::uint64_t a_value)
{
    return bvAdd(a_term, bitVec(width(a_term), a_value));
}

Term TermTable::bvSub(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBitVec() && sort(a_left) == sort(a_right), "bvsub of different sorts");
    if (op(a_right) == Op::BvConst)
        return bvAdd(a_left, bitVec(width(a_right), 0 - constValue(a_right)));
    if (a_left == a_right)
        return bitVec(width(a_left), 0);
    return make(Op::BvSub, sort(a_left), {a_left, a_right});
}

Term TermTable::bvMul(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBitVec() && sort(a_left) == sort(a_right), "bvmul of different sorts");
    if (op(a_left) == Op::BvConst)
        std::swap(a_left, a_right);
    if (op(a_right) == Op::BvConst) {
        if (op(a_left) == Op::BvConst)
            return foldBinary(Op::BvMul, a_left, a_right);
        if (constValue(a_right) == 0)
            return a_right;
        if (constValue(a_right) == 1)
            return a_left;
        return make(Op::BvMul, sort(a_left), {a_left, a_right});
    }
    return commutative(Op::BvMul, sort(a_left), a_left, a_right);
}

Term TermTable::bvUdiv(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBitVec() && sort(a_left) == sort(a_right), "bvudiv of different sorts");
    if (op(a_left) == Op::BvConst && op(a_right) == Op::BvConst && constValue(a_right) != 0)
        return bitVec(width(a_left), constValue(a_left) / constValue(a_right));
    return make(Op::BvUdiv, sort(a_left), {a_left, a_right});
}

Term TermTable::bvUrem(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBitVec() && sort(a_left) == sort(a_right), "bvurem of different sorts");
    if (op(a_left) == Op::BvConst && op(a_right) == Op::BvConst && constValue(a_right) != 0)
        return bitVec(width(a_left), constValue(a_left) % constValue(a_right));
    return make(Op::BvUrem, sort(a_left), {a_left, a_right});
}

Term TermTable::bvSdiv(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBitVec() && sort(a_left) == sort(a_right), "bvsdiv of different sorts");
    unsigned width = this->width(a_left);
    if (op(a_left) == Op::BvConst && op(a_right) == Op::BvConst && constValue(a_right) != 0) {
        std::int64_t left = signedValue(constValue(a_left), width);
        std::int64_t right = signedValue(constValue(a_right), width);
        // The one quotient that does not fit wraps, as the bit-vector does.
        if (!(right == -1 && left == signedValue(std::uint64_t(1) << (width - 1), width)))
            return bitVec(width, static_cast<std::uint64_t>(left / right));
    }
    return make(Op::BvSdiv, sort(a_left), {a_left, a_right});
}

Term TermTable::bvAnd(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBitVec() && sort(a_left) == sort(a_right), "bvand of different sorts");
    unsigned width = this->width(a_left);
    if (op(a_left) == Op::BvConst)
        std::swap(a_left, a_right);
    if (op(a_right) == Op::BvConst) {
        if (op(a_left) == Op::BvConst)
            return foldBinary(Op::BvAnd, a_left, a_right);
        if (constValue(a_right) == 0)
            return a_right;
        if (constValue(a_right) == truncate(~std::uint64_t(0), width))
            return a_left;
    }
    if (a_left == a_right)
        return a_left;
    return commutative(Op::BvAnd, sort(a_left), a_left, a_right);
}

Term TermTable::bvOr(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBitVec() && sort(a_left) == sort(a_right), "bvor of different sorts");
    unsigned width = this->width(a_left);
    if (op(a_left) == Op::BvConst)
        std::swap(a_left, a_right);
    if (op(a_right) == Op::BvConst) {
        if (op(a_left) == Op::BvConst)
            return foldBinary(Op::BvOr, a_left, a_right);
        if (constValue(a_right) == 0)
            return a_left;
        if (constValue(a_right) == truncate(~std::uint64_t(0), width))
            return a_right;
    }
    if (a_left == a_right)
        return a_left;
    return commutative(Op::BvOr, sort(a_left), a_left, a_right);
}

Term TermTable::bvXor(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBitVec() && sort(a_left) == sort(a_right), "bvxor of different sorts");
    if (op(a_left) == Op::BvConst)
        std::swap(a_left, a_right);
    if (op(a_right) == Op::BvConst) {
        if (op(a_left) == Op::BvConst)
            return foldBinary(Op::BvXor, a_left, a_right);
        if (constValue(a_right) == 0)
            return a_left;
    }
    if (a_left == a_right)
        return bitVec(width(a_left), 0);
    return commutative(Op::BvXor, sort(a_left), a_left, a_right);
}

Term TermTable::bvShl(Term a_value, Term a_amount)
{
    checkSort(sort(a_value).isBitVec() && sort(a_value) == sort(a_amount), "bvshl of different sorts");
    if (op(a_amount) == Op::BvConst) {
        if (op(a_value) == Op::BvConst)
            return foldBinary(Op::BvShl, a_value, a_amount);
        if (constValue(a_amount) == 0)
            return a_value;
        if (constValue(a_amount) >= width(a_value))
            return bitVec(width(a_value), 0);
    }
    return make(Op::BvShl, sort(a_value), {a_value, a_amount});
}

Term TermTable::bvLshr(Term a_value, Term a_amount)
{
    checkSort(sort(a_value).isBitVec() && sort(a_value) == sort(a_amount), "bvlshr of different sorts");
    if (op(a_amount) == Op::BvConst) {
        if (op(a_value) == Op::BvConst)
            return foldBinary(Op::BvLshr, a_value, a_amount);
        if (constValue(a_amount) == 0)
            return a_value;
        if (constValue(a_amount) >= width(a_value))
            return bitVec(width(a_value), 0);
    }
    return make(Op::BvLshr, sort(a_value), {a_value, a_amount});
}

Term TermTable::bvAshr(Term a_value, Term a_amount)
{
    checkSort(sort(a_value).isBitVec() && sort(a_value) == sort(a_amount), "bvashr of different sorts");
    if (op(a_amount) == Op::BvConst) {
        if (op(a_value) == Op::BvConst)
            return foldBinary(Op::BvAshr, a_value, a_amount);
        if (constValue(a_amount) == 0)
            return a_value;
    }
    return make(Op::BvAshr, sort(a_value), {a_value, a_amount});
}

Term TermTable::bvUlt(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBitVec() && sort(a_left) == sort(a_right), "bvult of different sorts");
    if (op(a_left) == Op::BvConst && op(a_right) == Op::BvConst)
        return foldBinary(Op::BvUlt, a_left, a_right);
    if (a_left == a_right)
        return falseTerm();
    return make(Op::BvUlt, Sort::boolean(), {a_left, a_right});
}

Term TermTable::bvUle(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBitVec() && sort(a_left) == sort(a_right), "bvule of different sorts");
    if (op(a_left) == Op::BvConst && op(a_right) == Op::BvConst)
        return foldBinary(Op::BvUle, a_left, a_right);
    if (a_left == a_right)
        return trueTerm();
    return make(Op::BvUle, Sort::boolean(), {a_left, a_right});
}

Term TermTable::bvSlt(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBitVec() && sort(a_left) == sort(a_right), "bvslt of different sorts");
    if (op(a_left) == Op::BvConst && op(a_right) == Op::BvConst)
        return foldBinary(Op::BvSlt, a_left, a_right);
    if (a_left == a_right)
        return falseTerm();
    return make(Op::BvSlt, Sort::boolean(), {a_left, a_right});
}

Term TermTable::bvSle(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isBitVec() && sort(a_left) == sort(a_right), "bvsle of different sorts");
    if (op(a_left) == Op::BvConst && op(a_right) == Op::BvConst)
        return foldBinary(Op::BvSle, a_left, a_right);
    if (a_left == a_right)
        return trueTerm();
    return make(Op::BvSle, Sort::boolean(), {a_left, a_right});
}

Term TermTable::concat(Term a_high, Term a_low)
{
    checkSort(sort(a_high).isBitVec() && sort(a_low).isBitVec(), "concat of non-bit-vectors");
    unsigned high_width = width(a_high);
    unsigned low_width = width(a_low);
    unsigned total = high_width + low_width;
    checkSort(total <= 64, "concat wider than 64 bits");
    if (op(a_high) == Op::BvConst && op(a_low) == Op::BvConst)
        return bitVec(total, (constValue(a_high) << low_width) | constValue(a_low));
    // Adjacent slices of one value are one slice (a word stored byte by
    // byte and loaded back is the word).
    if (op(a_high) == Op::Extract && op(a_low) == Op::Extract && child(a_high, 0) == child(a_low, 0) &&
        node(a_high).m_param[1] == node(a_low).m_param[0] + 1)
        return extract(node(a_high).m_param[0], node(a_low).m_param[1], child(a_high, 0));
    if (op(a_high) == Op::Concat && op(a_low) == Op::Extract) {
        Term inner_low = child(a_high, 1);
        if (op(inner_low) == Op::Extract && child(inner_low, 0) == child(a_low, 0) &&
            node(inner_low).m_param[1] == node(a_low).m_param[0] + 1)
            return concat(child(a_high, 0),
                          extract(node(inner_low).m_param[0], node(a_low).m_param[1], child(a_low, 0)));
    }
    return make(Op::Concat, Sort::bitVec(total), {a_high, a_low});
}

Term TermTable::extract(unsigned a_high, unsigned a_low, Term a_term)
{
    checkSort(sort(a_term).isBitVec() && a_low <= a_high && a_high < width(a_term), "extract out of range");
    unsigned slice = a_high - a_low + 1;
    if (slice == width(a_term))
        return a_term;
    const Node& from = node(a_term);
    switch (from.m_op) {
    case Op::BvConst:
        return bitVec(slice, from.m_value >> a_low);
    case Op::Extract:
        return extract(a_high + from.m_param[1], a_low + from.m_param[1], from.m_child[0]);
    case Op::Concat: {
        Term high = from.m_child[0];
        Term low = from.m_child[1];
        unsigned low_width = width(low);
        if (a_high < low_width)
            return extract(a_high, a_low, low);
        if (a_low >= low_width)
            return extract(a_high - low_width, a_low - low_width, high);
        break;
    }
    case Op::ZeroExtend:
    case Op::SignExtend: {
        Term inner = from.m_child[0];
        unsigned inner_width = width(inner);
        if (a_high < inner_width)
            return extract(a_high, a_low, inner);
        if (from.m_op == Op::ZeroExtend && a_low >= inner_width)
            return bitVec(slice, 0);
        break;
    }
    default:
        break;
    }
    return make(Op::Extract, Sort::bitVec(slice), {a_term}, 0, a_high, a_low);
}

Term TermTable::zeroExtend(unsigned a_bits, Term a_term)
{
    checkSort(sort(a_term).isBitVec() && width(a_term) + a_bits <= 64, "zero_extend beyond 64 bits");
    if (a_bits == 0)
        return a_term;
    if (op(a_term) == Op::BvConst)
        return bitVec(width(a_term) + a_bits, constValue(a_term));
    return make(Op::ZeroExtend, Sort::bitVec(width(a_term) + a_bits), {a_term}, 0, a_bits);
}

Term TermTable::signExtend(unsigned a_bits, Term a_term)
{
    checkSort(sort(a_term).isBitVec() && width(a_term) + a_bits <= 64, "sign_extend beyond 64 bits");
    if (a_bits == 0)
        return a_term;
    if (op(a_term) == Op::BvConst)
        return bitVec(width(a_term) + a_bits,
                      static_cast<std::uint64_t>(signedValue(constValue(a_term), width(a_term))));
    return make(Op::SignExtend, Sort::bitVec(width(a_term) + a_bits), {a_term}, 0, a_bits);
}

Term TermTable::rotateLeft(unsigned a_amount, Term a_term)
{
    checkSort(sort(a_term).isBitVec(), "rotate of a non-bit-vector");
    unsigned width = this->width(a_term);
    unsigned amount = a_amount % width;
    if (amount == 0)
        return a_term;
    if (op(a_term) == Op::BvConst) {
        std::uint64_t value = constValue(a_term);
        return bitVec(width, (value << amount) | (value >> (width - amount)));
    }
    return make(Op::RotateLeft, sort(a_term), {a_term}, 0, amount);
}

Term TermTable::bitOf(Term a_condition)
{
    return ite(a_condition, bitVec(1, 1), bitVec(1, 0));
}

// ------------------------------------------------------------------ memory

void TermTable::splitOffset(Term a_term, Term& a_base, std::uint64_t& a_offset) const
{
    if (op(a_term) == Op::BvConst) {
        a_base = Term{};
        a_offset = constValue(a_term);
    } else if (op(a_term) == Op::BvAdd && op(child(a_term, 1)) == Op::BvConst) {
        a_base = child(a_term, 0);
        a_offset = constValue(child(a_term, 1));
    } else {
        a_base = a_term;
        a_offset = 0;
    }
}

bool TermTable::differentAddresses(Term a_left, Term a_right) const
{
    Term left_base;
    Term right_base;
    std::uint64_t left_offset = 0;
    std::uint64_t right_offset = 0;
    splitOffset(a_left, left_base, left_offset);
    splitOffset(a_right, right_base, right_offset);
    return left_base == right_base && truncate(left_offset, 32) != truncate(right_offset, 32);
}

std::uint32_t TermTable::mapInsert(std::uint32_t a_root, std::uint32_t a_key, Term a_store)
{
    if (a_root == 0)
        return static_cast<std::uint32_t>(m_map_nodes.push_back(MapNode{a_key, a_store, 0, 0}));
    MapNode copy = m_map_nodes[a_root];
    if (a_key == copy.m_key) {
        copy.m_store = a_store;
        m_map_nodes.push_back(copy);
        return static_cast<std::uint32_t>(m_map_nodes.size() - 1);
    }
    bool left = a_key < copy.m_key;
    std::uint32_t child = mapInsert(left ? copy.m_left : copy.m_right, a_key, a_store);
    (left ? copy.m_left : copy.m_right) = child;
    // Keep the heap order of priorities by rotating the new child up.
    if (mapPriority(m_map_nodes[child].m_key) > mapPriority(copy.m_key)) {
        MapNode raised = m_map_nodes[child];
        if (left) {
            copy.m_left = raised.m_right;
            m_map_nodes.push_back(copy);
            raised.m_right = static_cast<std::uint32_t>(m_map_nodes.size() - 1);
        } else {
            copy.m_right = raised.m_left;
            m_map_nodes.push_back(copy);
            raised.m_left = static_cast<std::uint32_t>(m_map_nodes.size() - 1);
        }
        m_map_nodes.push_back(raised);
        return static_cast<std::uint32_t>(m_map_nodes.size() - 1);
    }
    m_map_nodes.push_back(copy);
    return static_cast<std::uint32_t>(m_map_nodes.size() - 1);
}

Term TermTable::mapFind(std::uint32_t a_root, std::uint32_t a_key) const
{
    for (std::uint32_t at = a_root; at != 0;) {
        const MapNode& node = m_map_nodes[at];
        if (a_key == node.m_key)
            return node.m_store;
        at = a_key < node.m_key ? node.m_left : node.m_right;
    }
    return Term{};
}

const TermTable::StoreIndex* TermTable::storeIndexOf(Term a_term) const
{
    if (a_term.m_id >= m_store_of.size() || m_store_of[a_term.m_id] == 0)
        return nullptr;
    return &m_store_indexes[m_store_of[a_term.m_id] - 1];
}

void TermTable::indexStore(Term a_store)
{
    if (storeIndexOf(a_store))
        return;
    Term below = child(a_store, 0);
    Term base;
    std::uint64_t offset = 0;
    splitOffset(child(a_store, 1), base, offset);
    StoreIndex index;
    index.m_base = base;
    const StoreIndex* under = storeIndexOf(below);
    index.m_depth = under ? under->m_depth + 1 : 1;
    if (under && under->m_base == base) {
        index.m_below = under->m_below;
        index.m_map = under->m_map;
    } else {
        index.m_below = below;
    }
    index.m_map = mapInsert(index.m_map, static_cast<std::uint32_t>(offset), a_store);
    if (m_store_of.size() <= a_store.m_id)
        m_store_of.resize(std::max<std::size_t>(m_nodes.size(), 2 * std::size_t(a_store.m_id) + 1), 0);
    m_store_of[a_store.m_id] = static_cast<std::uint32_t>(m_store_indexes.push_back(index) + 1);
}

std::uint32_t TermTable::storeDepth(Term a_memory) const
{
    const StoreIndex* index = storeIndexOf(a_memory);
    return index ? index->m_depth : 0;
}

Term TermTable::storedByte(Term a_memory, Term a_base, std::uint64_t a_offset, Term& a_read_from) const
{
    a_read_from = a_memory;
    if (op(a_memory) != Op::Store)
        return Term{};
    const StoreIndex* index = storeIndexOf(a_memory);
    VELCOR_ASSERT(index);
    if (index->m_base != a_base)
        return Term{};
    Term found = mapFind(index->m_map, static_cast<std::uint32_t>(a_offset));
    if (!found.isNull())
        return child(found, 2);
    a_read_from = index->m_below;
    return Term{};
}

Term TermTable::select(Term a_memory, Term a_address)
{
    checkSort(sort(a_memory).m_tag == SortTag::Memory && sort(a_address) == Sort::bitVec(32), "select sorts");
    Term base;
    std::uint64_t offset = 0;
    splitOffset(a_address, base, offset);
    Term read_from;
    Term found = storedByte(a_memory, base, offset, read_from);
    if (!found.isNull())
        return found;
    return make(Op::Select, Sort::bitVec(8), {read_from, a_address});
}

Term TermTable::store(Term a_memory, Term a_address, Term a_byte)
{
    checkSort(sort(a_memory).m_tag == SortTag::Memory && sort(a_address) == Sort::bitVec(32) &&
                  sort(a_byte) == Sort::bitVec(8),
              "store sorts");
    // Writing back what is there changes nothing: the byte stored there, or
    // the very select that reads it.
    if (op(a_byte) == Op::Select || op(a_byte) == Op::BvConst) {
        Term base;
        std::uint64_t offset = 0;
        splitOffset(a_address, base, offset);
        Term read_from;
        Term found = storedByte(a_memory, base, offset, read_from);
        if (found.isNull() ? op(a_byte) == Op::Select && child(a_byte, 0) == read_from &&
                                 child(a_byte, 1) == a_address
                           : found == a_byte)
            return a_memory;
    }
    // A second write to the same address hides the first.
    if (op(a_memory) == Op::Store && child(a_memory, 1) == a_address)
        return store(child(a_memory, 0), a_address, a_byte);
    Term made = make(Op::Store, Sort::memory(), {a_memory, a_address, a_byte});
    indexStore(made);
    return made;
}

Term TermTable::storedValue(Term a_memory, Term a_address, unsigned a_bytes) const
{
    Term base;
    std::uint64_t offset = 0;
    splitOffset(a_address, base, offset);
    if (base.isNull())
        return Term{};
    Term value;
    for (unsigned i = 0; i < a_bytes; ++i) {
        Term read_from;
        Term byte = storedByte(a_memory, base, truncate(offset + i, 32), read_from);
        if (byte.isNull() || op(byte) != Op::Extract)
            return Term{};
        Term whole = child(byte, 0);
        unsigned high = width(whole) - 1 - 8 * i;
        if (width(whole) != 8 * a_bytes || node(byte).m_param[0] != high || (i > 0 && whole != value))
            return Term{};
        value = whole;
    }
    return value;
}

Term TermTable::load(Term a_memory, Term a_address, unsigned a_bytes)
{
    Term known = storedValue(a_memory, a_address, a_bytes);
    if (!known.isNull())
        return known;
    Term value = select(a_memory, a_address);
    for (unsigned i = 1; i < a_bytes; ++i)
        value = concat(value, select(a_memory, bvAddConst(a_address, i)));
    return value;
}

Term TermTable::storeBytes(Term a_memory, Term a_address, Term a_value)
{
    unsigned bytes = width(a_value) / 8;
    checkSort(width(a_value) % 8 == 0, "store of a value that is not whole bytes");
    Term memory = a_memory;
    for (unsigned i = 0; i < bytes; ++i) {
        unsigned high = width(a_value) - 1 - 8 * i;
        memory = store(memory, bvAddConst(a_address, i), extract(high, high - 7, a_value));
    }
    return memory;
}

// ---------------------------------------------------------- floating point

Term TermTable::fpFromBits(Sort a_sort, Term a_bits)
{
    checkSort(a_sort.isFloat() && sort(a_bits) == Sort::bitVec(a_sort.floatBits()), "to_fp from bits");
    return make(Op::FpFromBits, a_sort, {a_bits});
}

Term TermTable::fpConvert(Sort a_sort, Term a_mode, Term a_value)
{
    checkSort(a_sort.isFloat() && sort(a_value).isFloat(), "to_fp from float");
    if (sort(a_value) == a_sort)
        return a_value;
    return make(Op::FpConvert, a_sort, {a_mode, a_value});
}

Term TermTable::fpFromSigned(Sort a_sort, Term a_mode, Term a_value)
{
    checkSort(a_sort.isFloat() && sort(a_value).isBitVec(), "to_fp from signed");
    return make(Op::FpFromSigned, a_sort, {a_mode, a_value});
}

Term TermTable::fpToSigned(unsigned a_width, Term a_mode, Term a_value)
{
    checkSort(sort(a_value).isFloat(), "fp.to_sbv of a non-float");
    return make(Op::FpToSigned, Sort::bitVec(a_width), {a_mode, a_value}, 0, a_width);
}

Term TermTable::fpAdd(Term a_mode, Term a_left, Term a_right)
{
    checkSort(sort(a_left).isFloat() && sort(a_left) == sort(a_right), "fp.add sorts");
    return make(Op::FpAdd, sort(a_left), {a_mode, a_left, a_right});
}

Term TermTable::fpSub(Term a_mode, Term a_left, Term a_right)
{
    checkSort(sort(a_left).isFloat() && sort(a_left) == sort(a_right), "fp.sub sorts");
    return make(Op::FpSub, sort(a_left), {a_mode, a_left, a_right});
}

Term TermTable::fpMul(Term a_mode, Term a_left, Term a_right)
{
    checkSort(sort(a_left).isFloat() && sort(a_left) == sort(a_right), "fp.mul sorts");
    return make(Op::FpMul, sort(a_left), {a_mode, a_left, a_right});
}

Term TermTable::fpDiv(Term a_mode, Term a_left, Term a_right)
{
    checkSort(sort(a_left).isFloat() && sort(a_left) == sort(a_right), "fp.div sorts");
    return make(Op::FpDiv, sort(a_left), {a_mode, a_left, a_right});
}

Term TermTable::fpFma(Term a_mode, Term a_left, Term a_right, Term a_addend)
{
    checkSort(sort(a_left).isFloat() && sort(a_left) == sort(a_right) && sort(a_left) == sort(a_addend),
              "fp.fma sorts");
    return make(Op::FpFma, sort(a_left), {a_mode, a_left, a_right, a_addend});
}

Term TermTable::fpNeg(Term a_value)
{
    checkSort(sort(a_value).isFloat(), "fp.neg of a non-float");
    if (op(a_value) == Op::FpNeg)
        return child(a_value, 0);
    return make(Op::FpNeg, sort(a_value), {a_value});
}

Term TermTable::fpAbs(Term a_value)
{
    checkSort(sort(a_value).isFloat(), "fp.abs of a non-float");
    return make(Op::FpAbs, sort(a_value), {a_value});
}

Term TermTable::fpLt(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isFloat() && sort(a_left) == sort(a_right), "fp.lt sorts");
    return make(Op::FpLt, Sort::boolean(), {a_left, a_right});
}

Term TermTable::fpLeq(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isFloat() && sort(a_left) == sort(a_right), "fp.leq sorts");
    return make(Op::FpLeq, Sort::boolean(), {a_left, a_right});
}

Term TermTable::fpEq(Term a_left, Term a_right)
{
    checkSort(sort(a_left).isFloat() && sort(a_left) == sort(a_right), "fp.eq sorts");
    return make(Op::FpEq, Sort::boolean(), {a_left, a_right});
}

Term TermTable::fpIsNaN(Term a_value)
{
    checkSort(sort(a_value).isFloat(), "fp.isNaN of a non-float");
    return make(Op::FpIsNaN, Sort::boolean(), {a_value});
}

Term TermTable::fpIsZero(Term a_value)
{
    checkSort(sort(a_value).isFloat(), "fp.isZero of a non-float");
    return make(Op::FpIsZero, Sort::boolean(), {a_value});
}

Term TermTable::fpIsNegative(Term a_value)
{
    checkSort(sort(a_value).isFloat(), "fp.isNegative of a non-float");
    return make(Op::FpIsNegative, Sort::boolean(), {a_value});
}

// ------------------------------------------------------------- rebuilding

Term TermTable::withChildren(Term a_term, const Term* c)
{
    const Node n = node(a_term);
    switch (n.m_op) {
    case Op::Symbol:
    case Op::BoolConst:
    case Op::BvConst:
    case Op::RoundingMode:
        return a_term;
    case Op::Not: return notOf(c[0]);
    case Op::And: return andOf(c[0], c[1]);
    case Op::Or: return orOf(c[0], c[1]);
    case Op::Implies: return implies(c[0], c[1]);
    case Op::Ite: return ite(c[0], c[1], c[2]);
    case Op::Eq: return eq(c[0], c[1]);
    case Op::BvNot: return bvNot(c[0]);
    case Op::BvNeg: return bvNeg(c[0]);
    case Op::BvAdd: return bvAdd(c[0], c[1]);
    case Op::BvSub: return bvSub(c[0], c[1]);
    case Op::BvMul: return bvMul(c[0], c[1]);
    case Op::BvUdiv: return bvUdiv(c[0], c[1]);
    case Op::BvUrem: return bvUrem(c[0], c[1]);
    case Op::BvSdiv: return bvSdiv(c[0], c[1]);
    case Op::BvAnd: return bvAnd(c[0], c[1]);
    case Op::BvOr: return bvOr(c[0], c[1]);
    case Op::BvXor: return bvXor(c[0], c[1]);
    case Op::BvShl: return bvShl(c[0], c[1]);
    case Op::BvLshr: return bvLshr(c[0], c[1]);
    case Op::BvAshr: return bvAshr(c[0], c[1]);
    case Op::BvUlt: return bvUlt(c[0], c[1]);
    case Op::BvUle: return bvUle(c[0], c[1]);
    case Op::BvSlt: return bvSlt(c[0], c[1]);
    case Op::BvSle: return bvSle(c[0], c[1]);
    case Op::Concat: return concat(c[0], c[1]);
    case Op::Extract: return extract(n.m_param[0], n.m_param[1], c[0]);
    case Op::ZeroExtend: return zeroExtend(n.m_param[0], c[0]);
    case Op::SignExtend: return signExtend(n.m_param[0], c[0]);
    case Op::RotateLeft: return rotateLeft(n.m_param[0], c[0]);
    case Op::Select: return select(c[0], c[1]);
    case Op::Store: return store(c[0], c[1], c[2]);
    case Op::FpFromBits: return fpFromBits(n.m_sort, c[0]);
    case Op::FpConvert: return fpConvert(n.m_sort, c[0], c[1]);
    case Op::FpFromSigned: return fpFromSigned(n.m_sort, c[0], c[1]);
    case Op::FpToSigned: return fpToSigned(n.m_param[0], c[0], c[1]);
    case Op::FpAdd: return fpAdd(c[0], c[1], c[2]);
    case Op::FpSub: return fpSub(c[0], c[1], c[2]);
    case Op::FpMul: return fpMul(c[0], c[1], c[2]);
    case Op::FpDiv: return fpDiv(c[0], c[1], c[2]);
    case Op::FpFma: return fpFma(c[0], c[1], c[2], c[3]);
    case Op::FpNeg: return fpNeg(c[0]);
    case Op::FpAbs: return fpAbs(c[0]);
    case Op::FpLt: return fpLt(c[0], c[1]);
    case Op::FpLeq: return fpLeq(c[0], c[1]);
    case Op::FpEq: return fpEq(c[0], c[1]);
    case Op::FpIsNaN: return fpIsNaN(c[0]);
    case Op::FpIsZero: return fpIsZero(c[0]);
    case Op::FpIsNegative: return fpIsNegative(c[0]);
    }
    return a_term;
}

Term TermTable::replace(Term a_term, Term a_from, Term a_to)
{
    // Children first, each distinct term once.
    std::unordered_map<std::uint32_t, Term> done;
    std::vector<std::pair<Term, bool>> work{{a_term, false}};
    while (!work.empty()) {
        auto [term, expanded] = work.back();
        work.pop_back();
        if (done.count(term.m_id))
            continue;
        if (term == a_from) {
            done.emplace(term.m_id, a_to);
            continue;
        }
        const Node& n = node(term);
        if (!expanded) {
            work.emplace_back(term, true);
            for (int i = 0; i < n.m_arity; ++i)
                if (!done.count(n.m_child[i].m_id))
                    work.emplace_back(n.m_child[i], false);
            continue;
        }
        Term children[4];
        bool changed = false;
        for (int i = 0; i < n.m_arity; ++i) {
            children[i] = done.at(n.m_child[i].m_id);
            changed = changed || children[i] != n.m_child[i];
        }
        done.emplace(term.m_id, changed ? withChildren(term, children) : term);
    }
    return done.at(a_term.m_id);
}

} // namespace smt
