#include "exact_semantics.h"

#include <string>
#include <unordered_map>

#include "listing_program.h"
#include "misc/stop.h"

using smt::RoundingMode;
using smt::Sort;
using smt::Term;
using smt::TermTable;

// ------------------------------------------------------------------ context

ExactContext::ExactContext(TermTable& a_terms, const ConstantMemory* a_constants)
    : m_terms(a_terms), m_constants(a_constants),
      m_floats(a_terms, [this](Term a_value) { return bitsOf(a_value); })
{
}

Term ExactContext::fresh(const char* a_kind, Sort a_sort)
{
    if (m_fresh_count >= 10000000)
        stopCapacity("more than 10000000 fresh values");
    Term value = m_terms.symbol(std::string(a_kind) + std::to_string(++m_fresh_count), a_sort);
    m_fresh.push_back(value);
    return value;
}

Term ExactContext::bitsOf(Term a_value)
{
    // One double, one pattern: the same value always gets the same bits.
    auto known = m_bits_of.find(a_value.m_id);
    if (known != m_bits_of.end())
        return known->second;
    if (m_terms.op(a_value) == smt::Op::FpFromBits && m_terms.sort(a_value) == Sort::doubleFloat())
        return m_terms.child(a_value, 0);
    // Fresh bits tied to the value: cheap for a solver that reasons about
    // unknown values (an exact function of the value costs it dozens of
    // comparisons), and a NaN's payload stays free.
    Term bits = fresh("bits", Sort::bitVec(64));
    constrain(m_terms.eq(m_terms.fpFromBits(Sort::doubleFloat(), bits), a_value));
    // The processor's arithmetic makes quiet NaNs only: without this, a
    // single store of such a NaN could write an infinity.
    if (isArithmeticResult(a_value))
        constrain(m_terms.implies(m_terms.fpIsNaN(a_value),
                                  m_terms.eq(m_terms.extract(51, 51, bits), m_terms.bitVec(1, 1))));
    m_bits_of.emplace(a_value.m_id, bits);
    return bits;
}

bool ExactContext::isArithmeticResult(Term a_value) const
{
    // Values without bits are results or the registers before the code
    // (symbols, which may hold any NaN), joined by conditions.
    if (m_terms.op(a_value) == smt::Op::Symbol)
        return false;
    if (m_terms.op(a_value) == smt::Op::Ite)
        return isArithmeticResult(m_terms.child(a_value, 1)) && isArithmeticResult(m_terms.child(a_value, 2));
    return true;
}

void ExactContext::pinConstants(std::uint32_t a_start, std::uint32_t a_size)
{
    if (!m_constants)
        return;
    Term memory = m_terms.symbol("MEM", Sort::memory());
    for (std::uint32_t i = 0; i < a_size; ++i) {
        std::uint32_t address = a_start + i;
        std::uint8_t byte = 0;
        if (!m_pinned.insert(address).second || !m_constants->readByte(address, byte))
            continue;
        if (m_pinned.size() > MAX_PINNED_BYTES)
            stopCapacity("more than " + std::to_string(MAX_PINNED_BYTES) + " bytes of constants read through computed addresses");
        constrain(m_terms.eq(m_terms.select(memory, m_terms.bitVec(32, address)), m_terms.bitVec(8, byte)));
    }
}

// ------------------------------------------------------------------- shapes

namespace {

bool isRegisterName(const std::string& a_name, char a_letter, long& a_number)
{
    if (a_name.size() < 2 || a_name.size() > 3 || a_name[0] != a_letter)
        return false;
    long number = 0;
    for (std::size_t i = 1; i < a_name.size(); ++i) {
        if (a_name[i] < '0' || a_name[i] > '9')
            return false;
        number = number * 10 + (a_name[i] - '0');
    }
    if (number > 31 || (a_name.size() == 3 && a_name[1] == '0'))
        return false;
    a_number = number;
    return true;
}

} // namespace

// ------------------------------------------------------------------ helpers

namespace {

constexpr long SPR_LR = 8;
constexpr long SPR_CTR = 9;

// The state of one instruction's execution, with short names for what the
// meanings below use again and again.
class Step {
public:
    Step(ExactContext& a_context, ExactSemantics& a_semantics, const ExactInstruction& a_instruction,
         MachineState& a_state)
        : m_context(a_context), m_semantics(a_semantics), m_terms(a_context.terms()), m_in(a_instruction),
          m_state(a_state)
    {
    }

    long value(int k) const { return m_in.m_operands[k].m_value; }
    // The mnemonic without the dot of a record form ("add" for "add.").
    std::string base() const
    {
        const std::string& m = m_in.m_mnemonic;
        return m.back() == '.' ? m.substr(0, m.size() - 1) : m;
    }
    Term word(std::uint64_t a_value) { return m_terms.bitVec(32, a_value); }
    Term zero() { return word(0); }

    Term gpr(int k) { return m_state.m_gpr[value(k)]; }
    // The (rA|0) field: register 0 reads as zero.
    Term gprOrZero(int k) { return value(k) == 0 ? zero() : gpr(k); }
    void setGpr(int k, Term a_value) { m_state.m_gpr[value(k)] = a_value; }
    Term signedImmediate(int k) { return word(static_cast<std::uint64_t>(value(k))); }
    Term unsignedImmediate(int k) { return word(static_cast<std::uint64_t>(value(k)) & 0xffff); }

    // Effective address of a displacement operand: (base|0) + d.
    Term displacementAddress(int k)
    {
        const ExactOperand& operand = m_in.m_operands[k];
        Term base = operand.m_base == 0 ? zero() : m_state.m_gpr[operand.m_base];
        return m_terms.bvAddConst(base, static_cast<std::uint64_t>(operand.m_value));
    }
    // Effective address of an indexed form: (rA|0) + rB.
    Term indexedAddress(int a_base, int a_index) { return m_terms.bvAdd(gprOrZero(a_base), gpr(a_index)); }

    // Condition-register field f: LT, GT, EQ from the comparison, SO from XER.
    void setField(long a_field, Term a_less, Term a_greater, Term a_equal)
    {
        m_state.m_cr[4 * a_field] = a_less;
        m_state.m_cr[4 * a_field + 1] = a_greater;
        m_state.m_cr[4 * a_field + 2] = a_equal;
        m_state.m_cr[4 * a_field + 3] = m_state.m_so;
    }
    void signedCompare(long a_field, Term a_left, Term a_right)
    {
        setField(a_field, m_terms.bvSlt(a_left, a_right), m_terms.bvSlt(a_right, a_left), m_terms.eq(a_left, a_right));
    }
    void unsignedCompare(long a_field, Term a_left, Term a_right)
    {
        setField(a_field, m_terms.bvUlt(a_left, a_right), m_terms.bvUlt(a_right, a_left), m_terms.eq(a_left, a_right));
    }
    // The record forms compare their result with zero into field 0.
    void record(Term a_result)
    {
        if (m_in.m_mnemonic.back() == '.')
            signedCompare(0, a_result, zero());
    }
    void setResult(int k, Term a_value)
    {
        setGpr(k, a_value);
        record(a_value);
    }

    // a + b + carry_in, with the carry out.
    Term addWithCarry(Term a_left, Term a_right, Term a_carry_in, Term& a_carry_out)
    {
        Term wide = m_terms.bvAdd(m_terms.bvAdd(m_terms.zeroExtend(1, a_left), m_terms.zeroExtend(1, a_right)),
                                  m_terms.zeroExtend(32, m_terms.bitOf(a_carry_in)));
        a_carry_out = m_terms.eq(m_terms.extract(32, 32, wide), m_terms.bitVec(1, 1));
        return m_terms.extract(31, 0, wide);
    }

    Term load(Term a_address, unsigned a_bytes) { return m_semantics.loadBytes(m_state, a_address, a_bytes); }
    void store(Term a_address, Term a_value) { m_state.m_memory = m_terms.storeBytes(m_state.m_memory, a_address, a_value); }

    ExactContext& m_context;
    ExactSemantics& m_semantics;
    TermTable& m_terms;
    const ExactInstruction& m_in;
    MachineState& m_state;
};

// The mask of rlwinm and its kin: ones from bit a_begin to bit a_end (bit
// 0 the most significant), wrapping around when a_begin > a_end.
std::uint32_t rotateMask(long a_begin, long a_end)
{
    std::uint32_t from_begin = 0xffffffffu >> a_begin;
    std::uint32_t to_end = 0xffffffffu << (31 - a_end);
    return a_begin <= a_end ? (from_begin & to_end) : (from_begin | to_end);
}

Term countLeadingZeros(TermTable& a_terms, Term a_value)
{
    unsigned width = a_terms.width(a_value);
    Term count = a_terms.bitVec(32, width);
    for (unsigned bit = 0; bit < width; ++bit)
        count = a_terms.ite(a_terms.eq(a_terms.extract(bit, bit, a_value), a_terms.bitVec(1, 1)),
                            a_terms.bitVec(32, width - 1 - bit), count);
    return count;
}

// ---------------------------------------------------------- float helpers

Term roundingMode(TermTable& a_terms, RoundingMode a_mode)
{
    return a_terms.roundingMode(a_mode);
}

Term doubleConstant(TermTable& a_terms, std::uint64_t a_bits)
{
    return a_terms.fpFromBits(Sort::doubleFloat(), a_terms.bitVec(64, a_bits));
}

// A single in memory as the register's double, bit for bit as the
// architecture widens it (a NaN keeps its payload).
Term singleToDoubleBits(TermTable& a_terms, Term a_word)
{
    Term sign = a_terms.extract(31, 31, a_word);
    Term exponent = a_terms.extract(30, 23, a_word);
    Term fraction = a_terms.extract(22, 0, a_word);
    Term top_two = a_terms.extract(31, 30, a_word);
    Term exponent_msb = a_terms.extract(30, 30, a_word);
    Term rest = a_terms.concat(a_terms.extract(29, 0, a_word), a_terms.bitVec(29, 0));
    Term msb3 = a_terms.concat(exponent_msb, a_terms.concat(exponent_msb, exponent_msb));
    Term not_msb3 = a_terms.bvNot(msb3);
    Term normal = a_terms.concat(a_terms.concat(top_two, not_msb3), rest);
    Term special = a_terms.concat(a_terms.concat(top_two, msb3), rest); // zero, infinity, NaN
    // A denormal single is a normal double: its leading one found.
    Term denormal = a_terms.concat(sign, a_terms.bitVec(63, 0));
    Term wide_fraction = a_terms.zeroExtend(41, fraction);
    for (unsigned p = 0; p < 23; ++p) {
        Term highest = a_terms.eq(a_terms.extract(22, p, fraction), a_terms.bitVec(23 - p, 1));
        Term mantissa = a_terms.extract(51, 0, a_terms.bvShl(wide_fraction, a_terms.bitVec(64, 52 - p)));
        Term bits = a_terms.concat(a_terms.concat(sign, a_terms.bitVec(11, p + 874)), mantissa);
        denormal = a_terms.ite(highest, bits, denormal);
    }
    Term exponent_zero = a_terms.eq(exponent, a_terms.bitVec(8, 0));
    Term exponent_ones = a_terms.eq(exponent, a_terms.bitVec(8, 0xff));
    Term fraction_zero = a_terms.eq(fraction, a_terms.bitVec(23, 0));
    return a_terms.ite(exponent_ones, special,
                       a_terms.ite(exponent_zero, a_terms.ite(fraction_zero, special, denormal), normal));
}

// The single that stfs stores for a register's bits: the architecture's
// bit selection (no rounding), denormalised in the single's denormal
// range, and (as the reference implementation does) a signed zero below.
Term doubleToSingleBits(TermTable& a_terms, Term a_bits)
{
    Term exponent = a_terms.zeroExtend(53, a_terms.extract(62, 52, a_bits));
    Term sign_word = a_terms.concat(a_terms.extract(63, 63, a_bits), a_terms.bitVec(31, 0));
    Term selected = a_terms.concat(a_terms.extract(63, 62, a_bits), a_terms.extract(58, 29, a_bits));
    Term significand = a_terms.concat(a_terms.bitVec(12, 1), a_terms.extract(51, 0, a_bits));
    Term shift = a_terms.bvSub(a_terms.bitVec(64, 926), exponent);
    Term denormal = a_terms.bvOr(sign_word, a_terms.extract(31, 0, a_terms.bvLshr(significand, shift)));
    return a_terms.ite(a_terms.bvUlt(a_terms.bitVec(64, 896), exponent), selected,
                       a_terms.ite(a_terms.bvUle(a_terms.bitVec(64, 874), exponent), denormal, sign_word));
}

} // namespace

// ------------------------------------------------------------------ memory

Term ExactSemantics::loadBytes(const MachineState& a_state, Term a_address, unsigned a_bytes)
{
    TermTable& terms = m_context.terms();
    // A computed address beside a constant object of the executable (an
    // index into a table of constants): the object's bytes are known.
    const ConstantMemory* constants = m_context.constants();
    if (constants && terms.op(a_address) != smt::Op::BvConst) {
        Term base;
        std::uint64_t offset = 0;
        terms.splitOffset(a_address, base, offset);
        std::uint8_t byte = 0;
        std::uint32_t start = 0;
        std::uint32_t size = 0;
        if (constants->readByte(static_cast<std::uint32_t>(offset), byte) &&
            constants->objectHolding(static_cast<std::uint32_t>(offset), start, size))
            m_context.pinConstants(start, size);
    }
    Term known = terms.storedValue(a_state.m_memory, a_address, a_bytes);
    if (!known.isNull())
        return known;
    Term value;
    for (unsigned i = 0; i < a_bytes; ++i) {
        Term address = terms.bvAddConst(a_address, i);
        Term byte;
        std::uint8_t constant = 0;
        // Read-only bytes are what the executable holds, whatever the code
        // stored elsewhere.
        if (terms.op(address) == smt::Op::BvConst && m_context.constants() &&
            m_context.constants()->readByte(static_cast<std::uint32_t>(terms.constValue(address)), constant))
            byte = terms.bitVec(8, constant);
        else
            byte = terms.select(a_state.m_memory, address);
        value = value.isNull() ? byte : terms.concat(value, byte);
    }
    return value;
}

void ExactSemantics::unknownCall(MachineState& a_state)
{
    static const int volatile_registers[] = {0, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    for (int reg : volatile_registers)
        a_state.m_gpr[reg] = m_context.fresh("call", Sort::bitVec(32));
    for (int field : {0, 1, 5, 6, 7})
        for (int bit = 0; bit < 4; ++bit)
            a_state.m_cr[4 * field + bit] = m_context.fresh("call", Sort::boolean());
    for (int reg = 0; reg <= 13; ++reg)
        a_state.m_fpr[reg] = FloatValue{m_context.fresh("call", Sort::bitVec(64)), Term{}};
    a_state.m_ca = m_context.fresh("call", Sort::boolean());
    a_state.m_lr = m_context.fresh("call", Sort::bitVec(32));
    a_state.m_ctr = m_context.fresh("call", Sort::bitVec(32));
    a_state.m_memory = m_context.fresh("callmem", Sort::memory());
}

// --------------------------------------------------------------- execution

namespace {

using Meaning = void (*)(Step&, ControlOutcome&);

void arithmetic(Step& s, ControlOutcome&)
{
    TermTable& t = s.m_terms;
    const std::string& m = s.m_in.m_mnemonic;
    const std::string base = s.base();
    MachineState& state = s.m_state;
    Term carry;
    if (base == "addi") {
        s.setGpr(1, t.bvAdd(s.gprOrZero(2), s.signedImmediate(3)));
    } else if (base == "addis") {
        s.setGpr(1, t.bvAdd(s.gprOrZero(2), s.word(static_cast<std::uint64_t>(s.value(3)) << 16)));
    } else if (base == "addic" || base == "subfic") {
        Term left = base == "addic" ? s.gpr(2) : t.bvNot(s.gpr(2));
        Term carry_in = t.boolean(base == "subfic");
        Term result = s.addWithCarry(left, s.signedImmediate(3), carry_in, carry);
        state.m_ca = carry;
        if (base == "addic" && m.back() == '.')
            s.setResult(1, result);
        else
            s.setGpr(1, result);
    } else if (base == "mulli") {
        s.setGpr(1, t.bvMul(s.gpr(2), s.signedImmediate(3)));
    } else if (base == "add") {
        s.setResult(1, t.bvAdd(s.gpr(2), s.gpr(3)));
    } else if (base == "addc" || base == "adde" || base == "subfc" || base == "subfe") {
        bool subtract = base[3] == 'f';
        Term left = subtract ? t.bvNot(s.gpr(2)) : s.gpr(2);
        Term carry_in = base.back() == 'e' ? state.m_ca : t.boolean(subtract);
        Term result = s.addWithCarry(left, s.gpr(3), carry_in, carry);
        state.m_ca = carry;
        s.setResult(1, result);
    } else if (base == "addze" || base == "addme" || base == "subfze" || base == "subfme") {
        Term left = base[3] == 'f' ? t.bvNot(s.gpr(2)) : s.gpr(2);
        Term addend = base.find("me") != std::string::npos ? s.word(0xffffffff) : s.zero();
        Term result = s.addWithCarry(left, addend, state.m_ca, carry);
        state.m_ca = carry;
        s.setResult(1, result);
    } else if (base == "subf") {
        s.setResult(1, t.bvSub(s.gpr(3), s.gpr(2)));
    } else if (base == "neg") {
        s.setResult(1, t.bvNeg(s.gpr(2)));
    } else if (base == "mullw") {
        s.setResult(1, t.bvMul(s.gpr(2), s.gpr(3)));
    } else if (base == "mulhw" || base == "mulhwu") {
        bool is_signed = base == "mulhw";
        Term left = is_signed ? t.signExtend(32, s.gpr(2)) : t.zeroExtend(32, s.gpr(2));
        Term right = is_signed ? t.signExtend(32, s.gpr(3)) : t.zeroExtend(32, s.gpr(3));
        s.setResult(1, t.extract(63, 32, t.bvMul(left, right)));
    } else if (base == "divw" || base == "divwu") {
        Term dividend = s.gpr(2);
        Term divisor = s.gpr(3);
        Term undefined = t.eq(divisor, s.zero());
        Term quotient;
        if (base == "divw") {
            undefined = t.orOf(undefined, t.andOf(t.eq(dividend, s.word(0x80000000)), t.eq(divisor, s.word(0xffffffff))));
            quotient = t.bvSdiv(dividend, divisor);
        } else {
            quotient = t.bvUdiv(dividend, divisor);
        }
        // Division by zero and the one overflowing quotient leave the
        // register undefined: any value at all.
        if (!t.isFalse(undefined))
            quotient = t.ite(undefined, s.m_context.fresh("quotient", Sort::bitVec(32)), quotient);
        s.setResult(1, quotient);
    }
}

void logic(Step& s, ControlOutcome&)
{
    TermTable& t = s.m_terms;
    const std::string base = s.base();
    if (base == "andi" || base == "andis" || base == "ori" || base == "oris" || base == "xori" || base == "xoris") {
        std::uint64_t immediate = static_cast<std::uint64_t>(s.value(3)) & 0xffff;
        if (base.back() == 's')
            immediate <<= 16;
        Term value = s.word(immediate);
        Term result = base[0] == 'a' ? t.bvAnd(s.gpr(2), value)
                                     : base[0] == 'o' ? t.bvOr(s.gpr(2), value) : t.bvXor(s.gpr(2), value);
        // andi. and andis. always record.
        s.setResult(1, result);
        return;
    }
    if (base == "extsb" || base == "extsh") {
        unsigned bits = base == "extsb" ? 8 : 16;
        s.setResult(1, t.signExtend(32 - bits, t.extract(bits - 1, 0, s.gpr(2))));
        return;
    }
    if (base == "cntlzw") {
        s.setResult(1, countLeadingZeros(t, s.gpr(2)));
        return;
    }
    Term a = s.gpr(2);
    Term b = s.gpr(3);
    Term result;
    if (base == "and")
        result = t.bvAnd(a, b);
    else if (base == "andc")
        result = t.bvAnd(a, t.bvNot(b));
    else if (base == "or")
        result = t.bvOr(a, b);
    else if (base == "orc")
        result = t.bvOr(a, t.bvNot(b));
    else if (base == "xor")
        result = t.bvXor(a, b);
    else if (base == "nor")
        result = t.bvNot(t.bvOr(a, b));
    else if (base == "nand")
        result = t.bvNot(t.bvAnd(a, b));
    else // eqv
        result = t.bvNot(t.bvXor(a, b));
    s.setResult(1, result);
}

void shift(Step& s, ControlOutcome&)
{
    TermTable& t = s.m_terms;
    const std::string base = s.base();
    Term value = s.gpr(2);
    // Shift amounts of registers come from their low six bits: 32 and above
    // shift everything out.
    Term amount = base == "srawi" ? s.word(static_cast<std::uint64_t>(s.value(3))) : t.bvAnd(s.gpr(3), s.word(0x3f));
    if (base == "slw") {
        s.setResult(1, t.bvShl(value, amount));
    } else if (base == "srw") {
        s.setResult(1, t.bvLshr(value, amount));
    } else { // sraw, srawi
        Term result = t.bvAshr(value, amount);
        // The carry says that a negative value lost one bits.
        s.m_state.m_ca = t.andOf(t.bvSlt(value, s.zero()), t.notOf(t.eq(t.bvShl(result, amount), value)));
        s.setResult(1, result);
    }
}

void rotate(Step& s, ControlOutcome&)
{
    TermTable& t = s.m_terms;
    const std::string base = s.base();
    Term value = s.gpr(2);
    Term rotated;
    long begin;
    long end;
    if (base == "rlwnm") {
        Term amount = t.bvAnd(s.gpr(3), s.word(31));
        rotated = t.bvOr(t.bvShl(value, amount), t.bvLshr(value, t.bvSub(s.word(32), amount)));
        begin = s.value(4);
        end = s.value(5);
    } else {
        rotated = t.rotateLeft(static_cast<unsigned>(s.value(3)), value);
        begin = s.value(4);
        end = s.value(5);
    }
    Term mask = s.word(rotateMask(begin, end));
    Term result = t.bvAnd(rotated, mask);
    if (base == "rlwimi") // inserts under the mask, keeps the rest of rA
        result = t.bvOr(result, t.bvAnd(s.gpr(1), t.bvNot(mask)));
    s.setResult(1, result);
}

void compare(Step& s, ControlOutcome&)
{
    const std::string& m = s.m_in.m_mnemonic;
    long field = s.value(1);
    if (m == "cmpi")
        s.signedCompare(field, s.gpr(2), s.signedImmediate(3));
    else if (m == "cmp")
        s.signedCompare(field, s.gpr(2), s.gpr(3));
    else if (m == "cmpli")
        s.unsignedCompare(field, s.gpr(2), s.unsignedImmediate(3));
    else
        s.unsignedCompare(field, s.gpr(2), s.gpr(3));
}

// The size in bytes and the kind of a load or store, from its mnemonic.
struct Access {
    unsigned m_bytes;
    bool m_store;
    bool m_algebraic;  // lha: sign-extended
    bool m_update;     // rA takes the effective address
    bool m_indexed;    // (rA|0) + rB
};

Access accessOf(const std::string& a_mnemonic)
{
    Access access{};
    std::string m = a_mnemonic;
    access.m_store = m[0] == 's';
    std::string rest = m.substr(access.m_store ? 2 : 1); // after "st" or "l"
    char size = rest[0];
    access.m_bytes = size == 'b' ? 1 : size == 'h' ? 2 : 4;
    access.m_algebraic = rest.size() > 1 && rest[1] == 'a';
    std::string tail = rest.substr(access.m_algebraic || rest[1] == 'z' ? 2 : 1);
    access.m_update = !tail.empty() && tail[0] == 'u';
    access.m_indexed = !tail.empty() && tail.back() == 'x';
    return access;
}

void integerMemory(Step& s, ControlOutcome&)
{
    TermTable& t = s.m_terms;
    Access access = accessOf(s.m_in.m_mnemonic);
    Term address = access.m_indexed ? s.indexedAddress(2, 3) : s.displacementAddress(2);
    if (access.m_store) {
        s.store(address, t.extract(8 * access.m_bytes - 1, 0, s.gpr(1)));
    } else {
        Term value = s.load(address, access.m_bytes);
        value = access.m_algebraic ? t.signExtend(32 - 8 * access.m_bytes, value)
                                   : t.zeroExtend(32 - 8 * access.m_bytes, value);
        s.setGpr(1, value);
    }
    if (access.m_update) {
        int base = access.m_indexed ? static_cast<int>(s.value(2)) : s.m_in.m_operands[2].m_base;
        s.m_state.m_gpr[base] = address;
    }
}

void multipleWords(Step& s, ControlOutcome&)
{
    TermTable& t = s.m_terms;
    bool store = s.m_in.m_mnemonic == "stmw";
    Term address = s.displacementAddress(2);
    for (long reg = s.value(1); reg < 32; ++reg) {
        Term at = t.bvAddConst(address, static_cast<std::uint64_t>(4 * (reg - s.value(1))));
        if (store)
            s.store(at, s.m_state.m_gpr[reg]);
        else
            s.m_state.m_gpr[reg] = s.load(at, 4);
    }
}

Term floatValue(Step& s, int k)
{
    return s.m_context.floats().value(s.m_state.m_fpr[s.value(k)]);
}

Term floatBits(Step& s, int k)
{
    return s.m_context.floats().bits(s.m_state.m_fpr[s.value(k)]);
}

void setFloatValue(Step& s, int k, Term a_value)
{
    s.m_state.m_fpr[s.value(k)] = FloatValue{Term{}, a_value};
}

void setFloatBits(Step& s, int k, Term a_bits)
{
    s.m_state.m_fpr[s.value(k)] = FloatValue{a_bits, Term{}};
}

// The single whose widening a double value's term shows (a single load, a
// single-precision result, a choice between such), or null. Looks at no
// more than a few terms: the answer only picks the cheaper of two exact
// forms.
Term singleOf(TermTable& t, Term a_value, int& a_budget)
{
    if (--a_budget < 0)
        return Term{};
    if (t.op(a_value) == smt::Op::FpConvert && t.sort(t.child(a_value, 1)) == Sort::singleFloat())
        return t.child(a_value, 1);
    if (t.op(a_value) != smt::Op::Ite)
        return Term{};
    Term then_single = singleOf(t, t.child(a_value, 1), a_budget);
    if (then_single.isNull())
        return Term{};
    Term else_single = singleOf(t, t.child(a_value, 2), a_budget);
    if (else_single.isNull())
        return Term{};
    return t.ite(t.child(a_value, 0), then_single, else_single);
}

Term singleOf(TermTable& t, Term a_value)
{
    int budget = 32;
    return singleOf(t, a_value, budget);
}

Term widen(TermTable& t, Term a_single)
{
    return t.fpConvert(Sort::doubleFloat(), roundingMode(t, RoundingMode::NearestEven), a_single);
}

void floatMemory(Step& s, ControlOutcome&)
{
    TermTable& t = s.m_terms;
    const std::string& m = s.m_in.m_mnemonic;
    bool store = m[0] == 's';
    // lfs, lfd, stfs, stfd, then u for update and x for indexed.
    char size = m[store ? 3 : 2];
    bool single = size == 's';
    bool indexed = m.back() == 'x';
    bool update = m.find('u', 3) != std::string::npos;
    Term address = indexed ? s.indexedAddress(2, 3) : s.displacementAddress(2);
    if (m == "stfiwx") {
        s.store(address, t.extract(31, 0, floatBits(s, 1)));
    } else if (store) {
        Term bits = floatBits(s, 1);
        s.store(address, single ? doubleToSingleBits(t, bits) : bits);
    } else {
        Term word = s.load(address, single ? 4 : 8);
        if (single) {
            // Both views: the bits keep a NaN's payload, the value shows
            // that the register holds a single, which single arithmetic
            // then does in single precision.
            s.m_state.m_fpr[s.value(1)] =
                FloatValue{singleToDoubleBits(t, word), widen(t, t.fpFromBits(Sort::singleFloat(), word))};
        } else {
            setFloatBits(s, 1, word);
        }
    }
    if (update) {
        int base = indexed ? static_cast<int>(s.value(2)) : s.m_in.m_operands[2].m_base;
        s.m_state.m_gpr[base] = address;
    }
}

// The operation's exact result rounded once to single precision, from
// the operation done in double rounded down (d) and up (u). Exact: they
// agree. Otherwise the exact result lies strictly between two neighbouring
// doubles; if both round to the same single, so does it. If not, the
// single rounding boundary between them (a midpoint of two singles, which
// is a double) is d or u itself: above d's midpoint the result rounds up,
// below u's it rounds down.
template <class Operation>
Term roundOnceToSingle(Step& s, Operation a_operation)
{
    TermTable& t = s.m_terms;
    Term nearest = roundingMode(t, RoundingMode::NearestEven);
    auto toSingle = [&](Term a_mode, Term a_value) { return t.fpConvert(Sort::singleFloat(), a_mode, a_value); };
    Term down = a_operation(roundingMode(t, RoundingMode::TowardNegative));
    Term up = a_operation(roundingMode(t, RoundingMode::TowardPositive));
    Term exact = t.fpEq(down, up);
    Term from_down = toSingle(nearest, down);
    Term from_up = toSingle(nearest, up);
    // d is the midpoint of the singles around it when their sum (exact in
    // double) is twice d.
    Term below = widen(t, toSingle(roundingMode(t, RoundingMode::TowardNegative), down));
    Term above = widen(t, toSingle(roundingMode(t, RoundingMode::TowardPositive), down));
    Term twice = t.fpAdd(nearest, down, down);
    Term down_is_midpoint = t.fpEq(t.fpAdd(nearest, below, above), twice);
    // The single chosen, then widened: the result shows it is a single.
    return widen(t, t.ite(exact, from_up,
                          t.ite(t.eq(from_down, from_up), from_down, t.ite(down_is_midpoint, from_up, from_down))));
}

void floatArithmetic(Step& s, ControlOutcome&)
{
    TermTable& t = s.m_terms;
    std::string m = s.m_in.m_mnemonic;
    bool single = m.back() == 's' && m != "fabs" && m != "fnabs";
    std::string base = single ? m.substr(0, m.size() - 1) : m;
    Term nearest = roundingMode(t, RoundingMode::NearestEven);
    if (base == "fmr") {
        s.m_state.m_fpr[s.value(1)] = s.m_state.m_fpr[s.value(2)];
        return;
    }
    if (base == "fneg" || base == "fabs" || base == "fnabs") {
        // Sign operations change the sign bit only, NaNs included.
        Term known_value = s.m_state.m_fpr[s.value(2)].m_value;
        Term bits = floatBits(s, 2);
        Term sign = t.extract(63, 63, bits);
        Term new_sign = base == "fneg" ? t.bvNot(sign) : t.bitVec(1, base == "fnabs" ? 1 : 0);
        setFloatBits(s, 1, t.concat(new_sign, t.extract(62, 0, bits)));
        // A single keeps showing it is one (the value view of a NaN is
        // the NaN whatever its sign).
        Term single_value = known_value.isNull() ? Term{} : singleOf(t, known_value);
        if (!single_value.isNull()) {
            Term magnitude = base == "fneg" ? single_value : t.fpAbs(single_value);
            s.m_state.m_fpr[s.value(1)].m_value = widen(t, base == "fabs" ? magnitude : t.fpNeg(magnitude));
        }
        return;
    }
    if (base == "frsp") {
        Term rounded = t.fpConvert(Sort::singleFloat(), nearest, floatValue(s, 2));
        setFloatValue(s, 1, widen(t, rounded));
        return;
    }
    if (base == "fctiw" || base == "fctiwz") {
        Term value = floatValue(s, 2);
        bool truncate = base == "fctiwz";
        Term mode = roundingMode(t, truncate ? RoundingMode::TowardZero : RoundingMode::NearestEven);
        // Out of range saturates; a NaN gives the most negative integer.
        Term too_big = t.fpLeq(doubleConstant(t, truncate ? 0x41e0000000000000ull : 0x41dfffffffe00000ull), value);
        Term too_small = truncate ? t.fpLeq(value, doubleConstant(t, 0xc1e0000000200000ull))
                                  : t.fpLt(value, doubleConstant(t, 0xc1e0000000100000ull));
        Term converted = t.fpToSigned(32, mode, value);
        Term word = t.ite(too_big, t.bitVec(32, 0x7fffffffu), t.ite(too_small, t.bitVec(32, 0x80000000u), converted));
        // The word goes to the low half; the architecture leaves the high
        // half undefined, and it is taken as the reference implementation
        // sets it: the word's sign, and zero for a NaN.
        setFloatBits(s, 1, t.ite(t.fpIsNaN(value), t.bitVec(64, 0x80000000u), t.signExtend(32, word)));
        return;
    }
    Term a = floatValue(s, 2);
    Term b = floatValue(s, 3);
    auto binary = [&](Term a_mode) -> Term {
        if (base == "fadd")
            return t.fpAdd(a_mode, a, b);
        if (base == "fsub")
            return t.fpSub(a_mode, a, b);
        if (base == "fmul")
            return t.fpMul(a_mode, a, b);
        return t.fpDiv(a_mode, a, b);
    };
    bool is_binary = base == "fadd" || base == "fsub" || base == "fmul" || base == "fdiv";
    Term c = is_binary ? Term{} : floatValue(s, 4);
    // Operands that are singles make the single operation the exact one,
    // and a much smaller one for a solver.
    Term single_a = single ? singleOf(t, a) : Term{};
    Term single_b = single_a.isNull() ? Term{} : singleOf(t, b);
    Term single_c = single_b.isNull() || is_binary ? Term{} : singleOf(t, c);
    if (!single_b.isNull() && (is_binary || !single_c.isNull())) {
        a = single_a;
        b = single_b;
        c = single_c;
    }
    bool in_single = t.sort(a) == Sort::singleFloat();
    auto rounded = [&](auto a_operation) -> Term {
        if (in_single)
            return widen(t, a_operation(nearest));
        return single ? roundOnceToSingle(s, a_operation) : a_operation(nearest);
    };
    if (is_binary) {
        setFloatValue(s, 1, rounded(binary));
        return;
    }
    // Fused multiply-add: FRT = +-(FRA * FRC +- FRB), one rounding.
    bool subtract = base == "fmsub" || base == "fnmsub";
    bool negate = base == "fnmadd" || base == "fnmsub";
    auto fused = [&](Term a_mode) -> Term { return t.fpFma(a_mode, a, b, subtract ? t.fpNeg(c) : c); };
    Term result = rounded(fused);
    setFloatValue(s, 1, negate ? t.fpNeg(result) : result);
}

void floatCompare(Step& s, ControlOutcome&)
{
    TermTable& t = s.m_terms;
    long field = s.value(1);
    Term a = floatValue(s, 2);
    Term b = floatValue(s, 3);
    s.m_state.m_cr[4 * field] = t.fpLt(a, b);
    s.m_state.m_cr[4 * field + 1] = t.fpLt(b, a);
    s.m_state.m_cr[4 * field + 2] = t.fpEq(a, b);
    s.m_state.m_cr[4 * field + 3] = t.orOf(t.fpIsNaN(a), t.fpIsNaN(b));
}

void conditionRegister(Step& s, ControlOutcome&)
{
    TermTable& t = s.m_terms;
    const std::string& m = s.m_in.m_mnemonic;
    MachineState& state = s.m_state;
    if (m == "mfcr") {
        Term word;
        for (int bit = 0; bit < 32; ++bit) {
            Term one = t.bitOf(state.m_cr[bit]);
            word = word.isNull() ? one : t.concat(word, one);
        }
        s.setGpr(1, word);
    } else if (m == "mtcrf") {
        Term value = s.gpr(2);
        for (int field = 0; field < 8; ++field)
            if ((s.value(1) >> (7 - field)) & 1)
                for (int bit = 4 * field; bit < 4 * field + 4; ++bit)
                    state.m_cr[bit] = t.eq(t.extract(31 - bit, 31 - bit, value), t.bitVec(1, 1));
    } else if (m == "mcrf") {
        for (int bit = 0; bit < 4; ++bit)
            state.m_cr[4 * s.value(1) + bit] = state.m_cr[4 * s.value(2) + bit];
    } else {
        Term a = state.m_cr[s.value(2)];
        Term b = state.m_cr[s.value(3)];
        Term result;
        if (m == "crand")
            result = t.andOf(a, b);
        else if (m == "cror")
            result = t.orOf(a, b);
        else if (m == "crxor")
            result = t.notOf(t.eq(a, b));
        else if (m == "crnand")
            result = t.notOf(t.andOf(a, b));
        else if (m == "crnor")
            result = t.notOf(t.orOf(a, b));
        else if (m == "creqv")
            result = t.eq(a, b);
        else if (m == "crandc")
            result = t.andOf(a, t.notOf(b));
        else
            result = t.orOf(a, t.notOf(b));
        state.m_cr[s.value(1)] = result;
    }
}

void specialRegister(Step& s, ControlOutcome&)
{
    bool from = s.m_in.m_mnemonic == "mfspr";
    long spr = from ? s.value(2) : s.value(1);
    Term& target = spr == SPR_LR ? s.m_state.m_lr : s.m_state.m_ctr;
    if (from)
        s.setGpr(1, target);
    else
        target = s.gpr(2);
}

// The condition of a conditional branch (BO, BI), after the count register
// has been decremented when BO asks for it.
Term branchCondition(Step& s)
{
    TermTable& t = s.m_terms;
    long options = s.value(1);
    Term condition = t.trueTerm();
    if (!(options & 0x4)) {
        s.m_state.m_ctr = t.bvAddConst(s.m_state.m_ctr, 0xffffffff);
        Term zero = t.eq(s.m_state.m_ctr, s.zero());
        condition = (options & 0x2) ? zero : t.notOf(zero);
    }
    if (!(options & 0x10)) {
        Term bit = s.m_state.m_cr[s.value(2)];
        condition = t.andOf(condition, (options & 0x8) ? bit : t.notOf(bit));
    }
    return condition;
}

void branch(Step& s, ControlOutcome& a_outcome)
{
    TermTable& t = s.m_terms;
    const std::string& m = s.m_in.m_mnemonic;
    bool link = m.back() == 'l';
    bool external = s.m_in.m_target_operand && s.m_in.m_operands[s.m_in.m_target_operand].m_external;
    a_outcome.m_condition = (m == "b" || m == "bl") ? t.trueTerm() : branchCondition(s);
    if (m == "b" || m == "bc" || m == "bl" || m == "bcl")
        a_outcome.m_kind = (m == "bl" || (link && external)) ? ControlOutcome::CALL
                           : external                        ? ControlOutcome::TAIL_CALL
                                                             : ControlOutcome::BRANCH;
    else if (m == "bclr" || m == "bclrl")
        a_outcome.m_kind = link ? ControlOutcome::CALL : ControlOutcome::RETURN;
    else
        a_outcome.m_kind = link ? ControlOutcome::CALL : ControlOutcome::COMPUTED;
    // The link register takes the next instruction's address whether or
    // not the branch is taken (what bcl 20,31 reads as the program counter).
    if (link)
        s.m_state.m_lr = s.word(s.m_in.m_address + 4u);
}

void noEffect(Step&, ControlOutcome&) {}

// What each mnemonic with an exact meaning takes and means. Operand
// letters: r general register, f float register, c condition field 0-7,
// b condition bit 0-31, o branch options 0-31, s signed 16-bit, u unsigned
// 16-bit, h 16-bit either way (addis), k 0-31, m 0-255, x a special
// register number, d displacement(base), t branch target; a letter after
// '?' may be left out.
struct Family {
    Meaning m_meaning;
    const char* m_shape;
    std::initializer_list<const char*> m_mnemonics;
};

const Family families[] = {
    {arithmetic, "rrs", {"addi", "addic", "addic.", "subfic", "mulli"}},
    {arithmetic, "rrh", {"addis"}},
    {arithmetic, "rrr",
     {"add", "add.", "addc", "addc.", "adde", "adde.", "subf", "subf.", "subfc", "subfc.", "subfe", "subfe.",
      "mullw", "mullw.", "mulhw", "mulhw.", "mulhwu", "mulhwu.", "divw", "divw.", "divwu", "divwu."}},
    {arithmetic, "rr",
     {"addze", "addze.", "addme", "addme.", "subfze", "subfze.", "subfme", "subfme.", "neg", "neg."}},
    {logic, "rrr",
     {"and", "and.", "andc", "andc.", "or", "or.", "orc", "orc.", "xor", "xor.", "nor", "nor.", "nand", "nand.",
      "eqv", "eqv."}},
    {logic, "rru", {"ori", "oris", "xori", "xoris", "andi.", "andis."}},
    {logic, "rr", {"extsb", "extsb.", "extsh", "extsh.", "cntlzw", "cntlzw."}},
    {shift, "rrr", {"slw", "slw.", "srw", "srw.", "sraw", "sraw."}},
    {shift, "rrk", {"srawi", "srawi."}},
    {rotate, "rrkkk", {"rlwinm", "rlwinm.", "rlwimi", "rlwimi."}},
    {rotate, "rrrkk", {"rlwnm", "rlwnm."}},
    {compare, "crs", {"cmpi"}},
    {compare, "cru", {"cmpli"}},
    {compare, "crr", {"cmp", "cmpl"}},
    {floatCompare, "cff", {"fcmpu", "fcmpo"}},
    {integerMemory, "rd",
     {"lwz", "lwzu", "lhz", "lhzu", "lha", "lhau", "lbz", "lbzu", "stw", "stwu", "sth", "sthu", "stb", "stbu"}},
    {integerMemory, "rrr",
     {"lwzx", "lwzux", "lhzx", "lhzux", "lhax", "lhaux", "lbzx", "lbzux", "stwx", "stwux", "sthx", "sthux", "stbx",
      "stbux"}},
    {multipleWords, "rd", {"lmw", "stmw"}},
    {floatMemory, "fd", {"lfs", "lfsu", "lfd", "lfdu", "stfs", "stfsu", "stfd", "stfdu"}},
    {floatMemory, "frr", {"lfsx", "lfsux", "lfdx", "lfdux", "stfsx", "stfsux", "stfdx", "stfdux", "stfiwx"}},
    {floatArithmetic, "fff", {"fadd", "fadds", "fsub", "fsubs", "fmul", "fmuls", "fdiv", "fdivs"}},
    {floatArithmetic, "ffff",
     {"fmadd", "fmadds", "fmsub", "fmsubs", "fnmadd", "fnmadds", "fnmsub", "fnmsubs"}},
    {floatArithmetic, "ff", {"fmr", "fneg", "fabs", "fnabs", "frsp", "fctiw", "fctiwz"}},
    {conditionRegister, "r", {"mfcr"}},
    {conditionRegister, "mr", {"mtcrf"}},
    {conditionRegister, "cc", {"mcrf"}},
    {conditionRegister, "bbb", {"crand", "cror", "crxor", "crnand", "crnor", "creqv", "crandc", "crorc"}},
    {specialRegister, "rx", {"mfspr"}},
    {specialRegister, "xr", {"mtspr"}},
    {branch, "t", {"b", "bl"}},
    {branch, "obt", {"bc", "bcl"}},
    {branch, "ob?k", {"bclr", "bclrl", "bcctr", "bcctrl"}},
    {noEffect, "", {"sync", "isync"}},
};

struct InstructionMeaning {
    const char* m_shape;
    Meaning m_meaning;
};

// Every mnemonic with an exact meaning, and its meaning; a prepared
// instruction keeps the index of its own.
struct InstructionTable {
    std::vector<InstructionMeaning> m_meanings;
    std::unordered_map<std::string, int> m_index;
};

const InstructionTable& instructionTable()
{
    static const InstructionTable table = [] {
        InstructionTable made;
        for (const Family& family : families)
            for (const char* mnemonic : family.m_mnemonics) {
                made.m_index.emplace(mnemonic, static_cast<int>(made.m_meanings.size()));
                made.m_meanings.push_back(InstructionMeaning{family.m_shape, family.m_meaning});
            }
        return made;
    }();
    return table;
}

} // namespace

bool ExactSemantics::hasExactMeaning(const std::string& a_mnemonic)
{
    return instructionTable().m_index.count(a_mnemonic) != 0;
}

namespace {


bool inRange(long a_value, long a_low, long a_high)
{
    return a_value >= a_low && a_value <= a_high;
}

// Checks one operand against its letter; null when it fits, else what it
// should have been.
const char* checkOperand(char a_letter, const ListingOperand& a_operand, ExactOperand& a_exact)
{
    bool number = a_operand.m_kind == ListingOperand::NUMBER;
    a_exact.m_value = a_operand.m_value;
    switch (a_letter) {
    case 'r':
        if (a_operand.m_kind == ListingOperand::NAME && isRegisterName(a_operand.m_name, 'r', a_exact.m_value))
            return nullptr;
        return "a general register (r0 to r31)";
    case 'f':
        if (a_operand.m_kind == ListingOperand::NAME && isRegisterName(a_operand.m_name, 'f', a_exact.m_value))
            return nullptr;
        return "a float register (f0 to f31)";
    case 'c':
        return number && inRange(a_operand.m_value, 0, 7) ? nullptr : "a condition field (0 to 7)";
    case 'b':
        return number && inRange(a_operand.m_value, 0, 31) ? nullptr : "a condition bit (0 to 31)";
    case 'o':
    case 'k':
        return number && inRange(a_operand.m_value, 0, 31) ? nullptr : "a number from 0 to 31";
    case 'm':
        return number && inRange(a_operand.m_value, 0, 255) ? nullptr : "a field mask (0 to 255)";
    case 's':
        return number && inRange(a_operand.m_value, -32768, 32767) ? nullptr : "a signed 16-bit number";
    case 'u':
        return number && inRange(a_operand.m_value, 0, 65535) ? nullptr : "an unsigned 16-bit number";
    case 'h':
        return number && inRange(a_operand.m_value, -32768, 65535) ? nullptr : "a 16-bit number";
    case 'x':
        return number ? nullptr : "a special register number";
    case 'd':
        if (a_operand.m_kind == ListingOperand::DISPLACEMENT && inRange(a_operand.m_value, -32768, 32767)) {
            long base = 0;
            if (isRegisterName(a_operand.m_name, 'r', base)) {
                a_exact.m_base = static_cast<int>(base);
                return nullptr;
            }
        }
        return "a 16-bit displacement from a general register";
    case 't':
        if (a_operand.m_kind == ListingOperand::ADDRESS) {
            a_exact.m_symbol = &a_operand.m_name;
            return nullptr;
        }
        return "a branch target (<symbol+offset>)";
    default:
        return "an operand of another kind";
    }
}

} // namespace

std::string ExactSemantics::prepare(const ListingInstruction& a_line, ExactInstruction& a_instruction)
{
    a_instruction = ExactInstruction();
    a_instruction.m_line = a_line.m_line;
    a_instruction.m_address = static_cast<std::uint32_t>(a_line.m_address);
    a_instruction.m_offset = a_line.m_offset;
    a_instruction.m_mnemonic = topName(a_line.m_opcode);
    const std::string& mnemonic = a_instruction.m_mnemonic;
    const InstructionTable& table = instructionTable();
    auto found = table.m_index.find(mnemonic);
    if (found == table.m_index.end())
        return "no exact semantics for " + mnemonic;
    a_instruction.m_meaning = found->second;
    const InstructionMeaning& meaning = table.m_meanings[found->second];
    a_instruction.m_operands.reserve(a_line.m_operands.size() + 1);
    a_instruction.m_operands.emplace_back(); // operand 0: the instruction's place
    a_instruction.m_operands[0].m_value = a_line.m_offset;
    std::size_t index = 0;
    bool optional = false;
    for (const char* letter = meaning.m_shape; *letter; ++letter) {
        if (*letter == '?') {
            optional = true;
            continue;
        }
        if (index >= a_line.m_operands.size()) {
            if (optional)
                break;
            return "operand " + std::to_string(index + 1) + " of " + mnemonic + " is missing";
        }
        ExactOperand operand;
        if (const char* expected = checkOperand(*letter, a_line.m_operands[index], operand))
            return "operand " + std::to_string(index + 1) + " of " + mnemonic + " is not " + expected;
        if (*letter == 't')
            a_instruction.m_target_operand = static_cast<int>(index + 1);
        a_instruction.m_operands.push_back(operand);
        ++index;
    }
    if (index < a_line.m_operands.size())
        return mnemonic + " takes " + std::to_string(index) + " operands, not " +
               std::to_string(a_line.m_operands.size());

    const std::vector<ExactOperand>& operands = a_instruction.m_operands;
    if (mnemonic == "mfspr" || mnemonic == "mtspr") {
        long spr = mnemonic == "mfspr" ? operands[2].m_value : operands[1].m_value;
        if (spr != SPR_LR && spr != SPR_CTR)
            return "no exact semantics for " + mnemonic + " of special register " + std::to_string(spr);
    }
    // Forms the architecture leaves invalid have no meaning to be exact
    // about: an update with base r0, a load updating its own destination,
    // a load-multiple overwriting its base.
    bool update = mnemonic.size() > 2 && (mnemonic.find("u", 2) != std::string::npos) &&
                  (mnemonic[0] == 'l' || mnemonic.compare(0, 2, "st") == 0) && mnemonic != "lmw" &&
                  mnemonic != "stmw";
    if (update) {
        bool indexed = mnemonic.back() == 'x';
        long base = indexed ? operands[2].m_value : operands[2].m_base;
        bool load = mnemonic[0] == 'l' && mnemonic[1] != 'f';
        if (base == 0 || (load && base == operands[1].m_value))
            return "invalid form of " + mnemonic + " (its base register is r0 or its destination)";
    }
    if (mnemonic == "lmw" && operands[2].m_base >= operands[1].m_value)
        return "invalid form of lmw (its base register is among the registers it loads)";
    return "";
}

ControlOutcome ExactSemantics::execute(const ExactInstruction& a_instruction, MachineState& a_state)
{
    ControlOutcome outcome;
    outcome.m_condition = m_context.terms().trueTerm();
    VELCOR_ASSERT(a_instruction.m_meaning >= 0);
    Step step(m_context, *this, a_instruction, a_state);
    instructionTable().m_meanings[a_instruction.m_meaning].m_meaning(step, outcome);
    return outcome;
}
