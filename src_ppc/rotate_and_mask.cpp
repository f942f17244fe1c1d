// rlwinm as compiled code uses it: picking one condition bit out of a copy
// of the condition register, the sign bit of a value, or the zero test made
// of cntlzw and a shift right by 5. General rotation is not modelled; any
// other shape becomes a bit selection.
#include <iostream>
#include <unordered_map>
#include <utility>

#include "machine.h"
#include "misc/trace.h"
#include "misc/writer.h"

namespace {

ExpHandle selectBit(const ExpHandle& a_exp, long a_bit)
{
    return new BinaryExp(SELECT_BIT, a_exp, new ConstExp(static_cast<int>(a_bit)));
}

// The node to rewrite the parts of a conditional in: a conditional held
// elsewhere too (the caller's handle counts) is copied, so other values
// that share it keep their meaning and no node can come to contain itself.
ExpHandle ownConditional(const ExpHandle& a_exp)
{
    return a_exp.count() > 1 ? Expression::copyOf(a_exp) : a_exp;
}

bool isLeaf(const ExpHandle& a_exp)
{
    return a_exp->isConst() || a_exp->isVar();
}

} // namespace

ExpHandle CreateSignBit(const ExpHandle&)
{
    return new ConstExp(0);
}

namespace {

// The sign-bit rule over the conditionals of one value. A conditional that
// a copy could not be told from (see Expression::shareable) gives the same
// result wherever the value reaches it again, so it is worked out once:
// values share their parts, and the paths through them can be exponentially
// many.
class SignBitWalk {
public:
    explicit SignBitWalk(const ExpHandle& a_negated) : m_negated(a_negated) {}

    ExpHandle run(const ExpHandle& a_exp)
    {
        // (-y) andc y is taken to have a clear sign bit. Note: this holds
        // only for y <= 0; for y > 0 the true bit is 1.
        if (a_exp->m_operator == NEG && a_exp->operand(1) == m_negated)
            return CreateSignBit(m_negated);
        if (!a_exp->isIf())
            return selectBit(new BinaryExp(ANDC, a_exp, m_negated), 0);
        bool remembered = a_exp->shareable();
        if (remembered) {
            auto done = m_done.find(a_exp.data());
            if (done != m_done.end())
                return done->second.second;
        }
        ExpHandle result = ownConditional(a_exp);
        if (remembered)
            m_done[a_exp.data()].first = a_exp;
        result->setOperand(2, run(result->operand(2)));
        result->setOperand(3, run(result->operand(3)));
        if (remembered)
            m_done[a_exp.data()].second = result;
        return result;
    }

private:
    ExpHandle m_negated;
    // The conditional (held, so that its address stays its own) and its
    // result.
    std::unordered_map<const Expression*, std::pair<ExpHandle, ExpHandle>> m_done;
};

} // namespace

ExpHandle get_sign_bit_andc(const ExpHandle& a_negated, const ExpHandle& a_exp)
{
    return SignBitWalk(a_negated).run(a_exp);
}

ExpHandle rotateAndMask(long a_from, long a_to, long a_rotation_amount, const ExpHandle& a_exp)
{
    misc::Writer out(*getOutFile());
    out << "%in rotateAndMask" << '\n'
        << "%rotation amount = " << a_rotation_amount << '\n'
        << "%from_idx = " << a_from << '\n'
        << "%to_idx = " << a_to << '\n';

    if (a_from == a_to) {
        // The source bit that the rotation brings to the one bit of the mask.
        const long idx = (a_from + a_rotation_amount) % REGISTER_SIZE_IN_BITS;
        if (a_exp->m_type == BIT_ARRAY_EXP) {
            misc::traceErr() << "Special case : bit array \n";
            return a_exp->operand(static_cast<int>(idx));
        }
        if (a_exp->m_operator == ANDC && idx == 0) {
            misc::traceErr() << "Special case : bit ANDC \n";
            return get_sign_bit_andc(a_exp->operand(2), a_exp->operand(1));
        }
        if (a_exp->isIf()) {
            if (isLeaf(a_exp->operand(2)) && isLeaf(a_exp->operand(3)))
                return a_exp;
            if (a_exp.count() > 1)
                out << " %copy expression" << '\n';
            ExpHandle result = ownConditional(a_exp);
            result->setOperand(2, rotateAndMask(a_from, a_to, a_rotation_amount, result->operand(2)));
            result->setOperand(3, rotateAndMask(a_from, a_to, a_rotation_amount, result->operand(3)));
            return result;
        }
        return selectBit(a_exp, idx);
    }

    // The shift right by 5 that follows a count of leading zeros: the count
    // is 32 exactly when the value is 0.
    if (a_from == 5 && a_to == 31 && a_rotation_amount == 27) {
        if (a_exp->m_operator == CNTLZW) {
            misc::traceErr() << "Special case : CNTLZW \n";
            ExpHandle is_zero = new BinaryExp(EQ, a_exp->operand(1), new ConstExp(0));
            return new TrinaryExp(IF, is_zero, new ConstExp(1), new ConstExp(0));
        }
        if (a_exp->isIf()) {
            misc::traceErr() << "IF special case : CNTLZW \n";
            ExpHandle result = ownConditional(a_exp);
            result->setOperand(2, rotateAndMask(5, 31, 27, result->operand(2)));
            result->setOperand(3, rotateAndMask(5, 31, 27, result->operand(3)));
            return result;
        }
    }
    return selectBit(a_exp, a_from);
}
