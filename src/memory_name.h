// Names of symbolic memory cells, the one naming scheme that the translator,
// the source mapping and the type tables share: "MEM[k]" for an absolute
// address, "MEM[k+B]" for the cell at offset k from the address that B
// holds. A structure held by value inside cell "MEM[n+R]" has its member at
// offset k in cell "MEM[n+k+R": nested structures flatten into one offset.
#ifndef VELCOR_SRC_MEMORY_NAME_H
#define VELCOR_SRC_MEMORY_NAME_H

#include <cstdint>
#include <string>
#include <vector>

std::string memoryCellName(long a_offset);
std::string memoryCellName(long a_offset, const std::string& a_base);

// Whether a_name begins with "MEM[".
bool isMemoryCellName(const char* a_name);

// The cell a_offset bytes further into the cell a_name ("MEM[n+R" becomes
// "MEM[n+offset+R"); false when a_name is not of that form.
bool shiftedMemoryCellName(const char* a_name, std::int32_t a_offset, std::string& a_result);

// The cell of a structure member at a_offset: through the pointer that
// a_base holds ("MEM[offset+base]") when a_through_pointer, otherwise inside
// the cell a_base that holds the structure by value (shifted as above);
// false when a_base is no cell to shift.
bool memberCellName(const std::string& a_base, std::int32_t a_offset, bool a_through_pointer, std::string& a_result);
bool memberCellName(const char* a_base, std::int32_t a_offset, bool a_through_pointer, std::string& a_result);

// Reads a name "MEM[k+B]" back: a_offsets gets the offsets from the
// innermost cell out (MEM[0+MEM[16+C_]] gives 16, 0), a_base the name the
// innermost offset is added to ("C_"). False for any other form.
bool readMemoryCellName(const std::string& a_name, std::vector<std::int32_t>& a_offsets, std::string& a_base);

// Offsets add with 32-bit wrap-around, as the names print them.
std::int32_t addOffsets(std::int32_t a_left, std::int32_t a_right);

#endif
