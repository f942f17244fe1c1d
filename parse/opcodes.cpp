// The instruction set table: the names of every opcode the listing accepts
// and the lookup the scanner makes for every name it reads.
#include <algorithm>
#include <cstring>
#include <vector>

#include "parse.h"

const char* const top_names[TOP_COUNT] = {
    "addi",   "addis", "add",  "andc",   "divw",   "mulli",  "mullw",   "stw",  "bclr",
    "stwu",   "mfspr", "stmw", "lwz",    "lwzu",   "lmw",    "cmpi",    "cmpli", "bc",
    "b",      "subf",  "bl",   "cntlzw", "rlwinm", "rlwinm.", "mfcr",   "mtspr", "or",
    "ori",    "neg",   "lfs",  "fsubs",  "stfs",   "fadds",  "fmuls",   "fcmpu", "UNDEFINED"};

namespace {

const char* const extended_names[] = {
#define OPCODE(enumerator, text) text,
#include "extended_opcodes.def"
#undef OPCODE
};

static_assert(sizeof extended_names / sizeof extended_names[0] == TOP_END - TOP_UNDEFINED - 1,
              "one name for every extended opcode");

struct NamedOpcode {
    const char* m_name;
    TOP m_opcode;
};

bool nameBefore(const NamedOpcode& a_left, const NamedOpcode& a_right)
{
    return std::strcmp(a_left.m_name, a_right.m_name) < 0;
}

// Every opcode but TOP_UNDEFINED, sorted by name for a binary search.
const std::vector<NamedOpcode>& sortedOpcodes()
{
    static const std::vector<NamedOpcode> sorted = [] {
        std::vector<NamedOpcode> table;
        for (int opcode = 0; opcode < TOP_END; ++opcode)
            if (opcode != TOP_UNDEFINED)
                table.push_back({topName(opcode), static_cast<TOP>(opcode)});
        std::sort(table.begin(), table.end(), nameBefore);
        return table;
    }();
    return sorted;
}

} // namespace

TOP get_topcode(const char* a_text)
{
    const std::vector<NamedOpcode>& table = sortedOpcodes();
    auto found = std::lower_bound(table.begin(), table.end(), NamedOpcode{a_text, TOP_UNDEFINED}, nameBefore);
    if (found != table.end() && std::strcmp(found->m_name, a_text) == 0)
        return found->m_opcode;
    return TOP_UNDEFINED;
}

const char* topName(int a_opcode)
{
    if (a_opcode >= 0 && a_opcode < TOP_COUNT)
        return top_names[a_opcode];
    if (a_opcode > TOP_UNDEFINED && a_opcode < TOP_END)
        return extended_names[a_opcode - TOP_UNDEFINED - 1];
    return top_names[TOP_UNDEFINED];
}
