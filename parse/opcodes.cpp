// The instruction set table: the names of every opcode the listing accepts
// and the lookup the scanner makes for every name it reads.
#include <cstddef>
#include <cstring>

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

// Every opcode but TOP_UNDEFINED in an open-addressing table keyed by a
// hash of the name's length and first, second and last characters: most
// names a listing holds are registers (r9, f0), which land on an empty slot
// or a slot of another length, and most opcodes are found at the first try.
class OpcodeIndex {
public:
    OpcodeIndex()
    {
        for (int opcode = 0; opcode < TOP_END; ++opcode) {
            if (opcode == TOP_UNDEFINED)
                continue;
            const char* name = topName(opcode);
            const std::size_t length = std::strlen(name);
            VELCOR_ASSERT(length > 0 && length < 256 && !endsWithDigit(name, length));
            std::size_t slot = slotOf(name, length);
            while (m_slots[slot].m_name)
                slot = (slot + 1) % SLOTS;
            m_slots[slot] = {name, static_cast<unsigned char>(length), static_cast<TOP>(opcode)};
        }
    }

    TOP find(const char* a_text, std::size_t a_length) const
    {
        // Register names, most of the names of a listing, end with a digit,
        // and no mnemonic does: they need no probe.
        if (a_length == 0 || endsWithDigit(a_text, a_length))
            return TOP_UNDEFINED;
        for (std::size_t slot = slotOf(a_text, a_length); m_slots[slot].m_name; slot = (slot + 1) % SLOTS) {
            const Slot& entry = m_slots[slot];
            if (entry.m_length == a_length && std::memcmp(entry.m_name, a_text, a_length) == 0)
                return entry.m_opcode;
        }
        return TOP_UNDEFINED;
    }

private:
    struct Slot {
        const char* m_name = nullptr;
        unsigned char m_length = 0;
        TOP m_opcode = TOP_UNDEFINED;
    };

    // Far more slots than opcodes, so that the runs stay short.
    static constexpr std::size_t SLOTS = 2048;

    static bool endsWithDigit(const char* a_text, std::size_t a_length)
    {
        return a_text[a_length - 1] >= '0' && a_text[a_length - 1] <= '9';
    }

    static std::size_t slotOf(const char* a_text, std::size_t a_length)
    {
        const auto byte = [a_text](std::size_t a_index) { return static_cast<unsigned char>(a_text[a_index]); };
        std::size_t hash = a_length * 0x9e5u + byte(0) * 0x3bu + byte(a_length - 1) * 0x1fu;
        if (a_length > 1)
            hash += byte(1) * 0x65u;
        return (hash ^ (hash >> 7)) % SLOTS;
    }

    Slot m_slots[SLOTS];
};

} // namespace

TOP get_topcode(const char* a_text, std::size_t a_length)
{
    static const OpcodeIndex index;
    return index.find(a_text, a_length);
}

TOP get_topcode(const char* a_text)
{
    return get_topcode(a_text, std::strlen(a_text));
}

const char* topName(int a_opcode)
{
    if (a_opcode >= 0 && a_opcode < TOP_COUNT)
        return top_names[a_opcode];
    if (a_opcode > TOP_UNDEFINED && a_opcode < TOP_END)
        return extended_names[a_opcode - TOP_UNDEFINED - 1];
    return top_names[TOP_UNDEFINED];
}
