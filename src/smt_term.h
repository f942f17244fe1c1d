// Terms of the exact obligations: SMT-LIB 2 terms over booleans,
// bit-vectors, byte-addressed memories and IEEE floating point.
//
// One node per distinct term: the table hands out small handles (indexes)
// and builds each node once, so equal terms are equal handles, sharing is
// free and a printer can name every shared subterm. The builders simplify
// only where the result is the same function of the leaves (constant
// folding, identities, read-over-write on provably equal or provably
// different addresses); everything else is left to the solver.
#ifndef VELCOR_SRC_SMT_TERM_H
#define VELCOR_SRC_SMT_TERM_H

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "misc/chunked_vector.h"

namespace smt {

// A handle: the index of a node in its table. The default handle is no term.
struct Term {
    std::uint32_t m_id = 0;
    bool isNull() const { return m_id == 0; }
    bool operator==(Term a_other) const { return m_id == a_other.m_id; }
    bool operator!=(Term a_other) const { return m_id != a_other.m_id; }
};

enum class SortTag : std::uint8_t { Bool, BitVec, Float, Memory, RoundingMode };

// Bool, (_ BitVec width), (_ FloatingPoint eb sb), the memory
// (Array (_ BitVec 32) (_ BitVec 8)), or RoundingMode.
struct Sort {
    SortTag m_tag = SortTag::Bool;
    std::uint8_t m_exponent = 0;  // Float: exponent bits
    std::uint16_t m_width = 0;    // BitVec: width; Float: significand bits

    static Sort boolean() { return Sort{SortTag::Bool, 0, 0}; }
    static Sort bitVec(unsigned a_width) { return Sort{SortTag::BitVec, 0, static_cast<std::uint16_t>(a_width)}; }
    static Sort floating(unsigned a_exponent, unsigned a_significand)
    {
        return Sort{SortTag::Float, static_cast<std::uint8_t>(a_exponent), static_cast<std::uint16_t>(a_significand)};
    }
    static Sort memory() { return Sort{SortTag::Memory, 0, 0}; }
    static Sort roundingMode() { return Sort{SortTag::RoundingMode, 0, 0}; }
    static Sort doubleFloat() { return floating(11, 53); }
    static Sort singleFloat() { return floating(8, 24); }

    bool isBool() const { return m_tag == SortTag::Bool; }
    bool isBitVec() const { return m_tag == SortTag::BitVec; }
    bool isFloat() const { return m_tag == SortTag::Float; }
    unsigned width() const { return m_width; }
    // Total bits of a float sort (exponent + significand).
    unsigned floatBits() const { return unsigned(m_exponent) + m_width; }
    bool operator==(const Sort& a_other) const
    {
        return m_tag == a_other.m_tag && m_exponent == a_other.m_exponent && m_width == a_other.m_width;
    }
    bool operator!=(const Sort& a_other) const { return !(*this == a_other); }
};

enum class Op : std::uint8_t {
    // leaves
    Symbol,       // a declared constant; m_value indexes the names
    BoolConst,    // m_value 0 or 1
    BvConst,      // m_value, width at most 64
    RoundingMode, // m_value: a RoundingMode
    // booleans
    Not,
    And,
    Or,
    Implies,
    Ite,
    Eq,
    // bit-vectors
    BvNot,
    BvNeg,
    BvAdd,
    BvSub,
    BvMul,
    BvUdiv,
    BvUrem,
    BvSdiv,
    BvAnd,
    BvOr,
    BvXor,
    BvShl,
    BvLshr,
    BvAshr,
    BvUlt,
    BvUle,
    BvSlt,
    BvSle,
    Concat,
    Extract,    // m_param[0] high bit, m_param[1] low bit
    ZeroExtend, // m_param[0] added bits
    SignExtend, // m_param[0] added bits
    RotateLeft, // m_param[0] amount
    // memory
    Select,
    Store,
    // floating point
    FpFromBits,   // (_ to_fp eb sb) of a bit-vector of eb+sb bits
    FpConvert,    // (_ to_fp eb sb) rm float
    FpFromSigned, // (_ to_fp eb sb) rm signed bit-vector
    FpToSigned,   // (_ fp.to_sbv m_param[0]) rm float
    FpAdd,
    FpSub,
    FpMul,
    FpDiv,
    FpFma,
    FpNeg,
    FpAbs,
    FpLt,
    FpLeq,
    FpEq,
    FpIsNaN,
    FpIsZero,
    FpIsNegative,
};

enum class RoundingMode : std::uint8_t { NearestEven, TowardZero, TowardPositive, TowardNegative };

struct Node {
    Op m_op = Op::Symbol;
    std::uint8_t m_arity = 0;
    Sort m_sort;
    std::uint32_t m_param[2] = {0, 0};
    std::uint64_t m_value = 0;
    Term m_child[4];
};

class TermTable {
public:
    TermTable();
    TermTable(const TermTable&) = delete;
    TermTable& operator=(const TermTable&) = delete;

    const Node& node(Term a_term) const { return m_nodes[a_term.m_id]; }
    Op op(Term a_term) const { return node(a_term).m_op; }
    Sort sort(Term a_term) const { return node(a_term).m_sort; }
    unsigned width(Term a_term) const { return node(a_term).m_sort.width(); }
    Term child(Term a_term, int a_index) const { return node(a_term).m_child[a_index]; }
    std::size_t size() const { return m_nodes.size() - 1; }
    // Makes room for about a_terms terms at once, rather than growing the
    // lookup table step by step (each step hashes every term again).
    void reserve(std::size_t a_terms);

    // Leaves.
    // A declared constant; the same name always gives the same term (its
    // sort must agree).
    Term symbol(const std::string& a_name, Sort a_sort);
    const std::string& symbolName(Term a_term) const;
    Term boolean(bool a_value);
    Term trueTerm() { return boolean(true); }
    Term falseTerm() { return boolean(false); }
    Term bitVec(unsigned a_width, std::uint64_t a_value);
    Term roundingMode(RoundingMode a_mode);

    bool isConst(Term a_term) const;
    bool isTrue(Term a_term) const;
    bool isFalse(Term a_term) const;
    // The value of a bit-vector constant (zero-extended to 64 bits).
    std::uint64_t constValue(Term a_term) const { return node(a_term).m_value; }

    // Booleans.
    Term notOf(Term a_term);
    Term andOf(Term a_left, Term a_right);
    Term orOf(Term a_left, Term a_right);
    Term implies(Term a_left, Term a_right);
    Term ite(Term a_condition, Term a_then, Term a_else);
    Term eq(Term a_left, Term a_right);

    // Bit-vectors (both operands of one width).
    Term bvNot(Term a_term);
    Term bvNeg(Term a_term);
    Term bvAdd(Term a_left, Term a_right);
    Term bvSub(Term a_left, Term a_right);
    Term bvMul(Term a_left, Term a_right);
    Term bvUdiv(Term a_left, Term a_right);
    Term bvUrem(Term a_left, Term a_right);
    Term bvSdiv(Term a_left, Term a_right);
    Term bvAnd(Term a_left, Term a_right);
    Term bvOr(Term a_left, Term a_right);
    Term bvXor(Term a_left, Term a_right);
    Term bvShl(Term a_value, Term a_amount);
    Term bvLshr(Term a_value, Term a_amount);
    Term bvAshr(Term a_value, Term a_amount);
    Term bvUlt(Term a_left, Term a_right);
    Term bvUle(Term a_left, Term a_right);
    Term bvSlt(Term a_left, Term a_right);
    Term bvSle(Term a_left, Term a_right);
    Term concat(Term a_high, Term a_low);
    Term extract(unsigned a_high, unsigned a_low, Term a_term);
    Term zeroExtend(unsigned a_bits, Term a_term);
    Term signExtend(unsigned a_bits, Term a_term);
    Term rotateLeft(unsigned a_amount, Term a_term);
    // a_term plus a constant, in a_term's width.
    Term bvAddConst(Term a_term, std::uint64_t a_value);
    // A one-bit-wide boolean view: #b1 when a_condition holds.
    Term bitOf(Term a_condition);

    // Memory: one byte per address.
    Term select(Term a_memory, Term a_address);
    Term store(Term a_memory, Term a_address, Term a_byte);
    // Big-endian loads and stores of a_bytes bytes (1, 2, 4 or 8).
    Term load(Term a_memory, Term a_address, unsigned a_bytes);
    // The value of a_bytes bytes at a_address when the stores on top of
    // a_memory wrote them all as the slices of one value, in order (a word
    // stored and loaded back), without making a term; null otherwise. What
    // load gives then is that value.
    Term storedValue(Term a_memory, Term a_address, unsigned a_bytes) const;
    Term storeBytes(Term a_memory, Term a_address, Term a_value);
    // The number of stores between a memory and the memory at the bottom
    // of its chain (an array that no store made).
    std::uint32_t storeDepth(Term a_memory) const;
    // Whether two addresses are provably different (distinct constants, or
    // the same term plus distinct constants).
    bool differentAddresses(Term a_left, Term a_right) const;

    // Floating point.
    Term fpFromBits(Sort a_sort, Term a_bits);
    Term fpConvert(Sort a_sort, Term a_mode, Term a_value);
    Term fpFromSigned(Sort a_sort, Term a_mode, Term a_value);
    Term fpToSigned(unsigned a_width, Term a_mode, Term a_value);
    Term fpAdd(Term a_mode, Term a_left, Term a_right);
    Term fpSub(Term a_mode, Term a_left, Term a_right);
    Term fpMul(Term a_mode, Term a_left, Term a_right);
    Term fpDiv(Term a_mode, Term a_left, Term a_right);
    Term fpFma(Term a_mode, Term a_left, Term a_right, Term a_addend);
    Term fpNeg(Term a_value);
    Term fpAbs(Term a_value);
    Term fpLt(Term a_left, Term a_right);
    Term fpLeq(Term a_left, Term a_right);
    Term fpEq(Term a_left, Term a_right);
    Term fpIsNaN(Term a_value);
    Term fpIsZero(Term a_value);
    Term fpIsNegative(Term a_value);

    // The node a_term with other children (as many as it has), built again
    // by its builder, so that it simplifies with them.
    Term withChildren(Term a_term, const Term* a_children);
    // a_term with every occurrence of a_from replaced by a_to.
    Term replace(Term a_term, Term a_from, Term a_to);

    // Splits a_term into a base and a constant addend (base + constant);
    // a constant has a null base.
    void splitOffset(Term a_term, Term& a_base, std::uint64_t& a_offset) const;

private:
    Term make(Op a_op, Sort a_sort, std::initializer_list<Term> a_children, std::uint64_t a_value = 0,
              std::uint32_t a_param0 = 0, std::uint32_t a_param1 = 0);
    Term intern(const Node& a_node);
    std::size_t hashOf(const Node& a_node) const;
    bool sameNode(const Node& a_left, const Node& a_right) const;
    void grow();
    void rehash(std::size_t a_slots);
    void checkSort(bool a_condition, const char* a_what) const;
    Term commutative(Op a_op, Sort a_sort, Term a_left, Term a_right);
    Term foldBinary(Op a_op, Term a_left, Term a_right);

    // Read over write without walking: every store knows, for the stretch
    // of stores below it that share its address base (a register's value,
    // or none for constant addresses), the latest store at each offset, in
    // a persistent map (a treap copied along the path of each insertion),
    // and the memory under that stretch. A load with that base finds its
    // offset at once; stores at other offsets are provably elsewhere. A
    // store of another base may be anywhere: it stops the search.
    struct StoreIndex {
        std::uint32_t m_depth = 0; // stores from the memory at the bottom
        Term m_base;
        Term m_below;            // the memory under the stretch
        std::uint32_t m_map = 0; // offset -> store, a treap root
    };
    // A node's priority is a hash of its key, computed when needed.
    struct MapNode {
        std::uint32_t m_key;
        Term m_store;
        std::uint32_t m_left;
        std::uint32_t m_right;
    };
    // The byte the stores on top of a_memory wrote at a_base + a_offset
    // (null when unknown), and the memory a select of it reads otherwise.
    Term storedByte(Term a_memory, Term a_base, std::uint64_t a_offset, Term& a_read_from) const;
    std::uint32_t mapInsert(std::uint32_t a_root, std::uint32_t a_key, Term a_store);
    Term mapFind(std::uint32_t a_root, std::uint32_t a_key) const;
    void indexStore(Term a_store);

    misc::ChunkedVector<Node> m_nodes;
    struct Slot {
        std::uint32_t m_id;    // node index, 0 empty
        std::uint32_t m_check; // the high half of the node's hash
    };
    std::vector<Slot> m_slots; // open addressing
    misc::ChunkedVector<MapNode> m_map_nodes; // index 0: the empty map
    // Each store term's index: m_store_of[term] is its place in
    // m_store_indexes plus one, 0 for other terms.
    const StoreIndex* storeIndexOf(Term a_term) const;
    std::vector<std::uint32_t> m_store_of;
    misc::ChunkedVector<StoreIndex> m_store_indexes;
    std::vector<std::string> m_names;
    std::unordered_map<std::string, Term> m_symbols;
};

// The value of a_value in a_width bits (the rest cleared).
std::uint64_t truncate(std::uint64_t a_value, unsigned a_width);
// The signed value of the low a_width bits of a_value.
std::int64_t signedValue(std::uint64_t a_value, unsigned a_width);

} // namespace smt

#endif
