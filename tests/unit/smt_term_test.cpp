// The exact terms: one node per distinct term, and simplifications that keep
// the meaning (every expected value below is worked out from the bit-vector
// and array semantics of SMT-LIB).
#include <gtest/gtest.h>

#include <sstream>

#include "smt_printer.h"
#include "smt_term.h"

using namespace smt;

namespace {

class Terms : public ::testing::Test {
protected:
    TermTable t;
    Term word(std::uint64_t a_value) { return t.bitVec(32, a_value); }
    Term reg(const char* a_name) { return t.symbol(a_name, Sort::bitVec(32)); }
    Term flag(const char* a_name) { return t.symbol(a_name, Sort::boolean()); }
    Term memory() { return t.symbol("MEM", Sort::memory()); }
    std::string text(Term a_term)
    {
        std::ostringstream out;
        Printer printer(t, out);
        printer.addRoot(a_term);
        printer.writeDefinitions();
        printer.write(a_term);
        return out.str();
    }
};

TEST_F(Terms, EqualTermsAreOneNode)
{
    Term r3 = reg("r3");
    EXPECT_EQ(reg("r3"), r3);
    EXPECT_EQ(t.bvAdd(r3, word(8)), t.bvAdd(r3, word(8)));
    // Commutative operators are one node whichever way round.
    Term r4 = reg("r4");
    EXPECT_EQ(t.bvXor(r3, r4), t.bvXor(r4, r3));
    EXPECT_EQ(t.andOf(flag("a"), flag("b")), t.andOf(flag("b"), flag("a")));
    // Different widths are different constants.
    EXPECT_NE(t.bitVec(8, 1), t.bitVec(16, 1));
}

TEST_F(Terms, ArithmeticFoldsWithWrapAround)
{
    EXPECT_EQ(t.bvAdd(word(0xffffffff), word(1)), word(0));
    EXPECT_EQ(t.bvSub(word(0), word(1)), word(0xffffffff));
    EXPECT_EQ(t.bvMul(word(0x10000), word(0x10000)), word(0));
    EXPECT_EQ(t.bvNeg(word(0x80000000)), word(0x80000000));
    // Constants gather on the right of one addition: r3+8+4 is r3+12.
    Term r3 = reg("r3");
    EXPECT_EQ(t.bvAdd(t.bvAdd(r3, word(8)), word(4)), t.bvAdd(r3, word(12)));
    EXPECT_EQ(t.bvSub(t.bvAdd(r3, word(8)), word(8)), r3);
    EXPECT_EQ(t.bvAdd(r3, word(0)), r3);
    EXPECT_EQ(t.bvSub(r3, r3), word(0));
    EXPECT_EQ(t.bvMul(r3, word(1)), r3);
    EXPECT_EQ(t.bvMul(word(0), r3), word(0));
}

TEST_F(Terms, DivisionFoldsOnlyWhereItIsDefined)
{
    EXPECT_EQ(t.bvUdiv(word(7), word(2)), word(3));
    EXPECT_EQ(t.bvUrem(word(7), word(2)), word(1));
    // Truncation toward zero for signed quotients.
    EXPECT_EQ(t.bvSdiv(word(static_cast<std::uint32_t>(-7)), word(2)), word(static_cast<std::uint32_t>(-3)));
    // The quotient that overflows and division by zero stay for the solver.
    EXPECT_EQ(t.op(t.bvSdiv(word(0x80000000), word(0xffffffff))), Op::BvSdiv);
    EXPECT_EQ(t.op(t.bvUdiv(word(7), word(0))), Op::BvUdiv);
}

TEST_F(Terms, ShiftsAndComparisonsFold)
{
    EXPECT_EQ(t.bvShl(word(1), word(31)), word(0x80000000));
    EXPECT_EQ(t.bvShl(word(1), word(32)), word(0));
    EXPECT_EQ(t.bvLshr(word(0x80000000), word(40)), word(0));
    EXPECT_EQ(t.bvAshr(word(0x80000000), word(4)), word(0xf8000000));
    EXPECT_EQ(t.bvAshr(word(0x80000000), word(32)), word(0xffffffff));
    EXPECT_EQ(t.bvShl(reg("r3"), word(33)), word(0));
    EXPECT_TRUE(t.isTrue(t.bvSlt(word(0xffffffff), word(0))));  // -1 < 0
    EXPECT_TRUE(t.isFalse(t.bvUlt(word(0xffffffff), word(0)))); // 4294967295 < 0
    EXPECT_TRUE(t.isTrue(t.bvSle(reg("r3"), reg("r3"))));
    EXPECT_EQ(t.rotateLeft(8, word(0x12345678)), word(0x34567812));
    EXPECT_EQ(t.rotateLeft(32, reg("r3")), reg("r3"));
}

TEST_F(Terms, SlicesAndJoins)
{
    Term r3 = reg("r3");
    EXPECT_EQ(t.extract(15, 8, word(0x12345678)), t.bitVec(8, 0x56));
    EXPECT_EQ(t.concat(t.bitVec(8, 0x12), t.bitVec(8, 0x34)), t.bitVec(16, 0x1234));
    EXPECT_EQ(t.extract(31, 0, r3), r3);
    // Adjacent slices of one value join back, in any grouping.
    Term bytes = t.concat(t.concat(t.concat(t.extract(31, 24, r3), t.extract(23, 16, r3)), t.extract(15, 8, r3)),
                          t.extract(7, 0, r3));
    EXPECT_EQ(bytes, r3);
    // A slice of a slice, of a join, of an extension.
    EXPECT_EQ(t.extract(3, 0, t.extract(15, 8, r3)), t.extract(11, 8, r3));
    EXPECT_EQ(t.extract(7, 0, t.concat(r3, t.bitVec(8, 0xab))), t.bitVec(8, 0xab));
    EXPECT_EQ(t.extract(39, 8, t.concat(r3, t.bitVec(8, 0xab))), r3);
    EXPECT_EQ(t.extract(7, 0, t.zeroExtend(24, t.extract(7, 0, r3))), t.extract(7, 0, r3));
    EXPECT_EQ(t.extract(31, 8, t.zeroExtend(24, t.extract(7, 0, r3))), t.bitVec(24, 0));
    EXPECT_EQ(t.signExtend(24, t.bitVec(8, 0x80)), word(0xffffff80));
    EXPECT_EQ(t.zeroExtend(24, t.bitVec(8, 0x80)), word(0x80));
}

TEST_F(Terms, BooleansAndChoices)
{
    Term a = flag("a");
    Term b = flag("b");
    EXPECT_EQ(t.notOf(t.notOf(a)), a);
    EXPECT_TRUE(t.isFalse(t.andOf(a, t.notOf(a))));
    EXPECT_TRUE(t.isTrue(t.orOf(t.notOf(a), a)));
    EXPECT_EQ(t.andOf(a, t.trueTerm()), a);
    EXPECT_EQ(t.orOf(a, t.falseTerm()), a);
    Term x = reg("x");
    Term y = reg("y");
    EXPECT_EQ(t.ite(t.trueTerm(), x, y), x);
    EXPECT_EQ(t.ite(a, x, x), x);
    // A negated condition swaps the branches; a repeated one is known.
    EXPECT_EQ(t.ite(t.notOf(a), x, y), t.ite(a, y, x));
    EXPECT_EQ(t.ite(a, t.ite(a, x, y), reg("z")), t.ite(a, x, reg("z")));
    EXPECT_EQ(t.ite(a, t.trueTerm(), t.falseTerm()), a);
    EXPECT_EQ(t.ite(a, t.falseTerm(), t.trueTerm()), t.notOf(a));
    EXPECT_EQ(t.ite(a, t.trueTerm(), b), t.orOf(a, b));
    EXPECT_EQ(t.eq(a, t.falseTerm()), t.notOf(a));
    EXPECT_TRUE(t.isFalse(t.eq(word(1), word(2))));
}

TEST_F(Terms, LoadsReadTheLatestStoreAtTheirAddress)
{
    Term r3 = reg("r3");
    Term mem = memory();
    Term stored = t.storeBytes(mem, t.bvAdd(r3, word(8)), word(0x11223344));
    // The word back, and its bytes, whatever stores at other offsets follow.
    Term later = t.storeBytes(stored, t.bvAdd(r3, word(12)), reg("r4"));
    EXPECT_EQ(t.load(later, t.bvAdd(r3, word(8)), 4), word(0x11223344));
    EXPECT_EQ(t.load(later, t.bvAdd(r3, word(9)), 2), t.bitVec(16, 0x2233));
    // A value stored and loaded whole is the value.
    EXPECT_EQ(t.load(later, t.bvAdd(r3, word(12)), 4), reg("r4"));
    // Below the stores: the memory before them.
    EXPECT_EQ(t.select(later, t.bvAdd(r3, word(4))), t.select(mem, t.bvAdd(r3, word(4))));
    // A store through another base may be anywhere: it stops the search.
    Term elsewhere = t.store(later, reg("r1"), t.bitVec(8, 0));
    Term blocked = t.select(elsewhere, t.bvAdd(r3, word(8)));
    EXPECT_EQ(t.op(blocked), Op::Select);
    EXPECT_EQ(t.child(blocked, 0), elsewhere);
    // The latest store at an address is the one read.
    Term twice = t.store(t.store(mem, r3, t.bitVec(8, 1)), r3, t.bitVec(8, 2));
    EXPECT_EQ(t.select(twice, r3), t.bitVec(8, 2));
    EXPECT_EQ(t.child(twice, 0), mem); // the first store is gone
    // Writing back what is there changes nothing.
    EXPECT_EQ(t.store(later, t.bvAdd(r3, word(8)), t.bitVec(8, 0x11)), later);
}

TEST_F(Terms, LoadsFollowTheirOwnChainWhereChainsFork)
{
    Term r3 = reg("r3");
    Term base = t.store(memory(), t.bvAdd(r3, word(0)), t.bitVec(8, 0xaa));
    Term left = t.store(base, t.bvAdd(r3, word(1)), t.bitVec(8, 0x01));
    Term right = t.store(base, t.bvAdd(r3, word(1)), t.bitVec(8, 0x02));
    Term right_more = t.store(right, t.bvAdd(r3, word(2)), t.bitVec(8, 0x03));
    EXPECT_EQ(t.select(left, t.bvAdd(r3, word(1))), t.bitVec(8, 0x01));
    EXPECT_EQ(t.select(right_more, t.bvAdd(r3, word(1))), t.bitVec(8, 0x02));
    EXPECT_EQ(t.select(left, t.bvAdd(r3, word(2))), t.select(memory(), t.bvAdd(r3, word(2))));
    EXPECT_EQ(t.select(right_more, r3), t.bitVec(8, 0xaa));
    EXPECT_EQ(t.storeDepth(right_more), 3u);
    EXPECT_EQ(t.storeDepth(memory()), 0u);
}

TEST_F(Terms, ConstantAddressesAreOneBase)
{
    Term mem = memory();
    Term stored = t.store(t.store(mem, word(0x100), t.bitVec(8, 1)), word(0x104), t.bitVec(8, 2));
    EXPECT_EQ(t.select(stored, word(0x100)), t.bitVec(8, 1));
    EXPECT_EQ(t.select(stored, word(0x101)), t.select(mem, word(0x101)));
    EXPECT_TRUE(t.differentAddresses(word(0x100), word(0x104)));
    EXPECT_FALSE(t.differentAddresses(word(0x100), reg("r3")));
    // Offsets compare modulo 2^32.
    EXPECT_FALSE(t.differentAddresses(t.bvAdd(reg("r3"), word(0xffffffff)), t.bvSub(reg("r3"), word(1))));
}

TEST_F(Terms, PrinterNamesSharedSubtermsOnce)
{
    Term r3 = reg("r3");
    Term shared = t.bvAdd(r3, reg("r4"));
    Term root = t.bvMul(shared, t.bvXor(shared, word(5)));
    std::ostringstream out;
    Printer printer(t, out);
    printer.addRoot(root);
    printer.writeDefinitions();
    printer.write(root);
    EXPECT_EQ(out.str(), "(declare-const e1 (_ BitVec 32))\n(assert (= e1 (bvadd r3 r4)))\n"
                         "(bvmul e1 (bvxor e1 #x00000005))");
}

TEST_F(Terms, PrinterWritesEveryOperatorInItsSyntax)
{
    Term r3 = reg("r3");
    EXPECT_EQ(text(t.bitVec(3, 5)), "#b101");
    EXPECT_EQ(text(t.bitVec(64, 0x123)), "#x0000000000000123");
    EXPECT_EQ(text(t.extract(7, 0, r3)), "((_ extract 7 0) r3)");
    EXPECT_EQ(text(t.signExtend(16, t.extract(15, 0, r3))), "((_ sign_extend 16) ((_ extract 15 0) r3))");
    EXPECT_EQ(text(t.rotateLeft(3, r3)), "((_ rotate_left 3) r3)");
    EXPECT_EQ(text(t.implies(flag("a"), flag("b"))), "(=> a b)");
    Term value = t.fpFromBits(Sort::doubleFloat(), t.symbol("w", Sort::bitVec(64)));
    EXPECT_EQ(text(t.fpToSigned(32, t.roundingMode(RoundingMode::TowardZero), value)),
              "((_ fp.to_sbv 32) RTZ ((_ to_fp 11 53) w))");
    EXPECT_EQ(text(t.fpConvert(Sort::singleFloat(), t.roundingMode(RoundingMode::NearestEven), value)),
              "((_ to_fp 8 24) RNE ((_ to_fp 11 53) w))");
    std::ostringstream sort;
    Printer::writeSort(sort, Sort::memory());
    EXPECT_EQ(sort.str(), "(Array (_ BitVec 32) (_ BitVec 8))");
}

TEST_F(Terms, PrinterCutsDeepNesting)
{
    Term chain = reg("r3");
    for (int i = 0; i < 100; ++i)
        chain = t.bvMul(chain, reg("r4"));
    std::string written = text(chain);
    // No line holds much more than the inline height's worth of operators
    // (a definition adds its own and its sort's parentheses).
    std::istringstream lines(written);
    for (std::string line; std::getline(lines, line);) {
        std::size_t depth = 0;
        for (char c : line)
            depth += c == '(';
        EXPECT_LE(depth, Printer::MAX_INLINE_HEIGHT + 4);
    }
}

} // namespace
