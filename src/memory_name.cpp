#include "memory_name.h"

#include <charconv>
#include <cstring>
#include <limits>

#include "misc/number_text.h"

namespace {

// "MEM[", a_offset, a_middle, a_rest and a_end, built in one piece: the
// translator names a cell for nearly every load and store.
std::string cellName(long a_offset, const char* a_middle, const char* a_rest, std::size_t a_rest_length,
                     const char* a_end)
{
    char digits[24];
    const std::size_t digit_count =
        static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, a_offset).ptr - digits);
    std::string name;
    name.reserve(4 + digit_count + std::strlen(a_middle) + a_rest_length + std::strlen(a_end));
    name.append("MEM[", 4).append(digits, digit_count).append(a_middle).append(a_rest, a_rest_length).append(a_end);
    return name;
}

} // namespace

std::string memoryCellName(long a_offset)
{
    return cellName(a_offset, "", "", 0, "]");
}

std::string memoryCellName(long a_offset, const std::string& a_base)
{
    return cellName(a_offset, "+", a_base.data(), a_base.size(), "]");
}

bool isMemoryCellName(const char* a_name)
{
    return std::strncmp(a_name, "MEM[", 4) == 0;
}

bool shiftedMemoryCellName(const char* a_name, std::int32_t a_offset, std::string& a_result)
{
    if (!isMemoryCellName(a_name))
        return false;
    const char* text = a_name + 4;
    const char* end = nullptr;
    long number = misc::readLong(text, 10, &end);
    if (end == text || *end != '+' || end[1] == '\0' || number < std::numeric_limits<std::int32_t>::min() ||
        number > std::numeric_limits<std::int32_t>::max())
        return false;
    a_result = cellName(addOffsets(static_cast<std::int32_t>(number), a_offset), "", end, std::strlen(end), "");
    return true;
}

bool memberCellName(const char* a_base, std::int32_t a_offset, bool a_through_pointer, std::string& a_result)
{
    if (!a_through_pointer)
        return shiftedMemoryCellName(a_base, a_offset, a_result);
    a_result = cellName(a_offset, "+", a_base, std::strlen(a_base), "]");
    return true;
}

bool memberCellName(const std::string& a_base, std::int32_t a_offset, bool a_through_pointer, std::string& a_result)
{
    if (!a_through_pointer)
        return shiftedMemoryCellName(a_base.c_str(), a_offset, a_result);
    a_result = memoryCellName(a_offset, a_base);
    return true;
}

std::int32_t addOffsets(std::int32_t a_left, std::int32_t a_right)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a_left) + static_cast<std::uint32_t>(a_right));
}

bool readMemoryCellName(const std::string& a_name, std::vector<std::int32_t>& a_offsets, std::string& a_base)
{
    // Peels "MEM[k+" from the front and "]" from the back, one level a time.
    std::vector<std::int32_t> outer_first;
    std::size_t begin = 0;
    std::size_t end = a_name.size();
    while (end - begin > 5 && a_name.compare(begin, 4, "MEM[") == 0 && a_name[end - 1] == ']') {
        const char* text = a_name.c_str() + begin + 4;
        const char* after = nullptr;
        long number = misc::readLong(text, 10, &after);
        if (after == text || *after != '+' || number < std::numeric_limits<std::int32_t>::min() ||
            number > std::numeric_limits<std::int32_t>::max())
            return false;
        outer_first.push_back(static_cast<std::int32_t>(number));
        begin = static_cast<std::size_t>(after - a_name.c_str()) + 1;
        end -= 1;
    }
    if (outer_first.empty() || begin >= end || a_name.compare(begin, 4, "MEM[") == 0)
        return false;
    a_base = a_name.substr(begin, end - begin);
    a_offsets.assign(outer_first.rbegin(), outer_first.rend());
    return true;
}
