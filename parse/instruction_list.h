// The answer to -list-instructions: every mnemonic velcor reads (in a
// listing, or decoded from an executable) with what each output syntax
// does with it.
#ifndef VELCOR_PARSE_INSTRUCTION_LIST_H
#define VELCOR_PARSE_INSTRUCTION_LIST_H

#include <ostream>

void writeInstructionList(std::ostream& a_out);

#endif
