// The instruction set table: the names of every opcode the listing accepts
// and the lookup the scanner makes for every name it reads.
#include <cstring>
#include <vector>

#include "misc/stop.h"
#include "parse.h"

const char* const top_names[TOP_COUNT] = {
    "addi", "addis", "add", "andc", "divw",  "mulli", "mullw", "stw",  "bclr",  "stwu",   "mfspr",  "stmw",
    "lwz",  "lwzu",  "lmw", "cmpi", "cmpli", "bc",    "b",     "subf", "bl",    "cntlzw", "rlwinm", "rlwinm.",
    "mfcr", "mtspr", "or",  "ori",  "neg",   "lfs",   "fsubs", "stfs", "fadds", "fmuls",  "fcmpu",  "UNDEFINED"};

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

// Every opcode but TOP_UNDEFINED, by the length and the first letter of its
// name: most names of a listing are registers (r9, f0) whose group holds no
// opcode at all, and no group holds more than a few.
class OpcodeIndex {
public:
    OpcodeIndex()
    {
        for (int opcode = 0; opcode < TOP_END; ++opcode) {
            if (opcode == TOP_UNDEFINED)
                continue;
            const char* name = topName(opcode);
            VELCOR_ASSERT(std::strlen(name) < MAX_LENGTH);
            m_groups[std::strlen(name)][static_cast<unsigned char>(name[0]) % FIRST_LETTERS].push_back(
                {name, static_cast<TOP>(opcode)});
        }
    }

    TOP find(const char* a_text) const
    {
        const std::size_t length = std::strlen(a_text);
        if (length == 0 || length >= MAX_LENGTH)
            return TOP_UNDEFINED;
        for (const NamedOpcode& entry : m_groups[length][static_cast<unsigned char>(a_text[0]) % FIRST_LETTERS])
            if (std::memcmp(entry.m_name, a_text, length) == 0)
                return entry.m_opcode;
        return TOP_UNDEFINED;
    }

private:
    static constexpr std::size_t MAX_LENGTH = 16;
    static constexpr std::size_t FIRST_LETTERS = 128;
    std::vector<NamedOpcode> m_groups[MAX_LENGTH][FIRST_LETTERS];
};

} // namespace

TOP get_topcode(const char* a_text)
{
    static const OpcodeIndex index;
    return index.find(a_text);
}

const char* topName(int a_opcode)
{
    if (a_opcode >= 0 && a_opcode < TOP_COUNT)
        return top_names[a_opcode];
    if (a_opcode > TOP_UNDEFINED && a_opcode < TOP_END)
        return extended_names[a_opcode - TOP_UNDEFINED - 1];
    return top_names[TOP_UNDEFINED];
}
