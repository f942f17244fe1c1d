#include "smt_printer.h"

#include <utility>

#include "misc/stop.h"

namespace smt {

Printer::Printer(const TermTable& a_terms, std::ostream& a_out) : m_terms(a_terms), m_out(a_out) {}

void Printer::writeSort(std::ostream& a_out, Sort a_sort)
{
    switch (a_sort.m_tag) {
    case SortTag::Bool:
        a_out << "Bool";
        break;
    case SortTag::BitVec:
        a_out << "(_ BitVec " << a_sort.width() << ')';
        break;
    case SortTag::Float:
        a_out << "(_ FloatingPoint " << unsigned(a_sort.m_exponent) << ' ' << a_sort.width() << ')';
        break;
    case SortTag::Memory:
        a_out << "(Array (_ BitVec 32) (_ BitVec 8))";
        break;
    case SortTag::RoundingMode:
        a_out << "RoundingMode";
        break;
    }
}

void Printer::writeBitVec(std::ostream& a_out, unsigned a_width, std::uint64_t a_value)
{
    static const char digits[] = "0123456789abcdef";
    char text[72];
    int length = 0;
    if (a_width % 4 == 0) {
        for (int shift = int(a_width) - 4; shift >= 0; shift -= 4)
            text[length++] = digits[(a_value >> shift) & 0xf];
        a_out << "#x";
    } else {
        for (int bit = int(a_width) - 1; bit >= 0; --bit)
            text[length++] = ((a_value >> bit) & 1) ? '1' : '0';
        a_out << "#b";
    }
    a_out.write(text, length);
}

bool Printer::isLeaf(Term a_term) const
{
    switch (m_terms.op(a_term)) {
    case Op::Symbol:
    case Op::BoolConst:
    case Op::BvConst:
    case Op::RoundingMode:
        return true;
    default:
        return false;
    }
}

void Printer::addRoot(Term a_term)
{
    VELCOR_ASSERT(!m_defined);
    m_roots.push_back(a_term);
}

void Printer::writeDefinitions()
{
    m_defined = true;
    std::size_t count = m_terms.size() + 1;
    m_uses.assign(count, 0);
    m_names.assign(count, 0);
    std::vector<std::uint8_t> visited(count, 0);
    std::vector<std::uint32_t> height(count, 0);
    std::vector<Term> order; // children before parents

    // Counts every parent-to-child edge once per distinct parent, and lists
    // the terms in post-order.
    std::vector<std::pair<Term, int>> stack;
    for (Term root : m_roots) {
        ++m_uses[root.m_id];
        if (visited[root.m_id])
            continue;
        visited[root.m_id] = 1;
        stack.emplace_back(root, 0);
        while (!stack.empty()) {
            Term term = stack.back().first;
            int& next = stack.back().second;
            const Node& node = m_terms.node(term);
            if (next < node.m_arity) {
                Term child = node.m_child[next++];
                ++m_uses[child.m_id];
                if (!visited[child.m_id]) {
                    visited[child.m_id] = 1;
                    stack.emplace_back(child, 0);
                }
                continue;
            }
            order.push_back(term);
            stack.pop_back();
        }
    }

    for (Term term : order) {
        if (isLeaf(term))
            continue;
        const Node& node = m_terms.node(term);
        std::uint32_t tallest = 0;
        for (int i = 0; i < node.m_arity; ++i) {
            Term child = node.m_child[i];
            if (!m_names[child.m_id] && height[child.m_id] > tallest)
                tallest = height[child.m_id];
        }
        height[term.m_id] = tallest + 1;
        if (m_uses[term.m_id] > 1 || height[term.m_id] > MAX_INLINE_HEIGHT) {
            m_names[term.m_id] = ++m_next_name;
            m_out << "(define-fun e" << m_next_name << " () ";
            writeSort(m_out, node.m_sort);
            m_out << ' ';
            // The definition's own body is written out, not its name.
            std::uint32_t name = m_names[term.m_id];
            m_names[term.m_id] = 0;
            writeInline(term);
            m_names[term.m_id] = name;
            m_out << ")\n";
        }
    }
}

void Printer::write(Term a_term)
{
    VELCOR_ASSERT(m_defined);
    writeInline(a_term);
}

namespace {

const char* roundingModeName(std::uint64_t a_mode)
{
    switch (static_cast<RoundingMode>(a_mode)) {
    case RoundingMode::NearestEven:
        return "RNE";
    case RoundingMode::TowardZero:
        return "RTZ";
    case RoundingMode::TowardPositive:
        return "RTP";
    case RoundingMode::TowardNegative:
        return "RTN";
    }
    return "RNE";
}

const char* operatorName(Op a_op)
{
    switch (a_op) {
    case Op::Not: return "not";
    case Op::And: return "and";
    case Op::Or: return "or";
    case Op::Implies: return "=>";
    case Op::Ite: return "ite";
    case Op::Eq: return "=";
    case Op::BvNot: return "bvnot";
    case Op::BvNeg: return "bvneg";
    case Op::BvAdd: return "bvadd";
    case Op::BvSub: return "bvsub";
    case Op::BvMul: return "bvmul";
    case Op::BvUdiv: return "bvudiv";
    case Op::BvUrem: return "bvurem";
    case Op::BvSdiv: return "bvsdiv";
    case Op::BvAnd: return "bvand";
    case Op::BvOr: return "bvor";
    case Op::BvXor: return "bvxor";
    case Op::BvShl: return "bvshl";
    case Op::BvLshr: return "bvlshr";
    case Op::BvAshr: return "bvashr";
    case Op::BvUlt: return "bvult";
    case Op::BvUle: return "bvule";
    case Op::BvSlt: return "bvslt";
    case Op::BvSle: return "bvsle";
    case Op::Concat: return "concat";
    case Op::Select: return "select";
    case Op::Store: return "store";
    case Op::FpAdd: return "fp.add";
    case Op::FpSub: return "fp.sub";
    case Op::FpMul: return "fp.mul";
    case Op::FpDiv: return "fp.div";
    case Op::FpFma: return "fp.fma";
    case Op::FpNeg: return "fp.neg";
    case Op::FpAbs: return "fp.abs";
    case Op::FpLt: return "fp.lt";
    case Op::FpLeq: return "fp.leq";
    case Op::FpEq: return "fp.eq";
    case Op::FpIsNaN: return "fp.isNaN";
    case Op::FpIsZero: return "fp.isZero";
    case Op::FpIsNegative: return "fp.isNegative";
    default: return nullptr;
    }
}

} // namespace

void Printer::writeOperator(const Node& a_node)
{
    switch (a_node.m_op) {
    case Op::Extract:
        m_out << "(_ extract " << a_node.m_param[0] << ' ' << a_node.m_param[1] << ')';
        return;
    case Op::ZeroExtend:
        m_out << "(_ zero_extend " << a_node.m_param[0] << ')';
        return;
    case Op::SignExtend:
        m_out << "(_ sign_extend " << a_node.m_param[0] << ')';
        return;
    case Op::RotateLeft:
        m_out << "(_ rotate_left " << a_node.m_param[0] << ')';
        return;
    case Op::FpFromBits:
    case Op::FpConvert:
    case Op::FpFromSigned:
        m_out << "(_ to_fp " << unsigned(a_node.m_sort.m_exponent) << ' ' << a_node.m_sort.width() << ')';
        return;
    case Op::FpToSigned:
        m_out << "(_ fp.to_sbv " << a_node.m_param[0] << ')';
        return;
    default: {
        const char* name = operatorName(a_node.m_op);
        VELCOR_ASSERT(name);
        m_out << name;
    }
    }
}

void Printer::writeInline(Term a_term)
{
    if (std::uint32_t name = m_names[a_term.m_id]) {
        m_out << 'e' << name;
        return;
    }
    const Node& node = m_terms.node(a_term);
    switch (node.m_op) {
    case Op::Symbol:
        m_out << m_terms.symbolName(a_term);
        return;
    case Op::BoolConst:
        m_out << (node.m_value ? "true" : "false");
        return;
    case Op::BvConst:
        writeBitVec(m_out, node.m_sort.width(), node.m_value);
        return;
    case Op::RoundingMode:
        m_out << roundingModeName(node.m_value);
        return;
    default:
        break;
    }
    m_out << '(';
    writeOperator(node);
    for (int i = 0; i < node.m_arity; ++i) {
        m_out << ' ';
        writeInline(node.m_child[i]);
    }
    m_out << ')';
}

} // namespace smt
