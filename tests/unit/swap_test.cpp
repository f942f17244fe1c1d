// Byte order of the executable's fields.
#include <gtest/gtest.h>

#include "swap.h"

TEST(SwapTest, SwapsReverseTheBytesOfARawValue)
{
    // The bytes 00 11, read into a host short on a little-endian host.
    EXPECT_EQ(swapH(0x1100), 17);
    EXPECT_EQ(swapH(0x0000), 0);
    EXPECT_EQ(swapH(0xff01), 0x01ff);
    // The bytes 00 00 01 2C, read into a host word on a little-endian host.
    EXPECT_EQ(swapW(0x2c010000ul), 300ul);
    EXPECT_EQ(swapW(0x78563412ul), 0x12345678ul);
    EXPECT_EQ(swapA(0x00000010ul), 0x10000000ul);
    EXPECT_EQ(swapO(0x34000000ul), 52ul);
    // Only the low four bytes of a wider host long take part.
    EXPECT_EQ(swapW(0xaabbccdd11223344ul & 0xfffffffful), 0x44332211ul);
}

TEST(SwapTest, SignedWordsKeepTheirSign)
{
    EXPECT_EQ(swapSw(static_cast<long>(0xfcffffffl)), -4);
    EXPECT_EQ(swapSw(0x20000000l), 32);
}

TEST(SwapTest, DecodingReadsTheBytesBigEndianOnAnyHost)
{
    const unsigned char word[] = {0x00, 0x00, 0x01, 0x2c};
    const unsigned char half[] = {0x00, 0x11};
    const unsigned char high[] = {0xff, 0xfe, 0x80, 0x01};
    EXPECT_EQ(bigEndianWord(word), 300u);
    EXPECT_EQ(bigEndianHalf(half), 17u);
    EXPECT_EQ(bigEndianWord(high), 0xfffe8001u);
    EXPECT_EQ(bigEndianHalf(high), 0xfffeu);
}
