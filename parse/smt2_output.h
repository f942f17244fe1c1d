// The exact obligations in SMT-LIB 2: what goes into each section of the
// output file when the syntax is -smt2. The driver writes the frame (marks
// and banners as ";" comment lines); this module writes the sections'
// contents from the exact translation and the source mapping.
//
// The file's contract (names and sorts that users and tests rely on):
// r0..r31, Pr0..Pr31, lr, Plr, ctr, Pctr, C_: (_ BitVec 32); cr00..cr31,
// Pcr00..Pcr31, ca, Pca, so, Pso, p1, p2, ..., unwound: Bool; MEM, PMEM:
// (Array (_ BitVec 32) (_ BitVec 8)), big-endian; f0..f31, Pf0..Pf31:
// (_ FloatingPoint 11 53) when the node uses floats.
#ifndef VELCOR_PARSE_SMT2_OUTPUT_H
#define VELCOR_PARSE_SMT2_OUTPUT_H

#include <ostream>

#include "exact_translator.h"
#include "smt_printer.h"

class dwarf_debug;

class Smt2Output {
public:
    Smt2Output(smt::TermTable& a_terms, const ExactContext& a_context, const ExactResult& a_result,
               const dwarf_debug& a_mapping, std::ostream& a_out);

    // The file's first line.
    static void writeLogic(std::ostream& a_out);
    void writeDeclarations();
    // The definitions of shared subterms, the ties of fresh values, and the
    // post-state.
    void writeTransition();
    void writePropositions();
    void writeMapping();

private:
    void declare(const std::string& a_name, smt::Sort a_sort);
    void declarePair(const std::string& a_name, smt::Sort a_sort);
    // (assert (= NAME value)), under unwound when some path may not have
    // left the loops.
    void assertPost(const std::string& a_name, smt::Term a_value);

    smt::TermTable& m_terms;
    const ExactContext& m_context;
    const ExactResult& m_result;
    const dwarf_debug& m_mapping;
    std::ostream& m_out;
    smt::Printer m_printer;
    std::vector<std::pair<std::string, smt::Term>> m_post; // post-state names and values
    bool m_guarded = false;
};

#endif
