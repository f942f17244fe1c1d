#include "swap.h"

unsigned short swapH(unsigned short a_value)
{
    return static_cast<unsigned short>(((a_value & 0xffu) << 8) | ((a_value >> 8) & 0xffu));
}

// The two halves change places, then each half is swapped in turn.
unsigned long swapW(unsigned long a_value)
{
    unsigned short low = static_cast<unsigned short>(a_value & 0xffffu);
    unsigned short high = static_cast<unsigned short>((a_value >> 16) & 0xffffu);
    return (static_cast<unsigned long>(swapH(low)) << 16) | swapH(high);
}

unsigned long swapA(unsigned long a_value)
{
    return swapW(a_value);
}

unsigned long swapO(unsigned long a_value)
{
    return swapW(a_value);
}

long swapSw(long a_value)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(swapW(static_cast<unsigned long>(a_value))));
}

std::uint16_t bigEndianHalf(const void* a_bytes)
{
    const unsigned char* bytes = static_cast<const unsigned char*>(a_bytes);
    return static_cast<std::uint16_t>((bytes[0] << 8) | bytes[1]);
}

std::uint32_t bigEndianWord(const void* a_bytes)
{
    const unsigned char* bytes = static_cast<const unsigned char*>(a_bytes);
    return (std::uint32_t(bytes[0]) << 24) | (std::uint32_t(bytes[1]) << 16) | (std::uint32_t(bytes[2]) << 8) |
           std::uint32_t(bytes[3]);
}
