// Writes decoded instructions as lines of the listing format, the form the
// listing scanner reads:
//
//   ADDR: <NODE+OFFSET>: mnemonic operands
//
// ADDR is the instruction's address (8 lower-case hexadecimal digits),
// OFFSET its place in the laid-out listing in decimal (<NODE> for 0). The
// operands are written in the order of the PowerPC's own assembly, all
// fields numeric and decimal (no leading zeros, no hexadecimal): general
// registers rN (the (rA|0) field as r0 when 0), float registers fN,
// condition fields and bits as numbers (cmpi 7,r9,0; bc 12,30,<node+16>),
// displacements as D(rN), the SPR number of mfspr/mtspr (LR 8, CTR 9,
// XER 1), and a branch hint of bclr/bcctr only when it is not 0. Branch
// targets inside the node are <NODE+OFFSET>; targets in another function
// <SYMBOL> or <SYMBOL+OFFSET>; targets in no function (or in one whose name
// the scanner would not read as a name) are written from the node's start,
// <NODE+DISTANCE>, the distance signed. A word that is no instruction is
// ".long 0xXXXXXXXX", which the grammar rejects.
#ifndef VELCOR_SRC_PPC_LISTING_WRITER_H
#define VELCOR_SRC_PPC_LISTING_WRITER_H

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>

#include "ppc_decoder.h"

// One line of a decoded listing.
struct ListingLine {
    DecodedInstruction m_instruction;
    // The line's place in the laid-out listing.
    std::uint32_t m_offset = 0;
    // A branch to a line of the listing: that line's offset.
    bool m_target_in_listing = false;
    std::uint32_t m_target_offset = 0;
    // The first line of a copy of a shared tail, and the offset in the node
    // of the tail's entry.
    bool m_starts_copy = false;
    std::uint32_t m_copy_of = 0;
};

class ListingWriter {
public:
    // Names a target outside the listing's lines ("<SYMBOL+OFFSET>"), or
    // answers "" to have it written from the node's start.
    using OutsideNamer = std::function<std::string(std::uint32_t a_address)>;

    // a_start: the node's first address.
    ListingWriter(const std::string& a_node, std::uint32_t a_start, OutsideNamer a_outside);

    // Writes a_line (preceded by a comment line where a copy starts).
    void write(std::ostream& a_out, const ListingLine& a_line) const;

    // "<NAME>" or "<NAME+OFFSET>".
    static std::string symbolicAddress(const std::string& a_name, std::int64_t a_offset);
    // Whether the scanner reads a_name as one name that is no opcode.
    static bool isListingName(const std::string& a_name);

private:
    void writeOperand(std::ostream& a_out, const ListingLine& a_line, const DecodedOperand& a_operand) const;

    std::string m_node;
    std::uint32_t m_start;
    OutsideNamer m_outside;
};

#endif
