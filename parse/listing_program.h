// The listing as the exact translation reads it: each line's instruction
// in the line's own words (names as written, numbers, displacements with
// their base, symbolic addresses with their symbol), with the line number
// and the address it came from. The grammar fills it while it parses, on
// the same road as the older translation; nothing here knows whether the
// lines came from a file or from the decoder.
#ifndef VELCOR_PARSE_LISTING_PROGRAM_H
#define VELCOR_PARSE_LISTING_PROGRAM_H

#include <cstdint>
#include <string>
#include <vector>

#include "parse.h"

struct ListingOperand {
    enum Kind {
        NAME,         // r3, f1, or any other name
        NUMBER,       // 12, -4
        DISPLACEMENT, // -8(r1): m_value -8, m_name "r1"
        ADDRESS       // <node+16>: m_name "node", m_value 16
    };
    Kind m_kind = NUMBER;
    std::string m_name;
    long m_value = 0;
};

struct ListingInstruction {
    int m_line = 0;                // line of the listing where the instruction is
    std::uint64_t m_address = 0;   // the address column
    std::string m_symbol;          // symbol of the instruction's own place
    long m_offset = 0;             // offset from that symbol: the instruction's id
    TOP m_opcode = TOP_UNDEFINED;
    std::vector<ListingOperand> m_operands;
};

class ListingProgram {
public:
    // Recording is off unless the run needs it.
    void setRecording(bool a_recording) { m_recording = a_recording; }
    bool isRecording() const { return m_recording; }

    // A line starts with its address, found at a_line of the listing.
    void beginLine(int a_line, std::uint64_t a_address);
    // A symbolic address: before the opcode the line's own place, after it
    // a branch target.
    void addAddress(const char* a_symbol, long a_offset);
    void setOpcode(TOP a_opcode);
    void addName(const char* a_name);
    void addNumber(long a_value);
    void addDisplacement(long a_value, const char* a_base);
    void endLine();

    const std::vector<ListingInstruction>& instructions() const { return m_instructions; }
    void clear();

private:
    bool m_recording = false;
    bool m_have_opcode = false;
    ListingInstruction m_current;
    std::vector<ListingInstruction> m_instructions;
};

extern ListingProgram listing_program;

#endif
