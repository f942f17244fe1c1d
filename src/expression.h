// Symbolic expressions: trees of immutable-in-practice nodes shared through
// reference-counted handles. Constructors normalize (a load of an address,
// x AND x, p OR NOT p, nested conditionals on the same condition); every
// transformation builds new nodes and shares unchanged subtrees.
#ifndef VELCOR_SRC_EXPRESSION_H
#define VELCOR_SRC_EXPRESSION_H

#include <cstdint>
#include <string>
#include <vector>

#include "TN.h"
#include "common.h"
#include "misc/compact_text.h"
#include "misc/handle.h"
#include "misc/small_object_pool.h"

enum expression_type_t : std::int32_t {
    CONST_EXP = 0,
    LABEL_EXP = 1,
    VAR_EXP = 2,
    UNARY_EXP = 3,
    BINARY_EXP = 4,
    TRINARY_EXP = 5,
    BIT_ARRAY_EXP = 6
};

enum operator_t : std::int32_t {
    NOOP = 0,
    ADD = 1,
    SUB = 2,
    NEG = 3,
    NOT = 4,
    ADDRESS = 5,
    SHL = 6,
    CASE = 7,
    AND = 8,
    OR = 9,
    EQ = 10,
    NEQ = 11,
    GT = 12,
    GE = 13,
    LT = 14,
    UPDATE = 15,
    LOOKUP = 16,
    FUNC = 17,
    IF = 18,
    MUL = 19,
    DIV = 20,
    ADDR = 21,
    LD = 22,
    ELSE = 23,
    SELECT_BIT = 24,
    ANDC = 25,
    CNTLZW = 26
};

// Number of bits of a register, the size of a bit array.
constexpr int REGISTER_SIZE_IN_BITS = 32;

class Expression;
using ExpHandle = Handle<Expression>;

// Structural equality (not aware of commutativity).
bool operator==(const ExpHandle& a_left, const ExpHandle& a_right);
inline bool operator!=(const ExpHandle& a_left, const ExpHandle& a_right) { return !(a_left == a_right); }

class Expression : public Shared {
public:
    virtual ~Expression() = default;
    VELCOR_POOLED_ALLOCATION

    virtual bool specialPrint() = 0;
    virtual ExpHandle ifSimplify(const char* a_name, const ExpHandle& a_exp, const ExpHandle& a_self);
    virtual ExpHandle copyExp(const ExpHandle& a_self) = 0;
    virtual void print(TN* a_tn, bool a_prime, system_t a_system, bool a_flag);
    virtual void print(bool a_prime, system_t a_system, bool a_flag) = 0;
    virtual void print(const char* a_name, bool a_prime, system_t a_system, bool a_flag);
    virtual ExpHandle Value() = 0;
    virtual TN* TNValue() = 0;
    virtual const char* getName();
    virtual ExpHandle getExp();
    virtual ExpHandle leftValue();
    virtual ExpHandle rightValue();
    virtual ExpHandle operand(int a_index);
    virtual void setOperand(int a_index, const ExpHandle& a_value);
    virtual ExpHandle substituteExp(const char* a_name, const ExpHandle& a_exp, const ExpHandle& a_self);
    virtual bool dependsOnVar(const char* a_name) = 0;
    virtual bool isConst();
    virtual int constValue() = 0;
    virtual const char* getValue() = 0;

    bool ifPrint() const { return m_operator == IF; }
    bool isIf() const { return m_operator == IF; }
    bool isVar() const { return m_type == VAR_EXP; }
    void setMark() { mark = true; }
    bool getMark() const { return mark; }
    void resetMark() { mark = false; }

    // "FRESH1", "FRESH2", ... in call order; at most 10000 in one run.
    static std::string getFresh();
    // Restarts the fresh-name numbering (a new run in the same process).
    static void resetFresh() { last = 0; }

    // At most this many nodes live at once (by default 20,000,000, about
    // two gigabytes): a listing whose values grow past that ends the run as
    // an exhausted capacity instead of exhausting the memory. Embeddings
    // with less memory to spare may lower it.
    static void setNodeLimit(std::size_t a_limit) { NodeCount::s_limit = a_limit; }
    static std::size_t liveNodes() { return NodeCount::s_live; }

    // a_exp->copyExp(a_exp), or the stop for the node limit before any of
    // the copy is made when the copy would not fit: shared parts that a copy
    // must make anew for every path to them can be exponentially many.
    static ExpHandle copyOf(const ExpHandle& a_exp);

    // A fingerprint of the node's structure: structurally equal nodes have
    // equal fingerprints, so different fingerprints prove inequality without
    // walking the trees.
    std::uint64_t shape() const { return m_shape; }
    // The fingerprint of a node of that kind, operator and parts' prints.
    static std::uint64_t shapeOf(expression_type_t a_type, operator_t a_operator, std::uint64_t a_first,
                                 std::uint64_t a_second = 0, std::uint64_t a_third = 0);

    // Whether copyExp may hand out this very node where a copy is asked for:
    // true when a copy could not be told from the original, i.e. the subtree
    // holds nothing that is equal only to itself (bit arrays, labels,
    // variables without a name) or
    // that remembers being printed (comparisons), and copying would rebuild
    // it unchanged. Sharing such subtrees keeps copies of shared trees linear.
    bool shareable() const { return m_shareable; }

private:
    // Counts the nodes alive, copies included, and refuses one past the
    // limit. Declared first, so that a refused node has built nothing.
    class NodeCount {
    public:
        NodeCount() { add(); }
        NodeCount(const NodeCount&) { add(); }
        NodeCount& operator=(const NodeCount&) { return *this; }
        ~NodeCount() { --s_live; }

        static std::size_t s_live;
        static std::size_t s_limit;

    private:
        static void add();
    };
    NodeCount m_count;

    // The members are ordered so that the node packs into six words: there
    // are hundreds of thousands of nodes.
public:
    bool mark = false;

protected:
    bool m_shareable = false;
    bool m_const = false;

public:
    expression_type_t m_type;
    operator_t m_operator = NOOP;
    static int last;

protected:
    explicit Expression(expression_type_t a_type) : m_type(a_type) {}
    // Computes the fingerprint from the kind, the operator and a_parts.
    void setShape(std::uint64_t a_first, std::uint64_t a_second = 0, std::uint64_t a_third = 0);

    // This node where it may be shared, a copy of it otherwise.
    static ExpHandle shareOrCopy(const ExpHandle& a_exp);

    // isConst and constValue of a node with operands (m_const above), valid
    // while TN::constGeneration() equals m_const_generation: each node of a
    // shared subtree is then evaluated once, not once per path to it.
    std::int32_t m_const_value = 0;
    std::uint64_t m_shape = 0;
    std::uint64_t m_const_generation = 0;
};

class ConstExp : public Expression {
public:
    explicit ConstExp(int a_value);
    bool specialPrint() override { return false; }
    ExpHandle copyExp(const ExpHandle& a_self) override;
    using Expression::print;
    void print(bool a_prime, system_t a_system, bool a_flag) override;
    ExpHandle Value() override { return ExpHandle(); }
    TN* TNValue() override { return nullptr; }
    ExpHandle substituteExp(const char* a_name, const ExpHandle& a_exp, const ExpHandle& a_self) override;
    bool dependsOnVar(const char*) override { return false; }
    bool isConst() override { return true; }
    int constValue() override { return m_value; }
    const char* getValue() override { return nullptr; }
    // A constant is never a variable.
    bool isVar() const { return false; }

    std::int32_t m_value;
};

class LabelExp : public Expression {
public:
    // The label text is not copied: it must outlive the node.
    explicit LabelExp(const char* a_value);
    bool specialPrint() override { return false; }
    ExpHandle copyExp(const ExpHandle& a_self) override;
    using Expression::print;
    void print(bool a_prime, system_t a_system, bool a_flag) override;
    ExpHandle Value() override { return ExpHandle(); }
    TN* TNValue() override { return nullptr; }
    ExpHandle substituteExp(const char* a_name, const ExpHandle& a_exp, const ExpHandle& a_self) override;
    bool dependsOnVar(const char*) override { return false; }
    bool isConst() override { return true; }
    int constValue() override { return 0; }
    const char* getValue() override { return m_value; }

    const char* m_value;
};

class VarExp : public Expression {
public:
    // A variable on an operand: its name is the operand's (read afresh, since
    // the operand table may set the operand again).
    explicit VarExp(TN* a_value);
    // A variable known by name only: the node keeps its own copy.
    explicit VarExp(const char* a_name);
    bool specialPrint() override { return false; }
    ExpHandle copyExp(const ExpHandle& a_self) override;
    using Expression::print;
    void print(bool a_prime, system_t a_system, bool a_flag) override;
    ExpHandle Value() override { return ExpHandle(); }
    TN* TNValue() override { return m_value; }
    const char* getName() override { return m_value ? m_value->TNName() : m_name.c_str(); }
    ExpHandle substituteExp(const char* a_name, const ExpHandle& a_exp, const ExpHandle& a_self) override;
    bool dependsOnVar(const char* a_name) override;
    bool isConst() override { return m_value && m_value->isConst(); }
    int constValue() override;
    const char* getValue() override { return nullptr; }

    TN* m_value;
    misc::CompactText m_name;
};

class UnaryExp : public Expression {
public:
    UnaryExp(operator_t a_operator, const ExpHandle& a_value);
    bool specialPrint() override { return false; }
    ExpHandle copyExp(const ExpHandle& a_self) override;
    using Expression::print;
    void print(bool a_prime, system_t a_system, bool a_flag) override;
    ExpHandle Value() override { return m_operand; }
    TN* TNValue() override { return nullptr; }
    ExpHandle operand(int) override { return m_operand; }
    ExpHandle substituteExp(const char* a_name, const ExpHandle& a_exp, const ExpHandle& a_self) override;
    bool dependsOnVar(const char* a_name) override;
    bool isConst() override;
    int constValue() override;
    const char* getValue() override { return nullptr; }

    ExpHandle m_operand;

private:
    void evaluateConst();
};

class BinaryExp : public Expression {
public:
    BinaryExp(operator_t a_operator, const ExpHandle& a_left, const ExpHandle& a_right);
    bool specialPrint() override { return false; }
    ExpHandle copyExp(const ExpHandle& a_self) override;
    using Expression::print;
    void print(bool a_prime, system_t a_system, bool a_flag) override;
    ExpHandle Value() override { return ExpHandle(); }
    TN* TNValue() override { return nullptr; }
    const char* getName() override;
    ExpHandle getExp() override;
    ExpHandle leftValue() override { return l_operand; }
    ExpHandle rightValue() override { return r_operand; }
    ExpHandle operand(int a_index) override;
    void setOperand(int a_index, const ExpHandle& a_value) override;
    ExpHandle substituteExp(const char* a_name, const ExpHandle& a_exp, const ExpHandle& a_self) override;
    bool dependsOnVar(const char* a_name) override;
    bool isConst() override;
    int constValue() override;
    const char* getValue() override { return nullptr; }

    ExpHandle l_operand;
    ExpHandle r_operand;

private:
    void addComparisonAssertion();
    void evaluateConst();
};

class TrinaryExp : public Expression {
public:
    TrinaryExp(operator_t a_operator, const ExpHandle& a_first, const ExpHandle& a_second, const ExpHandle& a_third);
    bool specialPrint() override;
    ExpHandle ifSimplify(const char* a_name, const ExpHandle& a_exp, const ExpHandle& a_self) override;
    ExpHandle copyExp(const ExpHandle& a_self) override;
    void print(TN* a_tn, bool a_prime, system_t a_system, bool a_flag) override;
    void print(bool a_prime, system_t a_system, bool a_flag) override;
    using Expression::print;
    ExpHandle Value() override { return ExpHandle(); }
    TN* TNValue() override { return nullptr; }
    const char* getName() override;
    ExpHandle operand(int a_index) override;
    void setOperand(int a_index, const ExpHandle& a_value) override;
    ExpHandle substituteExp(const char* a_name, const ExpHandle& a_exp, const ExpHandle& a_self) override;
    bool dependsOnVar(const char* a_name) override;
    bool isConst() override;
    int constValue() override { return 0; }
    const char* getValue() override { return nullptr; }

    ExpHandle operand1;
    ExpHandle operand2;
    ExpHandle operand3;

private:
    void updateShareable(bool a_second_kept, bool a_third_kept);
};

class BitArrayExp : public Expression {
public:
    // Exactly one handle per bit of a register, index 0 first.
    explicit BitArrayExp(const std::vector<ExpHandle>& a_values);
    bool specialPrint() override;
    ExpHandle copyExp(const ExpHandle& a_self) override;
    using Expression::print;
    void print(bool a_prime, system_t a_system, bool a_flag) override;
    ExpHandle Value() override;
    TN* TNValue() override;
    const char* getName() override;
    ExpHandle operand(int a_index) override;
    void setOperand(int a_index, const ExpHandle& a_value) override;
    ExpHandle substituteExp(const char* a_name, const ExpHandle& a_exp, const ExpHandle& a_self) override;
    bool dependsOnVar(const char* a_name) override;
    bool isConst() override;
    int constValue() override;
    const char* getValue() override { return nullptr; }

    std::vector<ExpHandle> operands;
};

#endif
