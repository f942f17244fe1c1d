// Byte order of the executable's fields.
#include <gtest/gtest.h>

#include "swap.h"

TEST(SwapTest, SwapsReverseARawValueAndDecodersReadBigEndian)
{
    // The bytes 00 11 and 00 00 01 2C, read into host integers on a
    // little-endian host.
    EXPECT_EQ(swapH(0x1100), 17);
    EXPECT_EQ(swapH(0xff01), 0x01ff);
    EXPECT_EQ(swapW(0x2c010000ul), 300ul);
    EXPECT_EQ(swapW(0x78563412ul), 0x12345678ul);
    EXPECT_EQ(swapA(0x00000010ul), 0x10000000ul);
    EXPECT_EQ(swapO(0x34000000ul), 52ul);
    // Signed words keep their sign.
    EXPECT_EQ(swapSw(static_cast<long>(0xfcffffffl)), -4);
    EXPECT_EQ(swapSw(0x20000000l), 32);
    // The decoders take the bytes themselves; high bytes do not spread.
    const unsigned char high[] = {0xff, 0xfe, 0x80, 0x01};
    EXPECT_EQ(bigEndianWord(high), 0xfffe8001u);
    EXPECT_EQ(bigEndianHalf(high), 0xfffeu);
}
