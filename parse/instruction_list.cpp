#include "instruction_list.h"

#include <string>

#include "exact_semantics.h"
#include "machine.h"
#include "parse.h"

void writeInstructionList(std::ostream& a_out)
{
    a_out << "What each output syntax does with each mnemonic velcor reads:\n"
          << "  exact        its meaning, bit for bit\n"
          << "  approximate  the older model's meaning (values as reals, recognised patterns)\n"
          << "  unknown      cvc, tlv, ics: nothing assigned (the path conditions still pass it);\n"
          << "               smt2: the run stops, naming the instruction\n"
          << "mfspr and mtspr are exact for the link and count registers (8 and 9) only.\n\n";
    a_out << "mnemonic  cvc/tlv/ics  smt2\n";
    for (int opcode = 0; opcode < TOP_END; ++opcode) {
        if (opcode == TOP_UNDEFINED)
            continue;
        const std::string mnemonic = topName(opcode);
        const char* classic = Machine::translates(static_cast<TOP>(opcode)) ? "approximate" : "unknown";
        const char* exact = ExactSemantics::hasExactMeaning(mnemonic) ? "exact" : "unknown";
        a_out << mnemonic << std::string(mnemonic.size() < 10 ? 10 - mnemonic.size() : 1, ' ') << classic
              << std::string(13 - std::string(classic).size(), ' ') << exact << '\n';
    }
}
