// Bytes that no correct execution writes: the constants, jump tables and
// global offset tables of the executable the code came from. The exact
// translation reads them where the code loads from a constant address.
#ifndef VELCOR_SRC_PPC_CONSTANT_MEMORY_H
#define VELCOR_SRC_PPC_CONSTANT_MEMORY_H

#include <cstdint>

class ConstantMemory {
public:
    virtual ~ConstantMemory() = default;
    // The byte at a_address, when it is one of those.
    virtual bool readByte(std::uint32_t a_address, std::uint8_t& a_byte) const = 0;
    // The data object (a named array of constants, say) that holds
    // a_address, when one is known: its first address and its size.
    virtual bool objectHolding(std::uint32_t a_address, std::uint32_t& a_start, std::uint32_t& a_size) const
    {
        (void)a_address;
        (void)a_start;
        (void)a_size;
        return false;
    }
};

#endif
