// Byte order of the executable. Every multi-byte field of the file, ELF or
// DWARF, is big-endian. The swap functions reverse the bytes of a raw value as
// read into a host integer on a little-endian host; the decoders read the
// bytes themselves and give the same value on any host, so the reader uses
// those.
#ifndef VELCOR_SRC_PPC_SWAP_H
#define VELCOR_SRC_PPC_SWAP_H

#include <cstdint>

// 2 bytes: Elf32_Half and the 2-byte DWARF fields.
unsigned short swapH(unsigned short a_value);
// 4 bytes (the low four of the argument): Elf32_Word and the 4-byte DWARF
// fields, Elf32_Addr, Elf32_Off; Elf32_Sword keeps its sign.
unsigned long swapW(unsigned long a_value);
unsigned long swapA(unsigned long a_value);
unsigned long swapO(unsigned long a_value);
long swapSw(long a_value);

// The big-endian number stored in the bytes at a_bytes.
std::uint16_t bigEndianHalf(const void* a_bytes);
std::uint32_t bigEndianWord(const void* a_bytes);

#endif
