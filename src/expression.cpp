// Expression nodes: construction with the normalizing rules, structural
// equality, deep copy, substitution with constant folding and constant
// evaluation. Printing is in expression_print.cpp.
#include "expression.h"

#include <climits>
#include <cstring>
#include <iostream>

#include "misc/stop.h"

int Expression::last = 0;

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

std::uint64_t textShape(const char* a_text)
{
    std::uint64_t value = 1469598103934665603ull;
    for (; *a_text; ++a_text)
        value = (value ^ static_cast<unsigned char>(*a_text)) * 1099511628211ull;
    return value;
}

ExpHandle negation(const ExpHandle& a_exp)
{
    return new UnaryExp(NOT, a_exp);
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
    if (inner == negation(a_condition) || a_condition == negation(inner))
        return a_branch->operand(a_negated);
    return a_branch;
}

} // namespace

bool operator==(const ExpHandle& a_left, const ExpHandle& a_right)
{
    Expression* left = a_left.data();
    Expression* right = a_right.data();
    if (!left || !right)
        return left == right;
    if (left->m_type != right->m_type)
        return false;
    if (left == right)
        return true;
    if (left->shape() != right->shape())
        return false;
    switch (left->m_type) {
    case VAR_EXP: {
        TN* left_tn = left->TNValue();
        TN* right_tn = right->TNValue();
        if (left_tn && right_tn && left_tn->TNName()[0] != '\0')
            return std::strcmp(left_tn->TNName(), right_tn->TNName()) == 0;
        if (right->getName()[0] == '\0')
            return false;
        return std::strcmp(left->getName(), right->getName()) == 0;
    }
    case CONST_EXP:
        return left->constValue() == right->constValue();
    case UNARY_EXP:
        return left->m_operator == right->m_operator && left->operand(1) == right->operand(1);
    case BINARY_EXP:
        return left->m_operator == right->m_operator && left->leftValue() == right->leftValue() &&
               left->rightValue() == right->rightValue();
    case TRINARY_EXP:
        return left->m_operator == right->m_operator && left->operand(1) == right->operand(1) &&
               left->operand(2) == right->operand(2) && left->operand(3) == right->operand(3);
    default:
        return false;
    }
}

// ---------------------------------------------------------------- Expression

void Expression::setShape(std::uint64_t a_first, std::uint64_t a_second, std::uint64_t a_third)
{
    std::uint64_t value = mix((static_cast<std::uint64_t>(m_type) << 32) ^ static_cast<std::uint32_t>(m_operator));
    value = mix(value ^ a_first);
    value = mix(value ^ a_second);
    m_shape = mix(value ^ a_third);
}

std::string Expression::getFresh()
{
    if (last >= MAX_FRESH_NAMES)
        stopCapacity("more than 10000 fresh names (last <= 10000)");
    ++last;
    return "FRESH" + std::to_string(last);
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
// or from a name.
VarExp::VarExp(TN* a_value) : Expression(VAR_EXP), m_value(a_value)
{
    setShape(textShape(getName()));
}

VarExp::VarExp(const char* a_name) : Expression(VAR_EXP), m_value(nullptr), m_name(a_name)
{
    setShape(textShape(getName()));
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
    }
    setShape(m_operand->shape());
}

ExpHandle UnaryExp::copyExp(const ExpHandle& a_exp)
{
    VELCOR_ASSERT(a_exp.data()==this);
    return new UnaryExp(m_operator, m_operand->copyExp(m_operand));
}

ExpHandle UnaryExp::substituteExp(const char* a_name, const ExpHandle& a_exp, const ExpHandle& self)
{
    VELCOR_ASSERT(this == self.data());
    return new UnaryExp(m_operator, m_operand->substituteExp(a_name, a_exp, m_operand));
}

int UnaryExp::constValue()
{
    VELCOR_ASSERT(m_type==UNARY_EXP);
    if (!m_operand->isConst())
        return 0;
    int value = m_operand->constValue();
    switch (m_operator) {
    case NEG:
        return wrap(0u - bits(value));
    case NOT:
        return value == 0 ? 1 : 0;
    case CNTLZW:
        return countLeadingZeros(bits(value));
    default:
        return value;
    }
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
    } else if (a_operator == OR && ((a_left->m_operator == NOT && a_left->Value() == a_right) ||
                                    (a_right->m_operator == NOT && a_right->Value() == a_left))) {
        // p OR NOT p is the constant true, in the form path conditions use.
        m_operator = EQ;
        l_operand = new ConstExp(1);
        r_operand = new ConstExp(1);
    } else if (a_operator == LOOKUP && a_left->m_operator == ADDR) {
        m_operator = LOOKUP;
        l_operand = a_left->Value();
        r_operand = a_right;
    } else {
        m_operator = a_operator;
        l_operand = a_left;
        r_operand = a_right;
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
}

ExpHandle BinaryExp::copyExp(const ExpHandle& a_exp)
{
    VELCOR_ASSERT(a_exp.data()==this);
    return new BinaryExp(m_operator, l_operand->copyExp(l_operand), r_operand->copyExp(r_operand));
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
    return l_operand->dependsOnVar(a_name) || r_operand->dependsOnVar(a_name);
}

bool BinaryExp::isConst()
{
    // Each operand is asked once: asking again at every level would make
    // deep conjunctions exponential.
    bool left_const = l_operand->isConst();
    if (m_operator == OR && left_const && l_operand->constValue() == 1)
        return true;
    bool right_const = r_operand->isConst();
    if (m_operator == AND &&
        ((left_const && l_operand->constValue() == 0) || (right_const && r_operand->constValue() == 0)))
        return true;
    if (!left_const || !right_const)
        return false;
    if (m_operator == DIV) {
        // Division by zero and INT_MIN / -1 have no 32-bit value.
        int divisor = r_operand->constValue();
        if (divisor == 0 || (divisor == -1 && l_operand->constValue() == INT_MIN))
            return false;
    }
    return true;
}

int BinaryExp::constValue()
{
    if (!isConst())
        return 0;
    if (m_operator == AND) {
        bool zero = (l_operand->isConst() && l_operand->constValue() == 0) ||
                    (r_operand->isConst() && r_operand->constValue() == 0);
        return zero ? 0 : 1;
    }
    if (m_operator == OR) {
        if (l_operand->isConst() && l_operand->constValue() != 0)
            return 1;
        return (!r_operand->isConst() || r_operand->constValue() == 0) ? 0 : 1;
    }
    int left = l_operand->constValue();
    int right = r_operand->constValue();
    switch (m_operator) {
    case ADD:
        return wrap(bits(left) + bits(right));
    case SUB:
        return wrap(bits(left) - bits(right));
    case MUL:
        return wrap(bits(left) * bits(right));
    case DIV:
        return left / right;
    case GT:
        return left > right;
    case GE:
        return left >= right;
    case LT:
        return left < right;
    case EQ:
        return left == right;
    case NEQ:
        return left != right;
    case SELECT_BIT:
        // Bit 0 is the most significant bit of the word.
        return (right >= 0 && right < REGISTER_SIZE_IN_BITS) ? static_cast<int>((bits(left) >> (31 - right)) & 1u)
                                                              : 0;
    case ANDC:
        return wrap(bits(left) & ~bits(right));
    default:
        return 0;
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
    return new TrinaryExp(m_operator, operand1->copyExp(operand1), operand2->copyExp(operand2),
                          operand3->copyExp(operand3));
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
    return operand1->dependsOnVar(a_name) || operand2->dependsOnVar(a_name) || operand3->dependsOnVar(a_name);
}

bool TrinaryExp::isConst()
{
    return operand1->isConst() && operand2->isConst() && operand3->isConst();
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
        copies.push_back(bit->copyExp(bit));
    return new BitArrayExp(copies);
}

ExpHandle BitArrayExp::substituteExp(const char*, const ExpHandle&, const ExpHandle&)
{
    VELCOR_ASSERT(false);
    return ExpHandle();
}

bool BitArrayExp::dependsOnVar(const char* a_name)
{
    for (const ExpHandle& bit : operands)
        if (bit->dependsOnVar(a_name))
            return true;
    return false;
}

bool BitArrayExp::isConst()
{
    for (const ExpHandle& bit : operands)
        if (!bit->isConst())
            return false;
    return true;
}
