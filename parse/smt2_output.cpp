#include "smt2_output.h"

#include <string>
#include <vector>

#include "dwarf_debug.h"
#include "memory_name.h"
#include "misc/writer.h"

using smt::Sort;
using smt::Term;

namespace {

std::string twoDigits(int a_number)
{
    return std::string(1, char('0' + a_number / 10)) + char('0' + a_number % 10);
}

// A member's address from its memory name: MEM[k+B] is B+k, and
// MEM[j+MEM[k+B]] is (the word at B+k)+j; a_extra more bytes further.
void appendAddress(std::string& a_text, const char* a_memory, const std::vector<std::int32_t>& a_offsets,
                   std::size_t a_count, const std::string& a_base, std::int32_t a_extra)
{
    std::int32_t offset = addOffsets(a_offsets[a_count - 1], a_extra);
    if (offset != 0)
        a_text += "(bvadd ";
    if (a_count == 1) {
        a_text += a_base;
    } else {
        a_text.append("(load32 ").append(a_memory).append(1, ' ');
        appendAddress(a_text, a_memory, a_offsets, a_count - 1, a_base, 0);
        a_text += ')';
    }
    if (offset != 0) {
        a_text += ' ';
        smt::Printer::appendBitVec(a_text, 32, static_cast<std::uint32_t>(offset));
        a_text += ')';
    }
}

// The big-endian value of a cell's a_bytes bytes (load8 to load64), or,
// for another size, its byte a_extra.
void appendLoad(std::string& a_text, const char* a_memory, const std::vector<std::int32_t>& a_offsets,
                const std::string& a_base, unsigned a_bytes, std::int32_t a_extra)
{
    a_text.append("(load").append(std::to_string(8 * a_bytes)).append(1, ' ').append(a_memory).append(1, ' ');
    appendAddress(a_text, a_memory, a_offsets, a_offsets.size(), a_base, a_extra);
    a_text += ')';
}

const char* const MEMORY_SORT = "(Array (_ BitVec 32) (_ BitVec 8))";

} // namespace

Smt2Output::Smt2Output(smt::TermTable& a_terms, const ExactContext& a_context, const ExactResult& a_result,
                       const dwarf_debug& a_mapping, std::ostream& a_out)
    : m_terms(a_terms), m_context(a_context), m_result(a_result), m_mapping(a_mapping), m_out(a_out),
      m_printer(a_terms, a_out)
{
}

void Smt2Output::writeLogic(std::ostream& a_out)
{
    a_out << "(set-logic ALL)\n";
}

void Smt2Output::declare(const std::string& a_name, Sort a_sort)
{
    m_out << "(declare-const " << a_name << ' ';
    smt::Printer::writeSort(m_out, a_sort);
    m_out << ")\n";
}

void Smt2Output::declarePair(const std::string& a_name, Sort a_sort)
{
    declare(a_name, a_sort);
    declare("P" + a_name, a_sort);
}

void Smt2Output::writeDeclarations()
{
    Sort word = Sort::bitVec(32);
    for (int i = 0; i < 32; ++i)
        declarePair("r" + std::to_string(i), word);
    for (int i = 0; i < 32; ++i)
        declarePair("cr" + twoDigits(i), Sort::boolean());
    declarePair("ca", Sort::boolean());
    declarePair("so", Sort::boolean());
    declarePair("lr", word);
    declarePair("ctr", word);
    declarePair("MEM", Sort::memory());
    if (m_result.m_uses_floats)
        for (int i = 0; i < 32; ++i)
            declarePair("f" + std::to_string(i), Sort::doubleFloat());
    for (Term proposition : m_result.m_propositions)
        declare(m_terms.symbolName(proposition), Sort::boolean());
    declare("unwound", Sort::boolean());
    for (Term fresh : m_context.freshValues())
        declare(m_terms.symbolName(fresh), m_terms.sort(fresh));
    declare("C_", word);
    // Big-endian loads of the mapping's members.
    for (unsigned bytes : {1u, 2u, 4u, 8u}) {
        m_out << "(define-fun load" << 8 * bytes << " ((m " << MEMORY_SORT << ") (a (_ BitVec 32))) (_ BitVec "
              << 8 * bytes << ") ";
        for (unsigned i = 1; i < bytes; ++i)
            m_out << "(concat ";
        for (unsigned i = 0; i < bytes; ++i) {
            if (i == 0) {
                m_out << "(select m a)";
                continue;
            }
            m_out << " (select m (bvadd a ";
            smt::Printer::writeBitVec(m_out, 32, i);
            m_out << ")))";
        }
        m_out << ")\n";
    }
}

void Smt2Output::assertPost(const std::string& a_name, Term a_value)
{
    m_out << (m_guarded ? "(assert (=> unwound (= " : "(assert (= ") << a_name << ' ';
    m_printer.write(a_value);
    m_out << (m_guarded ? ")))\n" : "))\n");
}

void Smt2Output::writeTransition()
{
    const MachineState& final_state = m_result.m_final;
    if (m_result.m_leaves) {
        for (int i = 0; i < 32; ++i)
            m_post.emplace_back("Pr" + std::to_string(i), final_state.m_gpr[i]);
        for (int i = 0; i < 32; ++i)
            m_post.emplace_back("Pcr" + twoDigits(i), final_state.m_cr[i]);
        m_post.emplace_back("Pca", final_state.m_ca);
        m_post.emplace_back("Pso", final_state.m_so);
        m_post.emplace_back("Plr", final_state.m_lr);
        m_post.emplace_back("Pctr", final_state.m_ctr);
        if (m_result.m_uses_floats) {
            FloatViews views(m_terms, [](Term) { return Term{}; });
            for (int i = 0; i < 32; ++i)
                m_post.emplace_back("Pf" + std::to_string(i), views.value(final_state.m_fpr[i]));
        }
        m_post.emplace_back("PMEM", final_state.m_memory);
    }
    m_guarded = !m_terms.isTrue(m_result.m_unwound);

    for (const auto& post : m_post)
        m_printer.addRoot(post.second);
    for (Term condition : m_result.m_conditions)
        m_printer.addRoot(condition);
    m_printer.addRoot(m_result.m_unwound);
    for (Term constraint : m_context.constraints())
        m_printer.addRoot(constraint);
    m_printer.writeDefinitions();

    for (Term constraint : m_context.constraints()) {
        m_out << "(assert ";
        m_printer.write(constraint);
        m_out << ")\n";
    }
    for (const auto& post : m_post)
        assertPost(post.first, post.second);
}

void Smt2Output::writePropositions()
{
    for (std::size_t i = 0; i < m_result.m_propositions.size(); ++i) {
        m_out << "(assert (= " << m_terms.symbolName(m_result.m_propositions[i]) << ' ';
        m_printer.write(m_result.m_conditions[i]);
        m_out << "))\n";
    }
    m_out << "(assert (= unwound ";
    m_printer.write(m_result.m_unwound);
    m_out << "))\n";
}

void Smt2Output::writeMapping()
{
    misc::Writer out(m_out);
    // Each assertion is built as text and written whole; the buffers are
    // kept from member to member.
    std::vector<std::int32_t> source_offsets;
    std::vector<std::int32_t> target_offsets;
    std::string source_base;
    std::string target_base;
    std::string name;
    std::string text;
    for (const auto& pair : m_mapping.getMembers()) {
        name.assign(pair.first.data(), pair.first.size());
        if (!readMemoryCellName(name, source_offsets, source_base) ||
            !readMemoryCellName(pair.second.m_target, target_offsets, target_base))
            continue;
        // A cell whose size the debugging information does not tell is
        // taken as a word; a size that no load has is compared byte by byte.
        unsigned bytes = pair.second.m_byte_size ? pair.second.m_byte_size : 4;
        bool whole = bytes == 1 || bytes == 2 || bytes == 4 || bytes == 8;
        for (const char* memory : {"MEM", "PMEM"}) {
            text.assign(whole ? "(assert (= " : "(assert (and");
            for (unsigned i = 0; i < (whole ? 1 : bytes); ++i) {
                std::int32_t extra = static_cast<std::int32_t>(i);
                if (!whole)
                    text += " (= ";
                appendLoad(text, memory, source_offsets, source_base, whole ? bytes : 1, extra);
                text += ' ';
                appendLoad(text, memory, target_offsets, target_base, whole ? bytes : 1, extra);
                if (!whole)
                    text += ')';
            }
            text += "))\n";
            out << text;
        }
    }
    out << "(assert (= r3 C_))\n";
}
