// Expression nodes: construction with the normalizing rules, structural
// equality, deep copy, substitution with constant folding and constant
// evaluation. Printing is in expression_print.cpp.
#include "expression.h"

#include <climits>
#include <cstring>
#include <iostream>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "misc/hash_map.h"
#include "misc/stop.h"

int Expression::last = 0;
std::size_t Expression::NodeCount::s_live = 0;
std::size_t Expression::NodeCount::s_limit = 20000000;

void Expression::NodeCount::add()
{
    if (s_live >= s_limit)
        stopCapacity("more than " + std::to_string(s_limit) + " expression nodes");
    ++s_live;
}

namespace {

// The nodes that copyExp makes for a_exp (itself always, then every part
// that is not shared), counted up to a_cap. A part met again along another
// path is copied again, and counted again, from its remembered count.
class CopySize {
public:
    explicit CopySize(std::size_t a_cap) : m_cap(a_cap) {}

    std::size_t ofCopy(Expression* a_exp)
    {
        int parts = 0;
        switch (a_exp->m_type) {
        case UNARY_EXP:
            parts = 1;
            break;
        case BINARY_EXP:
            parts = 2;
            break;
        case TRINARY_EXP:
            parts = 3;
            break;
        case BIT_ARRAY_EXP:
            parts = REGISTER_SIZE_IN_BITS;
            break;
        default:
            break;
        }
        std::size_t total = 1;
        for (int i = 0; i < parts && total <= m_cap; ++i)
            total = add(total, ofPart(part(a_exp, i)));
        return total;
    }

private:
    static ExpHandle part(Expression* a_exp, int a_index)
    {
        switch (a_exp->m_type) {
        case UNARY_EXP:
            return a_exp->operand(1);
        case BINARY_EXP:
            return a_index == 0 ? a_exp->leftValue() : a_exp->rightValue();
        case TRINARY_EXP:
            return a_exp->operand(a_index + 1);
        default:
            return a_exp->operand(a_index);
        }
    }

    std::size_t ofPart(const ExpHandle& a_part)
    {
        if (a_part->shareable())
            return 0;
        auto known = m_known.find(a_part.data());
        if (known != m_known.end())
            return known->second;
        std::size_t size = ofCopy(a_part.data());
        m_known[a_part.data()] = size;
        return size;
    }

    std::size_t add(std::size_t a_left, std::size_t a_right) const
    {
        return a_right > m_cap - a_left ? m_cap + 1 : a_left + a_right;
    }

    std::size_t m_cap;
    std::unordered_map<const Expression*, std::size_t> m_known;
};

} // namespace

ExpHandle Expression::copyOf(const ExpHandle& a_exp)
{
    std::size_t room = NodeCount::s_limit > NodeCount::s_live ? NodeCount::s_limit - NodeCount::s_live : 0;
    if (CopySize(room).ofCopy(a_exp.data()) > room)
        stopCapacity("more than " + std::to_string(NodeCount::s_limit) + " expression nodes");
    return a_exp->copyExp(a_exp);
}

namespace {

constexpr int MAX_FRESH_NAMES = 10000;

// 32-bit two's complement arithmetic with wrap-around, free of undefined
// behaviour: the work is done on unsigned values.
std::int32_t wrap(std::uint32_t a_value)
{
    return static_cast<std::int32_t>(a_value);
}
std::int32_t wrapLong(long a_value)
{
    return wrap(static_cast<std::uint32_t>(static_cast<unsigned long>(a_value)));
}
std::uint32_t bits(std::int32_t a_value)
{
    return static_cast<std::uint32_t>(a_value);
}

int countLeadingZeros(std::uint32_t a_word)
{
    int count = 0;
    for (std::uint32_t probe = 0x80000000u; probe && !(a_word & probe); probe >>= 1)
        ++count;
    return count;
}

std::uint64_t mix(std::uint64_t a_value)
{
    a_value += 0x9e3779b97f4a7c15ull;
    a_value = (a_value ^ (a_value >> 30)) * 0xbf58476d1ce4e5b9ull;
    a_value = (a_value ^ (a_value >> 27)) * 0x94d049bb133111ebull;
    return a_value ^ (a_value >> 31);
}

// A variable's part of its fingerprint: the hash of its name, which an
// operand keeps with its name (setShape mixes it).
std::uint64_t nameShape(const char* a_name)
{
    return misc::hashString(a_name);
}

// Whether a_exp equals the node UnaryExp(NOT, a_operand) would be, as the
// structural equality finds it (kind, fingerprint, operator, operand),
// without making that node: conditionals are built by the hundred thousand.
bool isNegationOf(const ExpHandle& a_exp, const ExpHandle& a_operand)
{
    return a_exp->m_type == UNARY_EXP &&
           a_exp->shape() == Expression::shapeOf(UNARY_EXP, NOT, a_operand->shape()) && a_exp->m_operator == NOT &&
           a_exp->operand(1) == a_operand;
}

// One branch of a new conditional on a_condition: a nested conditional on
// the same condition (or on its negation) is cut by one level.
ExpHandle cutNestedIf(const ExpHandle& a_condition, const ExpHandle& a_branch, int a_same, int a_negated)
{
    if (!a_branch->isIf())
        return a_branch;
    ExpHandle inner = a_branch->operand(1);
    if (inner == a_condition)
        return a_branch->operand(a_same);
    if (isNegationOf(inner, a_condition) || isNegationOf(a_condition, inner))
        return a_branch->operand(a_negated);
    return a_branch;
}

} // namespace

namespace {

// Memos of the walks below are consulted only after this many nodes: small
// comparisons, the usual ones, cost nothing extra.
constexpr std::size_t MEMO_AFTER = 64;

struct PairHash {
    std::size_t operator()(const std::pair<const Expression*, const Expression*>& a_pair) const
    {
        return std::hash<const void*>()(a_pair.first) * 31u + std::hash<const void*>()(a_pair.second);
    }
};

// One structural comparison. Shared subtrees are compared once: a pair of
// nodes found equal is remembered, and any inequality ends the whole walk,
// so a DAG costs what its distinct node pairs cost, not its unfolded size.
class EqualityWalk {
public:
    bool equal(Expression* a_left, Expression* a_right)
    {
        if (!a_left || !a_right)
            return a_left == a_right;
        if (a_left->m_type != a_right->m_type)
            return false;
        if (a_left == a_right)
            return true;
        if (a_left->shape() != a_right->shape())
            return false;
        switch (a_left->m_type) {
        case VAR_EXP: {
            TN* left_tn = a_left->TNValue();
            TN* right_tn = a_right->TNValue();
            if (left_tn && right_tn && left_tn->TNName()[0] != '\0')
                return std::strcmp(left_tn->TNName(), right_tn->TNName()) == 0;
            if (a_right->getName()[0] == '\0')
                return false;
            return std::strcmp(a_left->getName(), a_right->getName()) == 0;
        }
        case CONST_EXP:
            return a_left->constValue() == a_right->constValue();
        case UNARY_EXP:
        case BINARY_EXP:
        case TRINARY_EXP:
            break;
        default:
            return false;
        }
        if (a_left->m_operator != a_right->m_operator)
            return false;
        std::pair<const Expression*, const Expression*> pair(a_left, a_right);
        if (++m_visits > MEMO_AFTER && m_equal.count(pair))
            return true;
        bool same = false;
        if (a_left->m_type == UNARY_EXP) {
            same = equal(a_left->operand(1), a_right->operand(1));
        } else if (a_left->m_type == BINARY_EXP) {
            same = equal(a_left->leftValue(), a_right->leftValue()) && equal(a_left->rightValue(), a_right->rightValue());
        } else {
            same = equal(a_left->operand(1), a_right->operand(1)) && equal(a_left->operand(2), a_right->operand(2)) &&
                   equal(a_left->operand(3), a_right->operand(3));
        }
        if (same && m_visits > MEMO_AFTER)
            m_equal.insert(pair);
        return same;
    }

private:
    bool equal(const ExpHandle& a_left, const ExpHandle& a_right) { return equal(a_left.data(), a_right.data()); }

    std::size_t m_visits = 0;
    std::unordered_set<std::pair<const Expression*, const Expression*>, PairHash> m_equal;
};

// Whether the subtree mentions the variable a_name. Subtrees found not to
// are remembered, so shared subtrees are walked once.
class DependenceWalk {
public:
    explicit DependenceWalk(const char* a_name) : m_name(a_name) {}

    bool depends(Expression* a_exp)
    {
        switch (a_exp->m_type) {
        case VAR_EXP:
            return std::strcmp(m_name, a_exp->getName()) == 0;
        case CONST_EXP:
        case LABEL_EXP:
            return false;
        default:
            break;
        }
        if (++m_visits > MEMO_AFTER && m_independent.count(a_exp))
            return false;
        bool found = false;
        if (a_exp->m_type == UNARY_EXP) {
            found = depends(a_exp->operand(1));
        } else if (a_exp->m_type == BINARY_EXP) {
            found = depends(a_exp->leftValue()) || depends(a_exp->rightValue());
        } else if (a_exp->m_type == TRINARY_EXP) {
            found = depends(a_exp->operand(1)) || depends(a_exp->operand(2)) || depends(a_exp->operand(3));
        } else {
            for (int i = 0; i < REGISTER_SIZE_IN_BITS && !found; ++i)
                found = depends(a_exp->operand(i));
        }
        if (!found && m_visits > MEMO_AFTER)
            m_independent.insert(a_exp);
        return found;
    }

private:
    bool depends(const ExpHandle& a_exp) { return depends(a_exp.data()); }

    const char* m_name;
    std::size_t m_visits = 0;
    std::unordered_set<const Expression*> m_independent;
};

bool isComparison(operator_t a_operator)
{
    return a_operator == GT || a_operator == LT || a_operator == GE;
}

} // namespace

bool operator==(const ExpHandle& a_left, const ExpHandle& a_right)
{
    return EqualityWalk().equal(a_left.data(), a_right.data());
}

// ---------------------------------------------------------------- Expression

std::uint64_t Expression::shapeOf(expression_type_t a_type, operator_t a_operator, std::uint64_t a_first,
                                  std::uint64_t a_second, std::uint64_t a_third)
{
    // Odd multipliers keep the parts' positions apart; one final mix
    // spreads them. Every node gets one, so it is kept cheap.
    std::uint64_t value = (static_cast<std::uint64_t>(a_type) << 32) ^ static_cast<std::uint32_t>(a_operator);
    value = value * 0x9e3779b97f4a7c15ull + a_first;
    value = value * 0xc2b2ae3d27d4eb4full + a_second;
    value = value * 0x165667b19e3779f9ull + a_third;
    return mix(value);
}

void Expression::setShape(std::uint64_t a_first, std::uint64_t a_second, std::uint64_t a_third)
{
    m_shape = shapeOf(m_type, m_operator, a_first, a_second, a_third);
}

std::string Expression::getFresh()
{
    if (last >= MAX_FRESH_NAMES)
        stopCapacity("more than 10000 fresh names (last <= 10000)");
    ++last;
    return "FRESH" + std::to_string(last);
}

ExpHandle Expression::shareOrCopy(const ExpHandle& a_exp)
{
    return a_exp->shareable() ? a_exp : a_exp->copyExp(a_exp);
}

ExpHandle Expression::ifSimplify(const char*, const ExpHandle&, const ExpHandle& a_self)
{
    std::cerr << " should not get here - ifSimplify\n";
    return a_self;
}

void Expression::print(TN*, bool, system_t, bool)
{
    *getOutFile() << "TN - This print should not be called\n";
}

void Expression::print(const char*, bool, system_t, bool)
{
    *getOutFile() << "Char - This print should not be called\n";
}

const char* Expression::getName()
{
    return "XXX";
}

ExpHandle Expression::getExp()
{
    return ExpHandle();
}

ExpHandle Expression::leftValue()
{
    return ExpHandle();
}

ExpHandle Expression::rightValue()
{
    return ExpHandle();
}

ExpHandle Expression::operand(int)
{
    return ExpHandle();
}

void Expression::setOperand(int, const ExpHandle&) {}

ExpHandle Expression::substituteExp(const char*, const ExpHandle&, const ExpHandle& self)
{
    VELCOR_ASSERT(this == self.data());
    return self;
}

bool Expression::isConst()
{
    VELCOR_ASSERT(false);
    return false;
}

// ------------------------------------------------------------------ ConstExp

ConstExp::ConstExp(int a_value) : Expression(CONST_EXP), m_value(a_value)
{
    setShape(bits(a_value));
    m_shareable = true;
}

ExpHandle ConstExp::copyExp(const ExpHandle& a_exp)
{
    VELCOR_ASSERT(a_exp.data()==this);
    return new ConstExp(m_value);
}

ExpHandle ConstExp::substituteExp(const char*, const ExpHandle&, const ExpHandle& self)
{
    VELCOR_ASSERT(this == self.data());
    return self;
}

// ------------------------------------------------------------------ LabelExp

// Labels are equal only to themselves: the node's address is its shape.
LabelExp::LabelExp(const char* a_value) : Expression(LABEL_EXP), m_value(a_value)
{
    setShape(reinterpret_cast<std::uintptr_t>(this));
}

ExpHandle LabelExp::copyExp(const ExpHandle& a_exp)
{
    VELCOR_ASSERT(a_exp.data()==this);
    return new LabelExp(m_value);
}

ExpHandle LabelExp::substituteExp(const char*, const ExpHandle&, const ExpHandle& self)
{
    VELCOR_ASSERT(this == self.data());
    return self;
}

// -------------------------------------------------------------------- VarExp

// Equal variables have equal names, whether they were made from an operand
// or from a name. A variable without a name (a numeric operand) is equal only
// to itself, so a copy of it is a node of its own.
VarExp::VarExp(TN* a_value) : Expression(VAR_EXP), m_value(a_value)
{
    setShape(a_value ? a_value->TNNameHash() : nameShape(""));
    m_shareable = getName()[0] != '\0';
}

VarExp::VarExp(const char* a_name) : Expression(VAR_EXP), m_value(nullptr), m_name(a_name)
{
    setShape(nameShape(getName()));
    m_shareable = getName()[0] != '\0';
}

ExpHandle VarExp::copyExp(const ExpHandle& a_exp)
{
    VELCOR_ASSERT(a_exp.data()==this);
    return m_value ? new VarExp(m_value) : new VarExp(m_name.c_str());
}

ExpHandle VarExp::substituteExp(const char* a_name, const ExpHandle& a_exp, const ExpHandle& self)
{
    VELCOR_ASSERT(this == self.data());
    // A replacement that mentions the variable itself is never substituted.
    if (a_exp->dependsOnVar(a_name))
        return self;
    return std::strcmp(getName(), a_name) == 0 ? a_exp : self;
}

bool VarExp::dependsOnVar(const char* a_name)
{
    return std::strcmp(a_name, getName()) == 0;
}

int VarExp::constValue()
{
    return (m_value && m_value->isConst()) ? wrapLong(m_value->TNValue()) : 0;
}

// ------------------------------------------------------------------ UnaryExp

UnaryExp::UnaryExp(operator_t a_operator, const ExpHandle& a_value) : Expression(UNARY_EXP)
{
    VELCOR_ASSERT(a_value.data() != nullptr);
    if (a_operator == LD && a_value->m_operator == ADDR) {
        // A load from the address of A is A itself.
        VELCOR_ASSERT(( a_value.data()->Value().data()->m_type) == UNARY_EXP);
        ExpHandle addressed = a_value->Value();
        m_operator = addressed->m_operator;
        m_operand = addressed->Value();
        m_type = a_value->m_type;
    } else {
        m_operator = a_operator;
        m_operand = a_value;
        m_shareable = m_operand->shareable();
    }
    setShape(m_operand->shape());
}

ExpHandle UnaryExp::copyExp(const ExpHandle& a_exp)
{
    VELCOR_ASSERT(a_exp.data()==this);
    return new UnaryExp(m_operator, shareOrCopy(m_operand));
}

bool UnaryExp::dependsOnVar(const char* a_name)
{
    return DependenceWalk(a_name).depends(this);
}

bool UnaryExp::isConst()
{
    evaluateConst();
    return m_const;
}

ExpHandle UnaryExp::substituteExp(const char* a_name, const ExpHandle& a_exp, const ExpHandle& self)
{
    VELCOR_ASSERT(this == self.data());
    return new UnaryExp(m_operator, m_operand->substituteExp(a_name, a_exp, m_operand));
}

int UnaryExp::constValue()
{
    VELCOR_ASSERT(m_type==UNARY_EXP);
    evaluateConst();
    return m_const_value;
}

void UnaryExp::evaluateConst()
{
    if (m_const_generation == TN::constGeneration())
        return;
    m_const = m_operand->isConst();
    m_const_value = 0;
    if (m_const) {
        int value = m_operand->constValue();
        switch (m_operator) {
        case NEG:
            m_const_value = wrap(0u - bits(value));
            break;
        case NOT:
            m_const_value = value == 0 ? 1 : 0;
            break;
        case CNTLZW:
            m_const_value = countLeadingZeros(bits(value));
            break;
        default:
            m_const_value = value;
            break;
        }
    }
    m_const_generation = TN::constGeneration();
}

// ----------------------------------------------------------------- BinaryExp

BinaryExp::BinaryExp(operator_t a_operator, const ExpHandle& a_left, const ExpHandle& a_right)
    : Expression(BINARY_EXP)
{
    VELCOR_ASSERT(a_left.data() != nullptr && a_right.data() != nullptr);
    bool connective = a_operator == AND || a_operator == OR;
    if (connective && a_left->m_type == BINARY_EXP && a_left == a_right) {
        // x AND x and x OR x are x.
        m_operator = a_left->m_operator;
        l_operand = a_left->leftValue();
        r_operand = a_left->rightValue();
        // The fields are a_left's: rebuilding them gives them back when
        // rebuilding a_left does.
        m_shareable = a_left->shareable();
    } else if (a_operator == OR && ((a_left->m_operator == NOT && a_left->Value() == a_right) ||
                                    (a_right->m_operator == NOT && a_right->Value() == a_left))) {
        // p OR NOT p is the constant true, in the form path conditions use.
        m_operator = EQ;
        l_operand = new ConstExp(1);
        r_operand = new ConstExp(1);
        m_shareable = true;
    } else if (a_operator == LOOKUP && a_left->m_operator == ADDR) {
        m_operator = LOOKUP;
        l_operand = a_left->Value();
        r_operand = a_right;
    } else {
        m_operator = a_operator;
        l_operand = a_left;
        r_operand = a_right;
        m_shareable = !isComparison(m_operator) && l_operand->shareable() && r_operand->shareable();
    }
    setShape(l_operand->shape(), r_operand->shape());
}

const char* BinaryExp::getName()
{
    if (m_operator == EQ && l_operand->isVar())
        return l_operand->getName();
    if (m_operator == EQ && r_operand->isVar())
        return r_operand->getName();
    if (l_operand->isVar())
        return l_operand->getName();
    if (r_operand->isVar())
        return r_operand->getName();
    return "";
}

ExpHandle BinaryExp::getExp()
{
    if (m_operator == EQ && l_operand->isVar())
        return r_operand;
    if (m_operator == EQ && r_operand->isVar())
        return l_operand;
    return ExpHandle();
}

ExpHandle BinaryExp::operand(int i)
{
    VELCOR_ASSERT(i<=2&& i>0);
    return i == 1 ? l_operand : r_operand;
}

void BinaryExp::setOperand(int a_index, const ExpHandle& a_value)
{
    if (a_index == 1)
        l_operand = a_value;
    else if (a_index == 2)
        r_operand = a_value;
    setShape(l_operand->shape(), r_operand->shape());
    // Rebuilding set fields might normalize them: always copy this node.
    m_shareable = false;
    m_const_generation = 0;
}

ExpHandle BinaryExp::copyExp(const ExpHandle& a_exp)
{
    VELCOR_ASSERT(a_exp.data()==this);
    return new BinaryExp(m_operator, shareOrCopy(l_operand), shareOrCopy(r_operand));
}

ExpHandle BinaryExp::substituteExp(const char* a_name, const ExpHandle& a_exp, const ExpHandle& self)
{
    VELCOR_ASSERT(this==self.data());
    ExpHandle result = new BinaryExp(m_operator, l_operand->substituteExp(a_name, a_exp, l_operand),
                                     r_operand->substituteExp(a_name, a_exp, r_operand));
    if (result->isConst())
        return new ConstExp(result->constValue());
    return result;
}

bool BinaryExp::dependsOnVar(const char* a_name)
{
    return DependenceWalk(a_name).depends(this);
}

bool BinaryExp::isConst()
{
    evaluateConst();
    return m_const;
}

int BinaryExp::constValue()
{
    evaluateConst();
    return m_const_value;
}

void BinaryExp::evaluateConst()
{
    if (m_const_generation == TN::constGeneration())
        return;
    m_const_generation = TN::constGeneration();
    m_const_value = 0;
    bool left_const = l_operand->isConst();
    bool right_const = r_operand->isConst();
    int left = left_const ? l_operand->constValue() : 0;
    int right = right_const ? r_operand->constValue() : 0;

    if (m_operator == OR && left_const && left == 1) {
        m_const = true;
    } else if (m_operator == AND && ((left_const && left == 0) || (right_const && right == 0))) {
        m_const = true;
    } else if (!left_const || !right_const) {
        m_const = false;
    } else if (m_operator == DIV) {
        // Division by zero and INT_MIN / -1 have no 32-bit value.
        m_const = !(right == 0 || (right == -1 && left == INT_MIN));
    } else {
        m_const = true;
    }
    if (!m_const)
        return;

    switch (m_operator) {
    case AND:
        m_const_value = ((left_const && left == 0) || (right_const && right == 0)) ? 0 : 1;
        break;
    case OR:
        m_const_value = (left_const && left != 0) || (right_const && right != 0) ? 1 : 0;
        break;
    case ADD:
        m_const_value = wrap(bits(left) + bits(right));
        break;
    case SUB:
        m_const_value = wrap(bits(left) - bits(right));
        break;
    case MUL:
        m_const_value = wrap(bits(left) * bits(right));
        break;
    case DIV:
        m_const_value = left / right;
        break;
    case GT:
        m_const_value = left > right;
        break;
    case GE:
        m_const_value = left >= right;
        break;
    case LT:
        m_const_value = left < right;
        break;
    case EQ:
        m_const_value = left == right;
        break;
    case NEQ:
        m_const_value = left != right;
        break;
    case SELECT_BIT:
        // Bit 0 is the most significant bit of the word.
        m_const_value = (right >= 0 && right < REGISTER_SIZE_IN_BITS)
                            ? static_cast<int>((bits(left) >> (31 - right)) & 1u)
                            : 0;
        break;
    case ANDC:
        m_const_value = wrap(bits(left) & ~bits(right));
        break;
    default:
        break;
    }
}

// ---------------------------------------------------------------- TrinaryExp

TrinaryExp::TrinaryExp(operator_t a_operator, const ExpHandle& a_first, const ExpHandle& a_second,
                       const ExpHandle& a_third)
    : Expression(TRINARY_EXP)
{
    VELCOR_ASSERT(a_first.data() != nullptr && a_second.data() != nullptr && a_third.data() != nullptr);
    m_operator = a_operator;
    operand1 = a_first;
    if (a_operator == IF) {
        operand2 = cutNestedIf(a_first, a_second, 2, 3);
        operand3 = cutNestedIf(a_first, a_third, 3, 2);
    } else {
        operand2 = a_second;
        operand3 = a_third;
    }
    setShape(operand1->shape(), operand2->shape(), operand3->shape());
    // A branch kept as given is one a rebuild keeps too.
    updateShareable(operand2.data() == a_second.data(), operand3.data() == a_third.data());
}

void TrinaryExp::updateShareable(bool a_second_kept, bool a_third_kept)
{
    m_shareable = operand1->shareable() && operand2->shareable() && operand3->shareable();
    // A conditional whose branches a rebuild would cut again is copied.
    if (m_shareable && m_operator == IF && !a_second_kept)
        m_shareable = cutNestedIf(operand1, operand2, 2, 3).data() == operand2.data();
    if (m_shareable && m_operator == IF && !a_third_kept)
        m_shareable = cutNestedIf(operand1, operand3, 3, 2).data() == operand3.data();
}

bool TrinaryExp::specialPrint()
{
    return m_operator == UPDATE && getOutFormat() != CVC;
}

ExpHandle TrinaryExp::ifSimplify(const char* a_name, const ExpHandle& a_exp, const ExpHandle&)
{
    return new TrinaryExp(IF, operand1->substituteExp(a_name, a_exp, operand1), operand2, operand3);
}

ExpHandle TrinaryExp::copyExp(const ExpHandle& a_exp)
{
    VELCOR_ASSERT(a_exp.data()==this);
    return new TrinaryExp(m_operator, shareOrCopy(operand1), shareOrCopy(operand2), shareOrCopy(operand3));
}

const char* TrinaryExp::getName()
{
    VELCOR_ASSERT(m_operator == UPDATE);
    return operand1->getName();
}

ExpHandle TrinaryExp::operand(int a_index)
{
    VELCOR_ASSERT(a_index >= 1 && a_index <= 3);
    return a_index == 1 ? operand1 : a_index == 2 ? operand2 : operand3;
}

void TrinaryExp::setOperand(int a_index, const ExpHandle& a_value)
{
    if (a_index == 1)
        operand1 = a_value;
    else if (a_index == 2)
        operand2 = a_value;
    else if (a_index == 3)
        operand3 = a_value;
    setShape(operand1->shape(), operand2->shape(), operand3->shape());
    updateShareable(false, false);
    m_const_generation = 0;
}

ExpHandle TrinaryExp::substituteExp(const char* a_name, const ExpHandle& a_exp, const ExpHandle& self)
{
    VELCOR_ASSERT(this == self.data());
    if (m_operator == UPDATE)
        return new TrinaryExp(UPDATE, operand1->substituteExp(a_name, a_exp, operand1),
                              operand2->substituteExp(a_name, a_exp, operand2),
                              operand3->substituteExp(a_name, a_exp, operand3));
    ExpHandle condition = operand1->substituteExp(a_name, a_exp, operand1);
    if (condition->isConst()) {
        // Only the value 1 selects the then-part.
        ExpHandle chosen = condition->constValue() == 1 ? operand2 : operand3;
        return chosen->substituteExp(a_name, a_exp, chosen);
    }
    return new TrinaryExp(m_operator, condition, operand2->substituteExp(a_name, a_exp, operand2),
                          operand3->substituteExp(a_name, a_exp, operand3));
}

bool TrinaryExp::dependsOnVar(const char* a_name)
{
    return DependenceWalk(a_name).depends(this);
}

bool TrinaryExp::isConst()
{
    if (m_const_generation != TN::constGeneration()) {
        m_const = operand1->isConst() && operand2->isConst() && operand3->isConst();
        m_const_generation = TN::constGeneration();
    }
    return m_const;
}

// --------------------------------------------------------------- BitArrayExp

// Bit arrays are equal only to themselves: the node's address is its shape.
BitArrayExp::BitArrayExp(const std::vector<ExpHandle>& a_values) : Expression(BIT_ARRAY_EXP), operands(a_values)
{
    setShape(reinterpret_cast<std::uintptr_t>(this));
    if (a_values.size() != static_cast<std::size_t>(REGISTER_SIZE_IN_BITS)) {
        std::cerr << "ERROR: "
                  << "BitArrayExp::BitArrayExp(std::vector<Handle<Expression> > a_values):"
                  << " a_values.size() = " << a_values.size()
                  << " and REGISTER_SIZE_IN_BITS = " << REGISTER_SIZE_IN_BITS << '\n';
        VELCOR_ASSERT(a_values.size() == REGISTER_SIZE_IN_BITS);
    }
}

// A copy of the condition register may reach a memory cell or a branch
// target: it is then not special and counts as 0.
bool BitArrayExp::specialPrint()
{
    return false;
}

int BitArrayExp::constValue()
{
    return 0;
}

ExpHandle BitArrayExp::Value()
{
    std::cerr << "Someone is calling BitArrayExp::Value()!\n";
    VELCOR_ASSERT(false);
    return ExpHandle();
}

TN* BitArrayExp::TNValue()
{
    std::cerr << "Someone is calling BitArrayExp::TNValue()!\n";
    VELCOR_ASSERT(false);
    return nullptr;
}

const char* BitArrayExp::getName()
{
    std::cerr << "Someone is calling BitArrayExp::getName()!\n";
    VELCOR_ASSERT(false);
    return "";
}

ExpHandle BitArrayExp::operand(int i)
{
    VELCOR_ASSERT((i >= 0) && (i < (32)));
    return operands[i];
}

void BitArrayExp::setOperand(int i, const ExpHandle& a_value)
{
    VELCOR_ASSERT((i >= 0) && (i < (32)));
    operands[i] = a_value;
}

ExpHandle BitArrayExp::copyExp(const ExpHandle& a_exp)
{
    VELCOR_ASSERT(a_exp.data()==this);
    std::vector<ExpHandle> copies;
    copies.reserve(operands.size());
    for (const ExpHandle& bit : operands)
        copies.push_back(shareOrCopy(bit));
    return new BitArrayExp(copies);
}

ExpHandle BitArrayExp::substituteExp(const char*, const ExpHandle&, const ExpHandle&)
{
    VELCOR_ASSERT(false);
    return ExpHandle();
}

bool BitArrayExp::dependsOnVar(const char* a_name)
{
    return DependenceWalk(a_name).depends(this);
}

bool BitArrayExp::isConst()
{
    for (const ExpHandle& bit : operands)
        if (!bit->isConst())
            return false;
    return true;
}
