// The listing front end: the opcode table, the scanner and the grammar, and
// the process-wide objects that the parser fills for the driver.
#ifndef VELCOR_PARSE_PARSE_H
#define VELCOR_PARSE_PARSE_H

#include <cstddef>
#include <cstdio>

class Symbols;
class BasicBlock;
class RawTransition;

// The PowerPC mnemonics the listing accepts. Values 0 to 34 are the listing
// format's own table, in the order of top_names; the values after
// TOP_UNDEFINED are the further mnemonics the decoder of executables prints
// (extended_opcodes.def), which the older output syntaxes translate as
// instructions without a meaning of their own.
enum TOP {
    addi = 0,
    addis,
    add,
    andc,
    divw,
    mulli,
    mullw,
    stw,
    bclr,
    stwu,
    mfspr,
    stmw,
    lwz,
    lwzu,
    lmw,
    cmpi,
    cmpli,
    bc,
    b,
    subf,
    bl,
    cntlzw,
    rlwinm,
    rlwinm_,
    mfcr,
    mtspr,
    orx,
    ori,
    neg,
    lfs,
    fsubs,
    stfs,
    fadds,
    fmuls,
    fcmpu,
    TOP_UNDEFINED,
#define OPCODE(enumerator, text) enumerator,
#include "extended_opcodes.def"
#undef OPCODE
    TOP_END
};

// Entries of top_names: the listing format's table and "UNDEFINED".
constexpr int TOP_COUNT = TOP_UNDEFINED + 1;

// The listing text of each opcode of the listing format's table, indexed by
// TOP (the further mnemonics are named by topName).
extern const char* const top_names[TOP_COUNT];

// The opcode of a mnemonic (exact, case-sensitive), or TOP_UNDEFINED; the
// name "UNDEFINED" is never matched.
TOP get_topcode(const char* a_text);
// The same for the a_length characters at a_text.
TOP get_topcode(const char* a_text, std::size_t a_length);
// The listing name of any opcode; "UNDEFINED" for any value outside TOP.
const char* topName(int a_opcode);

// The value of a symbolic address as the grammar reads it, before it is an
// operand: whether it is the line's own address or a branch target is known
// only where it stands.
struct SymbolicAddress {
    const char* symbol;
    long offset;
};

// Scanner: reads the listing from a_listing (named a_name in messages),
// starting a new input at its first line.
void startScanner(FILE* a_listing, const char* a_name = nullptr);
int yylex();
// Number of the line the scanner stands on (1 + newlines consumed).
int scannerLine();
// The line on which the last address column was read.
int scannerAddressLine();
// Releases the scanner's buffers and the names it handed out.
void resetScanner();

// Grammar: parses the whole listing; 0 when accepted.
int yyparse();
void yyerror(const char* a_message);

// Process-wide objects of the run.
constexpr int MAX_BASIC_BLOCKS = 500;
extern Symbols* parse_symbol_table;
extern BasicBlock** parse_basic_blocks;
extern BasicBlock* basic_block;
extern int debug_level;

#endif
