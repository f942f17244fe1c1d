// The exact translation of small listings: where paths meet, around loops,
// through calls and jump tables. The values expected are worked out from
// the instructions' meanings by hand; the terms are compared as the term
// table builds them (equal terms are one node).
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "exact_translator.h"
#include "listing_program.h"
#include "misc/stop.h"

using smt::Sort;
using smt::Term;

namespace {

// Listing lines written as the grammar records them.
class Listing {
public:
    Listing& line(std::uint32_t a_address, long a_offset, TOP a_opcode, std::vector<ListingOperand> a_operands)
    {
        ListingInstruction instruction;
        instruction.m_line = static_cast<int>(m_lines.size()) + 1;
        instruction.m_address = a_address;
        instruction.m_symbol = "node";
        instruction.m_offset = a_offset;
        instruction.m_opcode = a_opcode;
        instruction.m_operands = std::move(a_operands);
        m_lines.push_back(std::move(instruction));
        return *this;
    }
    const std::vector<ListingInstruction>& lines() const { return m_lines; }

private:
    std::vector<ListingInstruction> m_lines;
};

ListingOperand reg(const char* a_name)
{
    ListingOperand operand;
    operand.m_kind = ListingOperand::NAME;
    operand.m_name = a_name;
    return operand;
}

ListingOperand num(long a_value)
{
    ListingOperand operand;
    operand.m_value = a_value;
    return operand;
}

ListingOperand disp(long a_value, const char* a_base)
{
    ListingOperand operand;
    operand.m_kind = ListingOperand::DISPLACEMENT;
    operand.m_value = a_value;
    operand.m_name = a_base;
    return operand;
}

ListingOperand target(long a_offset, const char* a_symbol = "node")
{
    ListingOperand operand;
    operand.m_kind = ListingOperand::ADDRESS;
    operand.m_name = a_symbol;
    operand.m_value = a_offset;
    return operand;
}

TOP op(const char* a_mnemonic)
{
    return get_topcode(a_mnemonic);
}

class FakeConstants : public ConstantMemory {
public:
    void word(std::uint32_t a_address, std::uint32_t a_value)
    {
        for (int i = 0; i < 4; ++i)
            m_bytes[a_address + i] = static_cast<std::uint8_t>(a_value >> (24 - 8 * i));
    }
    bool readByte(std::uint32_t a_address, std::uint8_t& a_byte) const override
    {
        auto found = m_bytes.find(a_address);
        if (found == m_bytes.end())
            return false;
        a_byte = found->second;
        return true;
    }

private:
    std::map<std::uint32_t, std::uint8_t> m_bytes;
};

std::string stopMessage(const std::function<void()>& a_run)
{
    try {
        a_run();
    } catch (const OrderlyStop& stop) {
        return stop.message();
    }
    return "";
}

// r5 = 0; do { r5 += 7; } while (--ctr != 0), with ctr = r4.
Listing countedLoop()
{
    Listing listing;
    listing.line(0x100, 0, op("mtspr"), {num(9), reg("r4")})
        .line(0x104, 4, op("addi"), {reg("r5"), reg("r0"), num(0)})
        .line(0x108, 8, op("addi"), {reg("r5"), reg("r5"), num(7)})
        .line(0x10c, 12, op("bc"), {num(16), num(0), target(8)})
        .line(0x110, 16, op("bclr"), {num(20), num(0)});
    return listing;
}

TEST(ExactTranslation, PathsThatMeetAreChosenByTheirBranch)
{
    // if (r4 == 0) r5 = 1; else r5 = 2; store r5 at 0(r3)
    Listing listing;
    listing.line(0x100, 0, op("cmpi"), {num(0), reg("r4"), num(0)})
        .line(0x104, 4, op("bc"), {num(12), num(2), target(16)})
        .line(0x108, 8, op("addi"), {reg("r5"), reg("r0"), num(2)})
        .line(0x10c, 12, op("b"), {target(20)})
        .line(0x110, 16, op("addi"), {reg("r5"), reg("r0"), num(1)})
        .line(0x114, 20, op("stw"), {reg("r5"), disp(0, "r3")})
        .line(0x118, 24, op("bclr"), {num(20), num(0)});
    ExactTranslator translator(nullptr, "listing.s");
    ExactResult result = translator.translate(listing.lines());
    smt::TermTable& t = translator.terms();
    ASSERT_TRUE(result.m_leaves);
    ASSERT_EQ(result.m_propositions.size(), 1u);
    Term p1 = result.m_propositions[0];
    EXPECT_EQ(result.m_conditions[0], t.eq(t.symbol("r4", Sort::bitVec(32)), t.bitVec(32, 0)));
    EXPECT_EQ(result.m_final.m_gpr[5], t.ite(p1, t.bitVec(32, 1), t.bitVec(32, 2)));
    EXPECT_TRUE(t.isTrue(result.m_unwound));
    // The memory after is one chain of stores over the memory before.
    Term memory = result.m_final.m_memory;
    int stores = 0;
    for (; t.op(memory) == smt::Op::Store; memory = t.child(memory, 0))
        ++stores;
    EXPECT_EQ(stores, 4);
    EXPECT_EQ(memory, t.symbol("MEM", Sort::memory()));
    EXPECT_EQ(t.load(result.m_final.m_memory, t.symbol("r3", Sort::bitVec(32)), 4), result.m_final.m_gpr[5]);
}

TEST(ExactTranslation, LoopsGoRoundUpToTheBound)
{
    Listing listing = countedLoop();
    ExactTranslator translator(nullptr, "listing.s", 3);
    ExactResult result = translator.translate(listing.lines());
    smt::TermTable& t = translator.terms();
    // Each round's branch is a proposition: three rounds, the third one's
    // taken branch goes past the bound.
    ASSERT_EQ(result.m_propositions.size(), 3u);
    Term r4 = t.symbol("r4", Sort::bitVec(32));
    EXPECT_EQ(result.m_conditions[0], t.notOf(t.eq(t.bvAddConst(r4, 0xffffffff), t.bitVec(32, 0))));
    EXPECT_EQ(result.m_conditions[2], t.notOf(t.eq(t.bvAddConst(r4, 0xfffffffd), t.bitVec(32, 0))));
    // Not unwound exactly when the last round would go round again.
    Term p1 = result.m_propositions[0];
    Term p2 = result.m_propositions[1];
    Term p3 = result.m_propositions[2];
    EXPECT_EQ(result.m_unwound, t.notOf(t.andOf(t.andOf(p1, p2), p3)));
    // Left after one, two or three rounds.
    EXPECT_EQ(result.m_final.m_gpr[5],
              t.ite(p1, t.ite(p2, t.bitVec(32, 21), t.bitVec(32, 14)), t.bitVec(32, 7)));
}

TEST(ExactTranslation, InstancesPastTheLimitEndTheRunAsACapacity)
{
    // Three rounds of a two-instruction loop, and one instance each of the
    // three instructions around it: nine instances.
    Listing listing = countedLoop();
    struct Limit {
        explicit Limit(std::size_t a_limit) { ExactTranslator::setInstanceLimit(a_limit); }
        ~Limit() { ExactTranslator::setInstanceLimit(ExactTranslator::MAX_INSTANCES); }
    };
    {
        Limit limit(9);
        ExactTranslator translator(nullptr, "listing.s", 3);
        EXPECT_EQ(translator.translate(listing.lines()).m_propositions.size(), 3u);
    }
    Limit limit(8);
    ExactTranslator translator(nullptr, "listing.s", 3);
    EXPECT_EQ(stopMessage([&] { translator.translate(listing.lines()); }),
              "Capacity exhausted: more than 8 instructions once loops are unrolled (a smaller -unroll bound helps)\n");
}

TEST(ExactTranslation, CallsChangeWhatACalleeMayChange)
{
    Listing listing;
    listing.line(0x100, 0, op("addi"), {reg("r3"), reg("r0"), num(5)})
        .line(0x104, 4, op("addi"), {reg("r14"), reg("r0"), num(6)})
        .line(0x108, 8, op("bl"), {target(0, "callee")})
        .line(0x10c, 12, op("bclr"), {num(20), num(0)});
    ExactTranslator translator(nullptr, "listing.s");
    ExactResult result = translator.translate(listing.lines());
    smt::TermTable& t = translator.terms();
    EXPECT_EQ(t.op(result.m_final.m_gpr[3]), smt::Op::Symbol);
    EXPECT_NE(result.m_final.m_gpr[3], t.bitVec(32, 5));
    EXPECT_EQ(result.m_final.m_gpr[14], t.bitVec(32, 6));
    EXPECT_EQ(result.m_final.m_gpr[1], t.symbol("r1", Sort::bitVec(32)));
    EXPECT_NE(result.m_final.m_memory, t.symbol("MEM", Sort::memory()));
    // Every fresh value is declared by the output.
    for (Term fresh : translator.context().freshValues())
        EXPECT_EQ(t.op(fresh), smt::Op::Symbol);
}

TEST(ExactTranslation, JumpTablesGiveTheTargets)
{
    // The table at 0x2000 holds offsets from its own start: entries for
    // the cases at 0x118 and 0x11c (one of them twice), then a word that
    // leads nowhere.
    FakeConstants constants;
    constants.word(0x2000, 0x118 - 0x2000);
    constants.word(0x2004, 0x11c - 0x2000);
    constants.word(0x2008, 0x118 - 0x2000);
    constants.word(0x200c, 0x12345678);
    Listing listing;
    listing.line(0x100, 0, op("addis"), {reg("r10"), reg("r0"), num(0)})
        .line(0x104, 4, op("addi"), {reg("r10"), reg("r10"), num(0x2000)})
        .line(0x108, 8, op("lwzx"), {reg("r9"), reg("r10"), reg("r4")})
        .line(0x10c, 12, op("add"), {reg("r9"), reg("r9"), reg("r10")})
        .line(0x110, 16, op("mtspr"), {num(9), reg("r9")})
        .line(0x114, 20, op("bcctr"), {num(20), num(0)})
        .line(0x118, 24, op("addi"), {reg("r5"), reg("r0"), num(1)})
        .line(0x11c, 28, op("bclr"), {num(20), num(0)});
    ExactTranslator translator(&constants, "listing.s");
    ExactResult result = translator.translate(listing.lines());
    smt::TermTable& t = translator.terms();
    ASSERT_EQ(result.m_propositions.size(), 2u);
    // The entries read are stated as the memory's bytes before the code.
    int stated = 0;
    for (Term fact : translator.context().constraints())
        stated += t.op(fact) == smt::Op::Eq;
    EXPECT_EQ(stated, 12);
    // A count that is no target's leaves the known paths.
    EXPECT_FALSE(t.isTrue(result.m_unwound));
}

TEST(ExactTranslation, WhatHasNoExactMeaningStopsTheRun)
{
    Listing listing;
    listing.line(0x100, 0, op("tw"), {num(31), reg("r0"), reg("r0")})
        .line(0x104, 4, op("add"), {reg("r3"), reg("r4"), num(5)})
        .line(0x108, 8, op("bclr"), {num(20), num(0)});
    ExactTranslator translator(nullptr, "listing.s");
    EXPECT_EQ(stopMessage([&] { translator.translate(listing.lines()); }),
              "listing.s:1: no exact semantics for tw\n"
              "listing.s:2: operand 3 of add is not a general register (r0 to r31)\n");

    Listing astray;
    astray.line(0x100, 0, op("b"), {target(6)}).line(0x104, 4, op("bclr"), {num(20), num(0)});
    ExactTranslator other(nullptr, "listing.s");
    EXPECT_EQ(stopMessage([&] { other.translate(astray.lines()); }),
              "listing.s:1: branch target <node+6> is not an instruction of the listing\n");

    // A computed branch with nothing to read its targets from.
    Listing computed;
    computed.line(0x100, 0, op("mtspr"), {num(9), reg("r4")})
        .line(0x104, 4, op("bcctr"), {num(20), num(0)});
    ExactTranslator third(nullptr, "listing.s");
    EXPECT_EQ(stopMessage([&] { third.translate(computed.lines()); }),
              "listing.s:2: no exact semantics for bcctr (its targets are not in a table of the executable "
              "that velcor can read)\n");
}

} // namespace
