// rlwinm over andc, cntlzw and conditionals: which nodes are rewritten in
// place and which are copied because another handle still holds them.
#include <gtest/gtest.h>

#include <string>

#include "machine.h"
#include "test_support.h"

namespace {

ExpHandle var(const std::string& a_name)
{
    return new VarExp(a_name.c_str());
}

ExpHandle bit(const ExpHandle& a_exp, int a_bit)
{
    return new BinaryExp(SELECT_BIT, a_exp, new ConstExp(a_bit));
}

ExpHandle ifExp(const ExpHandle& a_then, const ExpHandle& a_else)
{
    return new TrinaryExp(IF, var("c"), a_then, a_else);
}

std::string notes(long a_from, long a_to, long a_rotation)
{
    return "%in rotateAndMask\n%rotation amount = " + std::to_string(a_rotation) + "\n%from_idx = " +
           std::to_string(a_from) + "\n%to_idx = " + std::to_string(a_to) + "\n";
}

class RotateAndMaskTest : public ::testing::Test {
protected:
    RunFixture m_run{CVC};
    OutputCapture m_output;
    StreamCapture m_errors{std::cerr};
    ExpHandle m_x = var("x");
    ExpHandle m_d = var("d");
    ExpHandle m_sum = new BinaryExp(ADD, var("a"), var("b"));
};

} // namespace

TEST_F(RotateAndMaskTest, OneBitOfAConditionalCopiesOnlyWhatIsShared)
{
    ExpHandle flag = ifExp(new ConstExp(1), new ConstExp(0));
    EXPECT_EQ(rotateAndMask(31, 31, 1, flag).data(), flag.data());

    ExpHandle shared = ifExp(m_sum, m_d);
    ExpHandle holder = shared;
    m_output.clear();
    ExpHandle result = rotateAndMask(31, 31, 1, shared);
    EXPECT_TRUE(result == ifExp(bit(m_sum, 0), bit(m_d, 0)));
    EXPECT_EQ(shared->operand(2).data(), m_sum.data());
    EXPECT_EQ(m_output.text(), notes(31, 31, 1) + " %copy expression\n" + notes(31, 31, 1) + notes(31, 31, 1));

    // The outer node is unshared and rewritten; the inner one is also held by
    // the handle that reaches it, so it is copied.
    ExpHandle nested = ifExp(new TrinaryExp(IF, var("e"), m_sum, m_d), var("f"));
    m_output.clear();
    EXPECT_EQ(rotateAndMask(7, 7, 0, nested).data(), nested.data());
    EXPECT_TRUE(nested == ifExp(new TrinaryExp(IF, var("e"), bit(m_sum, 7), bit(m_d, 7)), bit(var("f"), 7)));
    std::string one = notes(7, 7, 0);
    EXPECT_EQ(m_output.text(), one + one + " %copy expression\n" + one + one + one);
}

TEST_F(RotateAndMaskTest, SignBitOfAndcAlsoOverAConditional)
{
    // Only the sign bit of an andc is a special case.
    ExpHandle andc = new BinaryExp(ANDC, m_x, m_d);
    EXPECT_TRUE(rotateAndMask(0, 0, 0, andc) == bit(andc, 0));
    EXPECT_TRUE(rotateAndMask(3, 3, 0, andc) == bit(andc, 3));
    EXPECT_EQ(m_errors.text(), "Special case : bit ANDC \n");

    ExpHandle alone = ifExp(new UnaryExp(NEG, m_d), m_x);
    EXPECT_EQ(get_sign_bit_andc(m_d, alone).data(), alone.data());
    EXPECT_TRUE(alone == ifExp(new ConstExp(0), bit(new BinaryExp(ANDC, m_x, m_d), 0)));

    // andc of a conditional with itself: it must neither change for its
    // other holders nor come to contain itself.
    ExpHandle shared = ifExp(m_sum, m_d);
    ExpHandle result = rotateAndMask(0, 0, 0, new BinaryExp(ANDC, shared, shared));
    EXPECT_EQ(shared->operand(2).data(), m_sum.data());
    EXPECT_TRUE(result == ifExp(bit(new BinaryExp(ANDC, m_sum, shared), 0), bit(new BinaryExp(ANDC, m_d, shared), 0)));
    EXPECT_EQ(m_output.text(), notes(0, 0, 0) + notes(3, 3, 0) + notes(0, 0, 0));
}

TEST_F(RotateAndMaskTest, OtherMasksOfCntlzwSelectABitSharedConditionalsAreCopied)
{
    ExpHandle zero_test = new TrinaryExp(IF, new BinaryExp(EQ, m_x, new ConstExp(0)), new ConstExp(1), new ConstExp(0));
    ExpHandle count = new UnaryExp(CNTLZW, m_x);
    EXPECT_TRUE(rotateAndMask(5, 31, 26, count) == bit(count, 5));
    EXPECT_TRUE(rotateAndMask(16, 31, 0, ifExp(m_sum, m_d)) == bit(ifExp(m_sum, m_d), 16));
    EXPECT_EQ(m_output.text(), notes(5, 31, 26) + notes(16, 31, 0));

    // A shared conditional is copied, here without a note.
    ExpHandle shared = ifExp(count, m_d);
    ExpHandle holder = shared;
    m_output.clear();
    EXPECT_TRUE(rotateAndMask(5, 31, 27, shared) == ifExp(zero_test, bit(m_d, 5)));
    EXPECT_EQ(shared->operand(2).data(), count.data());
    EXPECT_EQ(m_output.text(), notes(5, 31, 27) + notes(5, 31, 27) + notes(5, 31, 27));
    EXPECT_EQ(m_errors.text(), "IF special case : CNTLZW \nSpecial case : CNTLZW \n");

    ExpHandle alone = ifExp(count, m_d);
    EXPECT_EQ(rotateAndMask(5, 31, 27, alone).data(), alone.data());
    EXPECT_TRUE(alone->operand(2) == zero_test);
}

TEST_F(RotateAndMaskTest, ConditionalOverASharedChain)
{
    // r3+r3, then that sum added to itself, 200 times: 2^200 leaves unfolded.
    ExpHandle chain = new VarExp("r3");
    for (int i = 0; i < 200; ++i)
        chain = new BinaryExp(ADD, chain, chain);
    ExpHandle plus_one = new BinaryExp(ADD, chain, new ConstExp(1));
    ExpHandle value = ifExp(plus_one, chain);
    // Held twice, as a register's value is: the bit comes from a copy.
    ExpHandle register_value = value;
    ExpHandle low_bit = rotateAndMask(31, 31, 0, value);
    EXPECT_TRUE(low_bit == ifExp(bit(plus_one, 31), bit(chain, 31)));
    EXPECT_NE(low_bit.data(), value.data());
    EXPECT_EQ(value->operand(2).data(), plus_one.data());
    EXPECT_EQ(value->operand(3).data(), chain.data());
}

TEST_F(RotateAndMaskTest, SignBitOfAndcOverSharedConditionals)
{
    // Conditionals whose two branches are one conditional, 200 deep: 2^200
    // paths to the bottom one.
    ExpHandle shared = ifExp(m_x, m_sum);
    ExpHandle expected = ifExp(bit(new BinaryExp(ANDC, m_x, m_d), 0), bit(new BinaryExp(ANDC, m_sum, m_d), 0));
    for (int i = 0; i < 200; ++i) {
        ExpHandle condition = var("c" + std::to_string(i));
        shared = new TrinaryExp(IF, condition, shared, shared);
        expected = new TrinaryExp(IF, condition, expected, expected);
    }
    ExpHandle andc = new BinaryExp(ANDC, shared, m_d);
    ExpHandle sign = rotateAndMask(0, 0, 0, andc);
    EXPECT_TRUE(sign == expected);
}
