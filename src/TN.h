// One operand of an instruction, or one named variable of the symbolic
// machine. Its name is adjusted once, at creation, to the identifier rules of
// the output syntax in force.
#ifndef VELCOR_SRC_TN_H
#define VELCOR_SRC_TN_H

#include <cstdint>
#include <string>

#include "misc/compact_text.h"
#include "misc/small_object_pool.h"

enum TN_t {
    TN_SYM_REG = 0, // a register or other operand written by name
    TN_SYM_PREG,    // a predicate register by name
    TN_CONST,       // an integer constant
    TN_LABEL,       // a label (a name starting with a full stop)
    TN_SYMBOL,      // a symbol (memory and stack cells)
    TN_DISP,        // a displacement
    TN_EXTERNAL,    // an external (array) variable
    TN_LOGICAL,     // a logical variable, printed by its bare name
    TN_LOG_REG,     // a logical register (condition bits, propositions)
    TN_LTOFF        // an offset into the linkage table
};

// The value a named operand carries: the number after a leading "r" when one
// can be read (r31 gives 31), otherwise NO_REGISTER_NUMBER.
constexpr long NO_REGISTER_NUMBER = 129;
long registerNumberOf(const char* a_name);

class TN {
public:
    VELCOR_POOLED_ALLOCATION
    explicit TN(long a_value);
    TN(TN_t a_kind, long a_value);
    // Kind TN_LABEL when the name starts with a full stop.
    TN(TN_t a_kind, const char* a_name);
    // The same for a name that isCorrectName has accepted.
    struct CorrectName {};
    TN(TN_t a_kind, const char* a_name, CorrectName);
    TN(TN_t a_kind, const char* a_temporary_name, const char* a_name);
    TN(TN_t a_kind, const char* a_name, long a_value);
    TN(const TN&) = default;
    TN(TN&&) = default;
    // Setting an operand afresh (a name registered again) may change its
    // kind and value, and with them what expressions over it compute.
    TN& operator=(const TN& a_other);

    const char* TNName() const { return m_name.c_str(); }
    // misc::hashString(TNName()).
    std::uint32_t TNNameHash() const { return m_name_hash; }
    const char* TNTemporaryName() const { return m_temporary_name.c_str(); }
    long TNValue() const { return m_value; }
    long TNRegNum() const { return m_value; }
    TN_t TNType() const { return m_type; }

    bool isConst() const { return m_type == TN_CONST || m_type == TN_LABEL || m_type == TN_DISP; }
    bool isReg() const { return m_type == TN_SYM_REG; }
    bool isLabel() const { return m_type == TN_LABEL; }
    bool isExternal() const { return m_type == TN_EXTERNAL; }
    bool isLogical() const { return m_type == TN_LOG_REG; }
    bool isLTOFF() const { return m_type == TN_LTOFF; }
    bool isP0() const { return m_type == TN_SYM_REG && m_name == "p0"; }
    bool isArray() const { return m_type == TN_EXTERNAL || m_pointer_to_array; }
    bool isAddress() const { return m_isAddress; }
    void setIsAddress(bool a_is_address) { m_isAddress = a_is_address; }
    void setPointerToArray() { m_pointer_to_array = true; }

    // Copies name, value, kind and temporary name; the two flags stay.
    void update(const TN* a_other);

    // The name with the characters the output syntax does not allow in
    // identifiers replaced by X: full stops for CVC, full stops and
    // underscores for ICS and TLV.
    static std::string correctNameForIcs(const char* a_name);
    // Whether correctNameForIcs leaves a_name as it is.
    static bool isCorrectName(const char* a_name);

    // Whether this operand holds what TN(a_kind, TNName()) holds: setting
    // it afresh to that would change nothing, the two flags included when
    // a_with_flags (assignment copies them, update does not).
    bool holdsNamed(TN_t a_kind, bool a_with_flags) const;

    // Changes whenever some operand stops or starts being a constant, or a
    // constant operand changes its value: expressions keep what they
    // computed from their operands only while this number stays the same.
    static std::uint64_t constGeneration() { return s_const_generation; }

    // Writes the operand to the output file: constants as their value,
    // logical variables by their bare name, others with "P" when primed and
    // "s" on the source side.
    void print(bool a_prime, bool a_source) const;

private:
    void noteConstChange(bool a_was_const, long a_old_value);
    // Derives what is kept with the name, once m_name and m_value are set.
    void nameSet();
    // Sets the value from the name, as registerNumberOf reads it, and the rest.
    void valueFromName();

    static std::uint64_t s_const_generation;

    misc::CompactText m_temporary_name;
    std::string m_name;
    long m_value = 0;
    // The hash of m_name (misc::hashString), kept with the name: tables
    // keyed by names are asked for an operand's entry all the time.
    std::uint32_t m_name_hash = 0;
    TN_t m_type;
    // Whether m_value is registerNumberOf(m_name), kept with both:
    // registering a name again asks for it every time.
    bool m_value_is_name_number = m_value == NO_REGISTER_NUMBER;
    bool m_isAddress = false;
    bool m_pointer_to_array = false;
};

#endif
