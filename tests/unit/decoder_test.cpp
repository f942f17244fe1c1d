// The decoder and the listing writer: words encoded by hand from the
// instruction formats (primary opcode in bits 0-5, the fields after it, the
// extended opcode in bits 21-30 or 26-30), read back as listing text. Each
// form once, with its edge fields; every mnemonic on assembled code is the
// objdump agreement test's part (tests/compiled).
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "listing_writer.h"
#include "ppc_decoder.h"

namespace {

constexpr std::uint32_t NODE_START = 0x10000000;
constexpr std::uint32_t AT = 0x10000100; // where the words under test lie

struct Case {
    std::uint32_t word;
    const char* text; // mnemonic and operands, or ".long 0x..."
};

// The text after "ADDR: <node+OFFSET>: " of a_word's line.
std::string text(std::uint32_t a_word)
{
    ListingWriter writer("node", NODE_START, nullptr);
    ListingLine line;
    line.m_instruction = decodeInstruction(a_word, AT);
    line.m_offset = AT - NODE_START;
    std::ostringstream out;
    writer.write(out, line);
    const std::string prefix = "10000100: <node+256>: ";
    std::string written = out.str();
    EXPECT_EQ(written.compare(0, prefix.size(), prefix), 0) << written;
    EXPECT_EQ(written.back(), '\n');
    return written.substr(prefix.size(), written.size() - prefix.size() - 1);
}

void expectTexts(const std::vector<Case>& a_cases)
{
    for (const Case& c : a_cases) {
        std::ostringstream word;
        word << std::hex << c.word;
        EXPECT_EQ(text(c.word), c.text) << "word 0x" << word.str();
    }
}

} // namespace

TEST(DecoderTest, LoadsAndStores)
{
    expectTexts({
        {0x81230008, "lwz r9,8(r3)"},       // 32 | RT 9 | RA 3 | D 8
        {0x9421ffe0, "stwu r1,-32(r1)"},    // 37 | RS 1 | RA 1 | D -32
        {0x893f8000, "lbz r9,-32768(r31)"}, // 34, the most negative displacement, register 31
        {0xa0007fff, "lhz r0,32767(r0)"},   // 40, base field 0 is (rA|0), written r0
        {0xbfc10018, "stmw r30,24(r1)"},    // 47
        {0xbbc10018, "lmw r30,24(r1)"},     // 46
        {0x852a0004, "lwzu r9,4(r10)"},     // 33
        {0xc8230008, "lfd f1,8(r3)"},       // 50
        {0xdfe1fff8, "stfdu f31,-8(r1)"},   // 55
        {0x7d2350ae, "lbzx r9,r3,r10"},     // 31/87
        {0x7d20502e, "lwzx r9,r0,r10"},     // 31/23 with the (rA|0) field 0
        {0x7d21516e, "stwux r9,r1,r10"},    // 31/183
        {0x7c0957ae, "stfiwx f0,r9,r10"},   // 31/983
    });
}

TEST(DecoderTest, InvalidLoadAndStoreFormsAreNoInstruction)
{
    expectTexts({
        {0x85290004, ".long 0x85290004"}, // lwzu r9,4(r9): the update would overwrite the load
        {0x9d200001, ".long 0x9d200001"}, // stbu r9,1(r0): an update of no register
        {0xbbde0000, ".long 0xbbde0000"}, // lmw r30,0(r30): the base among the loaded registers
        {0x7d29506e, ".long 0x7d29506e"}, // lwzux r9,r9,r10
        {0x7d2350af, ".long 0x7d2350af"}, // lbzx with bit 31 set, reserved
    });
}

TEST(DecoderTest, ArithmeticAndCompares)
{
    expectTexts({
        {0x38600001, "addi r3,r0,1"},        // 14 with the (rA|0) field 0
        {0x3d29ffff, "addis r9,r9,-1"},      // 15
        {0x34648000, "addic. r3,r4,-32768"}, // 13, the most negative immediate
        {0x30640001, "addic r3,r4,1"},       // 12: bit 31 belongs to the immediate
        {0x20640000, "subfic r3,r4,0"},      // 8
        {0x1c640007, "mulli r3,r4,7"},       // 7
        {0x7c642a14, "add r3,r4,r5"},        // 31/266
        {0x7c642a15, "add. r3,r4,r5"},       // Rc = 1
        {0x7c6400d0, "neg r3,r4"},           // 31/104
        {0x7d295016, "mulhwu r9,r9,r10"},    // 31/11
        {0x7c642b97, "divwu. r3,r4,r5"},     // 31/459, Rc = 1
        {0x2f890000, "cmpi 7,r9,0"},         // 11 | BF 7 | RA 9
        {0x2803ffff, "cmpli 0,r3,65535"},    // 10, the largest unsigned immediate
        {0x7f895000, "cmp 7,r9,r10"},        // 31/0
        {0x7f095040, "cmpl 6,r9,r10"},       // 31/32
        {0xff811000, "fcmpu 7,f1,f2"},       // 63/0
        {0xfc811040, "fcmpo 1,f1,f2"},       // 63/32
    });
}

TEST(DecoderTest, ReservedBitsAndOverflowFormsAreNoInstruction)
{
    expectTexts({
        {0x7c642e14, ".long 0x7c642e14"}, // addo: OE = 1 is not decoded
        {0x7c6428d0, ".long 0x7c6428d0"}, // neg with an rB field
        {0x2fa90000, ".long 0x2fa90000"}, // cmpi with L = 1: a 64-bit compare
        {0x7f895001, ".long 0x7f895001"}, // cmp with bit 31 set
        {0xfc22186a, ".long 0xfc22186a"}, // fadd with an FRC field
        {0xfc010818, ".long 0xfc010818"}, // frsp with an FRA field
    });
}

TEST(DecoderTest, LogicShiftsAndRotates)
{
    expectTexts({
        {0x60000000, "ori r0,r0,0"},           // 24: rA, rS, UIMM
        {0x7129ffff, "andi. r9,r9,65535"},     // 28
        {0x6c838000, "xoris r3,r4,32768"},     // 27: rA 3 before rS 4
        {0x7c832378, "or r3,r4,r4"},           // 31/444
        {0x7c832839, "and. r3,r4,r5"},         // 31/28, Rc = 1
        {0x7c832a78, "xor r3,r4,r5"},          // 31/316
        {0x7d290734, "extsh r9,r9"},           // 31/922
        {0x7c830775, "extsb. r3,r4"},          // 31/954, Rc = 1
        {0x7d29fe70, "srawi r9,r9,31"},        // 31/824, shift 31
        {0x7c832830, "slw r3,r4,r5"},          // 31/24
        {0x7d800034, "cntlzw r0,r12"},         // 31/26
        {0x5529fffe, "rlwinm r9,r9,31,31,31"}, // 21, SH MB ME all 31
        {0x55290001, "rlwinm. r9,r9,0,0,0"},   // Rc = 1
        {0x51491f38, "rlwimi r9,r10,3,28,28"}, // 20
        {0x5d49583e, "rlwnm r9,r10,r11,0,31"}, // 23
    });
}

TEST(DecoderTest, BranchesAndTheirTargets)
{
    expectTexts({
        {0x48000010, "b <node+272>"},         // 18, 16 bytes on
        {0x4bfffffc, "b <node+252>"},         // 4 bytes back
        {0x48000011, "bl <node+272>"},        // LK = 1, the same target
        {0x419e0010, "bc 12,30,<node+272>"},  // 16 | BO 12 | BI 30
        {0x40818000, "bc 4,1,<node+-32512>"}, // the most negative BD: 32768 back
        {0x41ff0008, "bc 15,31,<node+264>"},  // BI 31
        {0x429f0005, "bcl 20,31,<node+260>"}, // reads the address of the next word
        {0x4e800020, "bclr 20,0"},            // 19/16
        {0x4e800021, "bclrl 20,0"},
        {0x4d820020, "bclr 12,2"},   // a conditional return
        {0x4e800820, "bclr 20,0,1"}, // a branch hint that is not 0
        {0x4e800420, "bcctr 20,0"},  // 19/528
        {0x4d9e0420, "bcctr 12,30"},
    });
}

TEST(DecoderTest, BranchFormsOutsideTheDecodedSet)
{
    expectTexts({
        {0x48000012, ".long 0x48000012"}, // ba: an absolute branch
        {0x4082000a, ".long 0x4082000a"}, // bca
        {0x4e808020, ".long 0x4e808020"}, // bclr with a reserved bit set
        {0x4e000420, ".long 0x4e000420"}, // bcctr counting down the count register
    });
}

TEST(DecoderTest, ConditionRegisterSpecialRegistersAndSynchronisation)
{
    expectTexts({
        {0x4cc63182, "crxor 6,6,6"},      // 19/193
        {0x4c221a02, "crand 1,2,3"},      // 19/257
        {0x4f800000, "mcrf 7,0"},         // 19/0
        {0x7d800026, "mfcr r12"},         // 31/19
        {0x7c080120, "mtcrf 128,r0"},     // 31/144
        {0x7c0802a6, "mfspr r0,8"},       // 31/339: LR
        {0x7d2903a6, "mtspr 9,r9"},       // 31/467: CTR
        {0x7c6102a6, "mfspr r3,1"},       // XER
        {0x7c0c42a6, "mfspr r0,268"},     // both halves of the SPR field
        {0x7fe00008, "tw 31,r0,r0"},      // 31/4
        {0x0fe00000, "twi 31,r0,0"},      // 3
        {0x7c0004ac, "sync"},             // 31/598
        {0x4c00012c, "isync"},            // 19/150
        {0x7c780026, ".long 0x7c780026"}, // mfocrf: bit 11 set
        {0x7c180120, ".long 0x7c180120"}, // mtocrf
        {0x7c2004ac, ".long 0x7c2004ac"}, // sync with L = 1
    });
}

TEST(DecoderTest, FloatingPoint)
{
    expectTexts({
        {0xfc22182a, "fadd f1,f2,f3"},           // 63/21
        {0xfc221825, "fdiv. f1,f2,f3"},          // 63/18, Rc = 1
        {0xec2200f2, "fmuls f1,f2,f3"},          // 59/25: FRT, FRA, FRC
        {0xec2220fa, "fmadds f1,f2,f3,f4"},      // 59/29: FRT, FRA, FRC, FRB
        {0xfffffffd, "fnmsub. f31,f31,f31,f31"}, // 63/30, every field 31
        {0xffffffff, "fnmadd. f31,f31,f31,f31"}, // 63/31
        {0xfc201090, "fmr f1,f2"},               // 63/72
        {0xfc201051, "fneg. f1,f2"},             // 63/40
        {0xfc00081e, "fctiwz f0,f1"},            // 63/15
    });
}

TEST(DecoderTest, WordsOfNoInstruction)
{
    expectTexts({
        {0x00000000, ".long 0x00000000"},
        {0x44000002, ".long 0x44000002"}, // sc
        {0x10000000, ".long 0x10000000"}, // a vector instruction (primary opcode 4)
        {0x07ffffff, ".long 0x07ffffff"}, // primary opcode 1, undefined
        {0xfc000002, ".long 0xfc000002"}, // 63 with the undefined extended opcode 1
    });
}

TEST(DecoderTest, OperandKindsForTheTranslators)
{
    DecodedInstruction load = decodeInstruction(0x81230008, AT); // lwz r9,8(r3)
    ASSERT_EQ(load.m_opcode, lwz);
    ASSERT_EQ(load.m_operand_count, 2);
    EXPECT_EQ(load.m_operands[0].m_kind, OperandKind::GENERAL_REGISTER);
    EXPECT_EQ(load.m_operands[1].m_kind, OperandKind::DISPLACEMENT);
    EXPECT_EQ(load.m_operands[1].m_base, 3);
    EXPECT_FALSE(load.m_operands[1].m_base_updated);
    EXPECT_TRUE(decodeInstruction(0x852a0004, AT).m_operands[1].m_base_updated); // lwzu

    DecodedInstruction immediate = decodeInstruction(0x38600001, AT); // addi r3,r0,1
    EXPECT_EQ(immediate.m_operands[1].m_kind, OperandKind::GENERAL_REGISTER_OR_ZERO);

    DecodedInstruction branch = decodeInstruction(0x419e0010, AT); // bc 12,30,+16
    EXPECT_EQ(branch.branchOptions(), 12);
    EXPECT_EQ(branch.m_operands[1].m_kind, OperandKind::CONDITION_BIT);
    ASSERT_NE(branch.target(), nullptr);
    EXPECT_EQ(branch.target()->m_value, AT + 16);
    EXPECT_EQ(decodeInstruction(0x4e800020, AT).target(), nullptr);
    // A backward branch from the lowest addresses wraps around 32 bits.
    EXPECT_EQ(decodeInstruction(0x4bfffffc, 0).target()->m_value, 0xfffffffc);

    EXPECT_EQ(bigEndianWord(reinterpret_cast<const unsigned char*>("\x81\x23\x00\x08")), 0x81230008u);
}

TEST(ListingWriterTest, LineFormAndTargetNames)
{
    ListingWriter writer("step", NODE_START, [](std::uint32_t a_address) -> std::string {
        if (a_address == 0x10000400)
            return ListingWriter::symbolicAddress("helper", 0);
        return "";
    });
    auto lineOf = [&](std::uint32_t a_word, std::uint32_t a_address, std::uint32_t a_offset) {
        ListingLine line;
        line.m_instruction = decodeInstruction(a_word, a_address);
        line.m_offset = a_offset;
        std::ostringstream out;
        writer.write(out, line);
        return out.str();
    };
    EXPECT_EQ(lineOf(0x9421ffe0, NODE_START, 0), "10000000: <step>: stwu r1,-32(r1)\n");
    EXPECT_EQ(lineOf(0x480003fd, 0x10000004, 4), "10000004: <step+4>: bl <helper>\n");
    // A target in no function is written from the node's start.
    EXPECT_EQ(lineOf(0x4bfffff1, 0x10000004, 4), "10000004: <step+4>: bl <step+-12>\n");

    // A line of a copy keeps its address, has its own offset, and goes to
    // the line the layout chose.
    ListingLine copied;
    copied.m_instruction = decodeInstruction(0x4bfffff8, 0x10000010); // b 8 back
    copied.m_offset = 64;
    copied.m_target_in_listing = true;
    copied.m_target_offset = 72;
    copied.m_starts_copy = true;
    copied.m_copy_of = 8;
    std::ostringstream out;
    writer.write(out, copied);
    EXPECT_EQ(out.str(), "% copy of the shared tail at <step+8>, for the backward branches that return through it\n"
                         "10000010: <step+64>: b <step+72>\n");
}

TEST(ListingWriterTest, NamesTheScannerReadsAsNames)
{
    EXPECT_TRUE(ListingWriter::isListingName("step"));
    EXPECT_TRUE(ListingWriter::isListingName("_step.part.0"));
    EXPECT_TRUE(ListingWriter::isListingName("UNDEFINED"));
    EXPECT_FALSE(ListingWriter::isListingName(""));
    EXPECT_FALSE(ListingWriter::isListingName("9lives"));
    EXPECT_FALSE(ListingWriter::isListingName("puts@plt"));
    EXPECT_FALSE(ListingWriter::isListingName("sync")); // an opcode
    EXPECT_FALSE(ListingWriter::isListingName("or"));
}
