// The decoding table: one row per instruction form, each naming its primary
// and extended opcode, where its operands lie in the word and in which
// order the assembly writes them. Bits that no row's field or opcode claims
// are reserved: a word with any of them set is no instruction.
#include "ppc_decoder.h"

#include <vector>

namespace {

// Where an operand lies in the word (bit 0 is the most significant) and
// what it is.
enum Field : unsigned char {
    NONE,
    RT,           // general register, bits 6-10 (RT or RS)
    RA,           // general register, bits 11-15
    RA_OR_ZERO,   // the (rA|0) field, bits 11-15
    RB,           // general register, bits 16-20
    FRT,          // float register, bits 6-10 (FRT or FRS)
    FRA,          // float register, bits 11-15
    FRB,          // float register, bits 16-20
    FRC,          // float register, bits 21-25
    BF,           // condition field, bits 6-8
    BFA,          // condition field, bits 11-13
    BT,           // condition bit, bits 6-10
    BA,           // condition bit, bits 11-15
    BB,           // condition bit, bits 16-20
    BO,           // number, bits 6-10 (BO, or TO of the traps)
    BI,           // condition bit, bits 11-15
    BH,           // number, bits 19-20, written only when not 0
    SIMM,         // signed number, bits 16-31
    UIMM,         // unsigned number, bits 16-31
    D_RA_OR_ZERO, // displacement, bits 16-31, with the (rA|0) base
    D_RA,         // displacement, bits 16-31, with the updated base rA
    SH,           // number, bits 16-20
    MB,           // number, bits 21-25
    ME,           // number, bits 26-30
    SPR,          // number, bits 11-20 with their halves swapped
    CRM,          // number, bits 12-19
    BD,           // target, bits 16-29, relative
    LI            // target, bits 6-29, relative
};

// The bits each field occupies.
std::uint32_t fieldMask(Field a_field)
{
    switch (a_field) {
    case RT:
    case FRT:
    case BT:
    case BO:
        return 0x03e00000;
    case RA:
    case RA_OR_ZERO:
    case FRA:
    case BA:
    case BI:
        return 0x001f0000;
    case RB:
    case FRB:
    case BB:
    case SH:
        return 0x0000f800;
    case FRC:
    case MB:
        return 0x000007c0;
    case ME:
        return 0x0000003e;
    case BF:
        return 0x03800000;
    case BFA:
        return 0x001c0000;
    case BH:
        return 0x00001800;
    case SIMM:
    case UIMM:
        return 0x0000ffff;
    case D_RA_OR_ZERO:
    case D_RA:
        return 0x001fffff;
    case SPR:
        return 0x001ff800;
    case CRM:
        return 0x000ff000;
    case BD:
        return 0x0000fffc;
    case LI:
        return 0x03fffffc;
    case NONE:
        break;
    }
    return 0;
}

// Constraints beyond reserved bits, for the forms the architecture calls
// invalid.
enum class Check : unsigned char {
    NONE,
    UPDATE,        // rA is not 0
    LOAD_UPDATE,   // rA is neither 0 nor the loaded register
    LOAD_MULTIPLE, // rA is not among the loaded registers
    NO_CTR_COUNT   // bcctr: the count register is not decremented
};

// How the extended opcode is placed.
enum class Extended : unsigned char {
    NONE,
    X, // bits 21-30 (X, XL, XFX, and XO forms with OE = 0)
    A  // bits 26-30 (A form)
};

constexpr int MAX_FIELDS = MAX_DECODED_OPERANDS;

struct Form {
    unsigned m_primary;
    Extended m_extended_kind;
    unsigned m_extended;
    // The opcode with bit 31 (Rc or LK) clear and set; TOP_UNDEFINED where
    // the bit is reserved or must be set.
    TOP m_bit31_clear;
    TOP m_bit31_set;
    Field m_fields[MAX_FIELDS];
    Check m_check;
};

constexpr TOP NO = TOP_UNDEFINED;

// Operand orders are those of the PowerPC's own assembly.
const Form forms[] = {
    // Loads and stores, displacement forms
    {32, Extended::NONE, 0, lwz, NO, {RT, D_RA_OR_ZERO}, Check::NONE},
    {33, Extended::NONE, 0, lwzu, NO, {RT, D_RA}, Check::LOAD_UPDATE},
    {34, Extended::NONE, 0, op_lbz, NO, {RT, D_RA_OR_ZERO}, Check::NONE},
    {35, Extended::NONE, 0, op_lbzu, NO, {RT, D_RA}, Check::LOAD_UPDATE},
    {36, Extended::NONE, 0, stw, NO, {RT, D_RA_OR_ZERO}, Check::NONE},
    {37, Extended::NONE, 0, stwu, NO, {RT, D_RA}, Check::UPDATE},
    {38, Extended::NONE, 0, op_stb, NO, {RT, D_RA_OR_ZERO}, Check::NONE},
    {39, Extended::NONE, 0, op_stbu, NO, {RT, D_RA}, Check::UPDATE},
    {40, Extended::NONE, 0, op_lhz, NO, {RT, D_RA_OR_ZERO}, Check::NONE},
    {41, Extended::NONE, 0, op_lhzu, NO, {RT, D_RA}, Check::LOAD_UPDATE},
    {42, Extended::NONE, 0, op_lha, NO, {RT, D_RA_OR_ZERO}, Check::NONE},
    {43, Extended::NONE, 0, op_lhau, NO, {RT, D_RA}, Check::LOAD_UPDATE},
    {44, Extended::NONE, 0, op_sth, NO, {RT, D_RA_OR_ZERO}, Check::NONE},
    {45, Extended::NONE, 0, op_sthu, NO, {RT, D_RA}, Check::UPDATE},
    {46, Extended::NONE, 0, lmw, NO, {RT, D_RA_OR_ZERO}, Check::LOAD_MULTIPLE},
    {47, Extended::NONE, 0, stmw, NO, {RT, D_RA_OR_ZERO}, Check::NONE},
    {48, Extended::NONE, 0, lfs, NO, {FRT, D_RA_OR_ZERO}, Check::NONE},
    {49, Extended::NONE, 0, op_lfsu, NO, {FRT, D_RA}, Check::UPDATE},
    {50, Extended::NONE, 0, op_lfd, NO, {FRT, D_RA_OR_ZERO}, Check::NONE},
    {51, Extended::NONE, 0, op_lfdu, NO, {FRT, D_RA}, Check::UPDATE},
    {52, Extended::NONE, 0, stfs, NO, {FRT, D_RA_OR_ZERO}, Check::NONE},
    {53, Extended::NONE, 0, op_stfsu, NO, {FRT, D_RA}, Check::UPDATE},
    {54, Extended::NONE, 0, op_stfd, NO, {FRT, D_RA_OR_ZERO}, Check::NONE},
    {55, Extended::NONE, 0, op_stfdu, NO, {FRT, D_RA}, Check::UPDATE},

    // Loads and stores, indexed forms
    {31, Extended::X, 23, op_lwzx, NO, {RT, RA_OR_ZERO, RB}, Check::NONE},
    {31, Extended::X, 55, op_lwzux, NO, {RT, RA, RB}, Check::LOAD_UPDATE},
    {31, Extended::X, 87, op_lbzx, NO, {RT, RA_OR_ZERO, RB}, Check::NONE},
    {31, Extended::X, 119, op_lbzux, NO, {RT, RA, RB}, Check::LOAD_UPDATE},
    {31, Extended::X, 279, op_lhzx, NO, {RT, RA_OR_ZERO, RB}, Check::NONE},
    {31, Extended::X, 311, op_lhzux, NO, {RT, RA, RB}, Check::LOAD_UPDATE},
    {31, Extended::X, 343, op_lhax, NO, {RT, RA_OR_ZERO, RB}, Check::NONE},
    {31, Extended::X, 375, op_lhaux, NO, {RT, RA, RB}, Check::LOAD_UPDATE},
    {31, Extended::X, 151, op_stwx, NO, {RT, RA_OR_ZERO, RB}, Check::NONE},
    {31, Extended::X, 183, op_stwux, NO, {RT, RA, RB}, Check::UPDATE},
    {31, Extended::X, 215, op_stbx, NO, {RT, RA_OR_ZERO, RB}, Check::NONE},
    {31, Extended::X, 247, op_stbux, NO, {RT, RA, RB}, Check::UPDATE},
    {31, Extended::X, 407, op_sthx, NO, {RT, RA_OR_ZERO, RB}, Check::NONE},
    {31, Extended::X, 439, op_sthux, NO, {RT, RA, RB}, Check::UPDATE},
    {31, Extended::X, 535, op_lfsx, NO, {FRT, RA_OR_ZERO, RB}, Check::NONE},
    {31, Extended::X, 567, op_lfsux, NO, {FRT, RA, RB}, Check::UPDATE},
    {31, Extended::X, 599, op_lfdx, NO, {FRT, RA_OR_ZERO, RB}, Check::NONE},
    {31, Extended::X, 631, op_lfdux, NO, {FRT, RA, RB}, Check::UPDATE},
    {31, Extended::X, 663, op_stfsx, NO, {FRT, RA_OR_ZERO, RB}, Check::NONE},
    {31, Extended::X, 695, op_stfsux, NO, {FRT, RA, RB}, Check::UPDATE},
    {31, Extended::X, 727, op_stfdx, NO, {FRT, RA_OR_ZERO, RB}, Check::NONE},
    {31, Extended::X, 759, op_stfdux, NO, {FRT, RA, RB}, Check::UPDATE},
    {31, Extended::X, 983, op_stfiwx, NO, {FRT, RA_OR_ZERO, RB}, Check::NONE},

    // Arithmetic with an immediate
    {14, Extended::NONE, 0, addi, NO, {RT, RA_OR_ZERO, SIMM}, Check::NONE},
    {15, Extended::NONE, 0, addis, NO, {RT, RA_OR_ZERO, SIMM}, Check::NONE},
    {12, Extended::NONE, 0, op_addic, NO, {RT, RA, SIMM}, Check::NONE},
    {13, Extended::NONE, 0, op_addic_, NO, {RT, RA, SIMM}, Check::NONE},
    {8, Extended::NONE, 0, op_subfic, NO, {RT, RA, SIMM}, Check::NONE},
    {7, Extended::NONE, 0, mulli, NO, {RT, RA, SIMM}, Check::NONE},

    // Arithmetic of registers (OE = 0; the "o" forms are not decoded)
    {31, Extended::X, 266, add, op_add_, {RT, RA, RB}, Check::NONE},
    {31, Extended::X, 10, op_addc, op_addc_, {RT, RA, RB}, Check::NONE},
    {31, Extended::X, 138, op_adde, op_adde_, {RT, RA, RB}, Check::NONE},
    {31, Extended::X, 234, op_addme, op_addme_, {RT, RA}, Check::NONE},
    {31, Extended::X, 202, op_addze, op_addze_, {RT, RA}, Check::NONE},
    {31, Extended::X, 40, subf, op_subf_, {RT, RA, RB}, Check::NONE},
    {31, Extended::X, 8, op_subfc, op_subfc_, {RT, RA, RB}, Check::NONE},
    {31, Extended::X, 136, op_subfe, op_subfe_, {RT, RA, RB}, Check::NONE},
    {31, Extended::X, 232, op_subfme, op_subfme_, {RT, RA}, Check::NONE},
    {31, Extended::X, 200, op_subfze, op_subfze_, {RT, RA}, Check::NONE},
    {31, Extended::X, 104, neg, op_neg_, {RT, RA}, Check::NONE},
    {31, Extended::X, 235, mullw, op_mullw_, {RT, RA, RB}, Check::NONE},
    {31, Extended::X, 75, op_mulhw, op_mulhw_, {RT, RA, RB}, Check::NONE},
    {31, Extended::X, 11, op_mulhwu, op_mulhwu_, {RT, RA, RB}, Check::NONE},
    {31, Extended::X, 491, divw, op_divw_, {RT, RA, RB}, Check::NONE},
    {31, Extended::X, 459, op_divwu, op_divwu_, {RT, RA, RB}, Check::NONE},

    // Compares (the L field must be 0: 32-bit compares)
    {11, Extended::NONE, 0, cmpi, NO, {BF, RA, SIMM}, Check::NONE},
    {10, Extended::NONE, 0, cmpli, NO, {BF, RA, UIMM}, Check::NONE},
    {31, Extended::X, 0, op_cmp, NO, {BF, RA, RB}, Check::NONE},
    {31, Extended::X, 32, op_cmpl, NO, {BF, RA, RB}, Check::NONE},

    // Logic with an immediate: rA, rS, UIMM
    {24, Extended::NONE, 0, ori, NO, {RA, RT, UIMM}, Check::NONE},
    {25, Extended::NONE, 0, op_oris, NO, {RA, RT, UIMM}, Check::NONE},
    {26, Extended::NONE, 0, op_xori, NO, {RA, RT, UIMM}, Check::NONE},
    {27, Extended::NONE, 0, op_xoris, NO, {RA, RT, UIMM}, Check::NONE},
    {28, Extended::NONE, 0, op_andi_, NO, {RA, RT, UIMM}, Check::NONE},
    {29, Extended::NONE, 0, op_andis_, NO, {RA, RT, UIMM}, Check::NONE},

    // Logic, extensions and shifts of registers: rA, rS, ...
    {31, Extended::X, 28, op_and, op_and_, {RA, RT, RB}, Check::NONE},
    {31, Extended::X, 60, andc, op_andc_, {RA, RT, RB}, Check::NONE},
    {31, Extended::X, 444, orx, op_or_, {RA, RT, RB}, Check::NONE},
    {31, Extended::X, 412, op_orc, op_orc_, {RA, RT, RB}, Check::NONE},
    {31, Extended::X, 316, op_xor, op_xor_, {RA, RT, RB}, Check::NONE},
    {31, Extended::X, 124, op_nor, op_nor_, {RA, RT, RB}, Check::NONE},
    {31, Extended::X, 476, op_nand, op_nand_, {RA, RT, RB}, Check::NONE},
    {31, Extended::X, 284, op_eqv, op_eqv_, {RA, RT, RB}, Check::NONE},
    {31, Extended::X, 954, op_extsb, op_extsb_, {RA, RT}, Check::NONE},
    {31, Extended::X, 922, op_extsh, op_extsh_, {RA, RT}, Check::NONE},
    {31, Extended::X, 26, cntlzw, op_cntlzw_, {RA, RT}, Check::NONE},
    {31, Extended::X, 24, op_slw, op_slw_, {RA, RT, RB}, Check::NONE},
    {31, Extended::X, 536, op_srw, op_srw_, {RA, RT, RB}, Check::NONE},
    {31, Extended::X, 792, op_sraw, op_sraw_, {RA, RT, RB}, Check::NONE},
    {31, Extended::X, 824, op_srawi, op_srawi_, {RA, RT, SH}, Check::NONE},

    // Rotates: rA, rS, SH or rB, MB, ME
    {20, Extended::NONE, 0, op_rlwimi, op_rlwimi_, {RA, RT, SH, MB, ME}, Check::NONE},
    {21, Extended::NONE, 0, rlwinm, rlwinm_, {RA, RT, SH, MB, ME}, Check::NONE},
    {23, Extended::NONE, 0, op_rlwnm, op_rlwnm_, {RA, RT, RB, MB, ME}, Check::NONE},

    // Branches (AA must be 0: absolute branches are not decoded)
    {18, Extended::NONE, 0, b, bl, {LI}, Check::NONE},
    {16, Extended::NONE, 0, bc, op_bcl, {BO, BI, BD}, Check::NONE},
    {19, Extended::X, 16, bclr, op_bclrl, {BO, BI, BH}, Check::NONE},
    {19, Extended::X, 528, op_bcctr, op_bcctrl, {BO, BI, BH}, Check::NO_CTR_COUNT},

    // The condition register
    {19, Extended::X, 0, op_mcrf, NO, {BF, BFA}, Check::NONE},
    {19, Extended::X, 257, op_crand, NO, {BT, BA, BB}, Check::NONE},
    {19, Extended::X, 129, op_crandc, NO, {BT, BA, BB}, Check::NONE},
    {19, Extended::X, 289, op_creqv, NO, {BT, BA, BB}, Check::NONE},
    {19, Extended::X, 225, op_crnand, NO, {BT, BA, BB}, Check::NONE},
    {19, Extended::X, 33, op_crnor, NO, {BT, BA, BB}, Check::NONE},
    {19, Extended::X, 449, op_cror, NO, {BT, BA, BB}, Check::NONE},
    {19, Extended::X, 417, op_crorc, NO, {BT, BA, BB}, Check::NONE},
    {19, Extended::X, 193, op_crxor, NO, {BT, BA, BB}, Check::NONE},
    {31, Extended::X, 19, mfcr, NO, {RT}, Check::NONE},
    {31, Extended::X, 144, op_mtcrf, NO, {CRM, RT}, Check::NONE},

    // Special registers, traps, synchronisation
    {31, Extended::X, 339, mfspr, NO, {RT, SPR}, Check::NONE},
    {31, Extended::X, 467, mtspr, NO, {SPR, RT}, Check::NONE},
    {31, Extended::X, 4, op_tw, NO, {BO, RA, RB}, Check::NONE},
    {3, Extended::NONE, 0, op_twi, NO, {BO, RA, SIMM}, Check::NONE},
    {31, Extended::X, 598, op_sync, NO, {}, Check::NONE},
    {19, Extended::X, 150, op_isync, NO, {}, Check::NONE},

    // Floating point, A form: double (63) and single (59)
    {63, Extended::A, 21, op_fadd, op_fadd_, {FRT, FRA, FRB}, Check::NONE},
    {63, Extended::A, 20, op_fsub, op_fsub_, {FRT, FRA, FRB}, Check::NONE},
    {63, Extended::A, 25, op_fmul, op_fmul_, {FRT, FRA, FRC}, Check::NONE},
    {63, Extended::A, 18, op_fdiv, op_fdiv_, {FRT, FRA, FRB}, Check::NONE},
    {63, Extended::A, 29, op_fmadd, op_fmadd_, {FRT, FRA, FRC, FRB}, Check::NONE},
    {63, Extended::A, 28, op_fmsub, op_fmsub_, {FRT, FRA, FRC, FRB}, Check::NONE},
    {63, Extended::A, 31, op_fnmadd, op_fnmadd_, {FRT, FRA, FRC, FRB}, Check::NONE},
    {63, Extended::A, 30, op_fnmsub, op_fnmsub_, {FRT, FRA, FRC, FRB}, Check::NONE},
    {59, Extended::A, 21, fadds, op_fadds_, {FRT, FRA, FRB}, Check::NONE},
    {59, Extended::A, 20, fsubs, op_fsubs_, {FRT, FRA, FRB}, Check::NONE},
    {59, Extended::A, 25, fmuls, op_fmuls_, {FRT, FRA, FRC}, Check::NONE},
    {59, Extended::A, 18, op_fdivs, op_fdivs_, {FRT, FRA, FRB}, Check::NONE},
    {59, Extended::A, 29, op_fmadds, op_fmadds_, {FRT, FRA, FRC, FRB}, Check::NONE},
    {59, Extended::A, 28, op_fmsubs, op_fmsubs_, {FRT, FRA, FRC, FRB}, Check::NONE},
    {59, Extended::A, 31, op_fnmadds, op_fnmadds_, {FRT, FRA, FRC, FRB}, Check::NONE},
    {59, Extended::A, 30, op_fnmsubs, op_fnmsubs_, {FRT, FRA, FRC, FRB}, Check::NONE},

    // Floating point, X form
    {63, Extended::X, 72, op_fmr, op_fmr_, {FRT, FRB}, Check::NONE},
    {63, Extended::X, 40, op_fneg, op_fneg_, {FRT, FRB}, Check::NONE},
    {63, Extended::X, 264, op_fabs, op_fabs_, {FRT, FRB}, Check::NONE},
    {63, Extended::X, 136, op_fnabs, op_fnabs_, {FRT, FRB}, Check::NONE},
    {63, Extended::X, 12, op_frsp, op_frsp_, {FRT, FRB}, Check::NONE},
    {63, Extended::X, 14, op_fctiw, op_fctiw_, {FRT, FRB}, Check::NONE},
    {63, Extended::X, 15, op_fctiwz, op_fctiwz_, {FRT, FRB}, Check::NONE},
    {63, Extended::X, 0, fcmpu, NO, {BF, FRA, FRB}, Check::NONE},
    {63, Extended::X, 32, op_fcmpo, NO, {BF, FRA, FRB}, Check::NONE},
};

constexpr std::uint32_t PRIMARY_MASK = 0xfc000000;
constexpr std::uint32_t BIT31 = 1;

std::uint32_t extendedMask(Extended a_kind)
{
    switch (a_kind) {
    case Extended::X:
        return 0x000007fe;
    case Extended::A:
        return 0x0000003e;
    case Extended::NONE:
        break;
    }
    return 0;
}

// A form prepared for matching: the bits that identify it, their values,
// and the bits its fields and bit 31 may use.
struct Matcher {
    const Form* m_form;
    std::uint32_t m_mask;
    std::uint32_t m_value;
    std::uint32_t m_allowed;
};

// The forms grouped by primary opcode, built once.
const std::vector<Matcher>& matchersOf(unsigned a_primary)
{
    static const std::vector<std::vector<Matcher>> by_primary = [] {
        std::vector<std::vector<Matcher>> groups(64);
        for (const Form& form : forms) {
            Matcher matcher{&form, PRIMARY_MASK | extendedMask(form.m_extended_kind),
                            (form.m_primary << 26) | (form.m_extended << 1), 0};
            matcher.m_allowed = matcher.m_mask;
            for (Field field : form.m_fields)
                matcher.m_allowed |= fieldMask(field);
            if (form.m_bit31_set != TOP_UNDEFINED)
                matcher.m_allowed |= BIT31;
            groups[form.m_primary].push_back(matcher);
        }
        return groups;
    }();
    return by_primary[a_primary];
}

unsigned bits(std::uint32_t a_word, int a_first, int a_last)
{
    return (a_word >> (31 - a_last)) & ((1u << (a_last - a_first + 1)) - 1);
}

std::int64_t signExtended(std::uint32_t a_value, int a_width)
{
    const std::int64_t sign = std::int64_t(1) << (a_width - 1);
    return (static_cast<std::int64_t>(a_value) ^ sign) - sign;
}

bool passes(Check a_check, std::uint32_t a_word)
{
    const unsigned rt = bits(a_word, 6, 10);
    const unsigned ra = bits(a_word, 11, 15);
    switch (a_check) {
    case Check::UPDATE:
        return ra != 0;
    case Check::LOAD_UPDATE:
        return ra != 0 && ra != rt;
    case Check::LOAD_MULTIPLE:
        return ra < rt;
    case Check::NO_CTR_COUNT:
        return (rt & 0x04) != 0;
    case Check::NONE:
        break;
    }
    return true;
}

DecodedOperand operandOf(Field a_field, std::uint32_t a_word, std::uint32_t a_address)
{
    DecodedOperand operand;
    switch (a_field) {
    case RT:
        operand.m_kind = OperandKind::GENERAL_REGISTER;
        operand.m_value = bits(a_word, 6, 10);
        break;
    case RA:
        operand.m_kind = OperandKind::GENERAL_REGISTER;
        operand.m_value = bits(a_word, 11, 15);
        break;
    case RA_OR_ZERO:
        operand.m_kind = OperandKind::GENERAL_REGISTER_OR_ZERO;
        operand.m_value = bits(a_word, 11, 15);
        break;
    case RB:
        operand.m_kind = OperandKind::GENERAL_REGISTER;
        operand.m_value = bits(a_word, 16, 20);
        break;
    case FRT:
        operand.m_kind = OperandKind::FLOAT_REGISTER;
        operand.m_value = bits(a_word, 6, 10);
        break;
    case FRA:
        operand.m_kind = OperandKind::FLOAT_REGISTER;
        operand.m_value = bits(a_word, 11, 15);
        break;
    case FRB:
        operand.m_kind = OperandKind::FLOAT_REGISTER;
        operand.m_value = bits(a_word, 16, 20);
        break;
    case FRC:
        operand.m_kind = OperandKind::FLOAT_REGISTER;
        operand.m_value = bits(a_word, 21, 25);
        break;
    case BF:
        operand.m_kind = OperandKind::CONDITION_FIELD;
        operand.m_value = bits(a_word, 6, 8);
        break;
    case BFA:
        operand.m_kind = OperandKind::CONDITION_FIELD;
        operand.m_value = bits(a_word, 11, 13);
        break;
    case BT:
        operand.m_kind = OperandKind::CONDITION_BIT;
        operand.m_value = bits(a_word, 6, 10);
        break;
    case BA:
    case BI:
        operand.m_kind = OperandKind::CONDITION_BIT;
        operand.m_value = bits(a_word, 11, 15);
        break;
    case BB:
        operand.m_kind = OperandKind::CONDITION_BIT;
        operand.m_value = bits(a_word, 16, 20);
        break;
    case BO:
        operand.m_value = bits(a_word, 6, 10);
        break;
    case BH:
        operand.m_value = bits(a_word, 19, 20);
        break;
    case SIMM:
        operand.m_value = signExtended(bits(a_word, 16, 31), 16);
        break;
    case UIMM:
        operand.m_value = bits(a_word, 16, 31);
        break;
    case D_RA_OR_ZERO:
    case D_RA:
        operand.m_kind = OperandKind::DISPLACEMENT;
        operand.m_value = signExtended(bits(a_word, 16, 31), 16);
        operand.m_base = static_cast<int>(bits(a_word, 11, 15));
        operand.m_base_updated = a_field == D_RA;
        break;
    case SH:
        operand.m_value = bits(a_word, 16, 20);
        break;
    case MB:
        operand.m_value = bits(a_word, 21, 25);
        break;
    case ME:
        operand.m_value = bits(a_word, 26, 30);
        break;
    case SPR:
        operand.m_value = bits(a_word, 16, 20) << 5 | bits(a_word, 11, 15);
        break;
    case CRM:
        operand.m_value = bits(a_word, 12, 19);
        break;
    case BD:
        operand.m_kind = OperandKind::TARGET;
        operand.m_value = static_cast<std::uint32_t>(a_address + signExtended(a_word & 0xfffc, 16));
        break;
    case LI:
        operand.m_kind = OperandKind::TARGET;
        operand.m_value = static_cast<std::uint32_t>(a_address + signExtended(a_word & 0x03fffffc, 26));
        break;
    case NONE:
        break;
    }
    return operand;
}

} // namespace

const DecodedOperand* DecodedInstruction::target() const
{
    for (int i = 0; i < m_operand_count; ++i)
        if (m_operands[i].m_kind == OperandKind::TARGET)
            return &m_operands[i];
    return nullptr;
}

int DecodedInstruction::branchOptions() const
{
    return static_cast<int>(bits(m_word, 6, 10));
}

DecodedInstruction decodeInstruction(std::uint32_t a_word, std::uint32_t a_address)
{
    DecodedInstruction instruction;
    instruction.m_address = a_address;
    instruction.m_word = a_word;
    for (const Matcher& matcher : matchersOf(a_word >> 26)) {
        if ((a_word & matcher.m_mask) != matcher.m_value)
            continue;
        const Form& form = *matcher.m_form;
        if ((a_word & ~matcher.m_allowed) != 0 || !passes(form.m_check, a_word))
            return instruction;
        // Bit 31 picks the record or link form where it is no field's bit.
        const bool bit31_form = form.m_bit31_set != TOP_UNDEFINED && (a_word & BIT31);
        instruction.m_opcode = bit31_form ? form.m_bit31_set : form.m_bit31_clear;
        for (Field field : form.m_fields) {
            if (field == NONE)
                break;
            DecodedOperand operand = operandOf(field, a_word, a_address);
            // A zero branch hint is the default and is not written.
            if (field == BH && operand.m_value == 0)
                continue;
            instruction.m_operands[instruction.m_operand_count++] = operand;
        }
        return instruction;
    }
    return instruction;
}

std::uint32_t bigEndianWord(const unsigned char* a_bytes)
{
    return std::uint32_t(a_bytes[0]) << 24 | std::uint32_t(a_bytes[1]) << 16 | std::uint32_t(a_bytes[2]) << 8 |
           std::uint32_t(a_bytes[3]);
}
