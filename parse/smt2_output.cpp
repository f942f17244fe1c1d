#include "smt2_output.h"

#include <string>
#include <vector>

#include "dwarf_debug.h"
#include "memory_name.h"

using smt::Sort;
using smt::Term;

namespace {

std::string twoDigits(int a_number)
{
    return std::string(1, char('0' + a_number / 10)) + char('0' + a_number % 10);
}

// A member's address and load, from its memory name: MEM[k+B] is the word
// at B+k, MEM[j+MEM[k+B]] the word at (the word at B+k)+j.
void writeAddress(std::ostream& a_out, const std::string& a_memory, const std::vector<std::int32_t>& a_offsets,
                  std::size_t a_count, const std::string& a_base)
{
    if (a_count == 0) {
        a_out << a_base;
        return;
    }
    std::int32_t offset = a_offsets[a_count - 1];
    if (offset != 0)
        a_out << "(bvadd ";
    if (a_count == 1) {
        a_out << a_base;
    } else {
        a_out << "(load32 " << a_memory << ' ';
        writeAddress(a_out, a_memory, a_offsets, a_count - 1, a_base);
        a_out << ')';
    }
    if (offset != 0) {
        a_out << ' ';
        smt::Printer::writeBitVec(a_out, 32, static_cast<std::uint32_t>(offset));
        a_out << ')';
    }
}

void writeLoad(std::ostream& a_out, const std::string& a_memory, const std::string& a_name, unsigned a_bytes)
{
    std::vector<std::int32_t> offsets;
    std::string base;
    if (!readMemoryCellName(a_name, offsets, base))
        return;
    a_out << "(load" << 8 * a_bytes << ' ' << a_memory << ' ';
    writeAddress(a_out, a_memory, offsets, offsets.size(), base);
    a_out << ')';
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
    for (const auto& pair : m_mapping.getMembers()) {
        // A cell whose size the debugging information does not tell is
        // taken as a word.
        unsigned bytes = pair.second.m_byte_size ? pair.second.m_byte_size : 4;
        if (bytes != 1 && bytes != 2 && bytes != 4 && bytes != 8)
            continue;
        for (const char* memory : {"MEM", "PMEM"}) {
            m_out << "(assert (= ";
            writeLoad(m_out, memory, pair.first, bytes);
            m_out << ' ';
            writeLoad(m_out, memory, pair.second.m_target, bytes);
            m_out << "))\n";
        }
    }
    m_out << "(assert (= r3 C_))\n";
}
