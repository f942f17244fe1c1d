// Writes terms as SMT-LIB 2 text. A subterm that several printed places use,
// or that would nest deeply, is written once as (define-fun eN () SORT ...)
// and named everywhere else: the text grows with the number of distinct
// terms, never with the number of paths through them.
#ifndef VELCOR_SRC_SMT_PRINTER_H
#define VELCOR_SRC_SMT_PRINTER_H

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "smt_term.h"

namespace smt {

class Printer {
public:
    // Nesting deeper than this inside one printed term is cut by a name, so
    // that no line and no reader's recursion grows with the code's length.
    static constexpr unsigned MAX_INLINE_HEIGHT = 24;

    Printer(const TermTable& a_terms, std::ostream& a_out);

    // Announces a term that will be written (each call is one use). All
    // roots come before writeDefinitions.
    void addRoot(Term a_term);
    // Decides the names and writes the definitions, children first.
    void writeDefinitions();
    // Writes a root: its name when it has one, the term itself otherwise.
    void write(Term a_term);

    static void writeSort(std::ostream& a_out, Sort a_sort);
    // A bit-vector constant: #x... when the width is a multiple of four,
    // #b... otherwise.
    static void writeBitVec(std::ostream& a_out, unsigned a_width, std::uint64_t a_value);
    static void appendSort(std::string& a_text, Sort a_sort);
    static void appendBitVec(std::string& a_text, unsigned a_width, std::uint64_t a_value);

private:
    bool isLeaf(Term a_term) const;
    void writeInline(Term a_term);
    void writeOperator(const Node& a_node);
    // Text is gathered and written in blocks of about this size.
    static constexpr std::size_t FLUSH_SIZE = 1 << 16;
    void flush(std::size_t a_keep);

    const TermTable& m_terms;
    std::ostream& m_out;
    std::string m_text; // written, not yet flushed to m_out
    std::vector<std::uint32_t> m_uses;
    std::vector<std::uint32_t> m_names; // 0: written inline
    std::vector<Term> m_roots;
    std::uint32_t m_next_name = 0;
    bool m_defined = false;
};

} // namespace smt

#endif
