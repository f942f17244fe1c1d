#include "smt_printer.h"

#include <utility>

#include "misc/stop.h"

namespace smt {

Printer::Printer(const TermTable& a_terms, std::ostream& a_out) : m_terms(a_terms), m_out(a_out) {}

void Printer::writeSort(std::ostream& a_out, Sort a_sort)
{
    std::string text;
    appendSort(text, a_sort);
    a_out << text;
}

void Printer::appendSort(std::string& a_text, Sort a_sort)
{
    switch (a_sort.m_tag) {
    case SortTag::Bool:
        a_text += "Bool";
        break;
    case SortTag::BitVec:
        a_text += "(_ BitVec ";
        a_text += std::to_string(a_sort.width());
        a_text += ')';
        break;
    case SortTag::Float:
        a_text += "(_ FloatingPoint ";
        a_text += std::to_string(unsigned(a_sort.m_exponent));
        a_text += ' ';
        a_text += std::to_string(a_sort.width());
        a_text += ')';
        break;
    case SortTag::Memory:
        a_text += "(Array (_ BitVec 32) (_ BitVec 8))";
        break;
    case SortTag::RoundingMode:
        a_text += "RoundingMode";
        break;
    }
}

void Printer::writeBitVec(std::ostream& a_out, unsigned a_width, std::uint64_t a_value)
{
    std::string text;
    appendBitVec(text, a_width, a_value);
    a_out << text;
}

void Printer::appendBitVec(std::string& a_text, unsigned a_width, std::uint64_t a_value)
{
    static const char digits[] = "0123456789abcdef";
    if (a_width % 4 == 0) {
        a_text += "#x";
        for (int shift = int(a_width) - 4; shift >= 0; shift -= 4)
            a_text += digits[(a_value >> shift) & 0xf];
    } else {
        a_text += "#b";
        for (int bit = int(a_width) - 1; bit >= 0; --bit)
            a_text += ((a_value >> bit) & 1) ? '1' : '0';
    }
}

void Printer::flush(std::size_t a_keep)
{
    if (m_text.size() > a_keep) {
        m_out.write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
        m_text.clear();
    }
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
            // A constant and its defining equality rather than a define-fun:
            // z3 expands nested macros again at each use, which takes it
            // minutes on deep chains of stores; equalities it substitutes
            // once.
            const std::string name_text = "e" + std::to_string(m_next_name);
            m_text += "(declare-const ";
            m_text += name_text;
            m_text += ' ';
            appendSort(m_text, node.m_sort);
            m_text += ")\n(assert (= ";
            m_text += name_text;
            m_text += ' ';
            // The definition's own body is written out, not its name.
            std::uint32_t name = m_names[term.m_id];
            m_names[term.m_id] = 0;
            writeInline(term);
            m_names[term.m_id] = name;
            m_text += "))\n";
            flush(FLUSH_SIZE);
        }
    }
    flush(0);
}

void Printer::write(Term a_term)
{
    VELCOR_ASSERT(m_defined);
    writeInline(a_term);
    flush(0);
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
    const char* name = nullptr;
    std::uint32_t parameter = a_node.m_param[0];
    switch (a_node.m_op) {
    case Op::Extract:
        m_text += "(_ extract ";
        m_text += std::to_string(a_node.m_param[0]);
        m_text += ' ';
        m_text += std::to_string(a_node.m_param[1]);
        m_text += ')';
        return;
    case Op::FpFromBits:
    case Op::FpConvert:
    case Op::FpFromSigned:
        m_text += "(_ to_fp ";
        m_text += std::to_string(unsigned(a_node.m_sort.m_exponent));
        m_text += ' ';
        m_text += std::to_string(a_node.m_sort.width());
        m_text += ')';
        return;
    case Op::ZeroExtend:
        name = "(_ zero_extend ";
        break;
    case Op::SignExtend:
        name = "(_ sign_extend ";
        break;
    case Op::RotateLeft:
        name = "(_ rotate_left ";
        break;
    case Op::FpToSigned:
        name = "(_ fp.to_sbv ";
        break;
    default:
        name = operatorName(a_node.m_op);
        VELCOR_ASSERT(name);
        m_text += name;
        return;
    }
    m_text += name;
    m_text += std::to_string(parameter);
    m_text += ')';
}

void Printer::writeInline(Term a_term)
{
    if (std::uint32_t name = m_names[a_term.m_id]) {
        m_text += 'e';
        m_text += std::to_string(name);
        return;
    }
    const Node& node = m_terms.node(a_term);
    switch (node.m_op) {
    case Op::Symbol:
        m_text += m_terms.symbolName(a_term);
        return;
    case Op::BoolConst:
        m_text += node.m_value ? "true" : "false";
        return;
    case Op::BvConst:
        appendBitVec(m_text, node.m_sort.width(), node.m_value);
        return;
    case Op::RoundingMode:
        m_text += roundingModeName(node.m_value);
        return;
    default:
        break;
    }
    m_text += '(';
    writeOperator(node);
    for (int i = 0; i < node.m_arity; ++i) {
        m_text += ' ';
        writeInline(node.m_child[i]);
    }
    m_text += ')';
}

} // namespace smt
