// A text that is most often empty, one pointer wide: the empty text takes no
// allocation. Operands and variables carry such a text (a temporary name, the
// name of a variable known by name only) by the hundred thousand, where a
// std::string would take four words each.
#ifndef VELCOR_MISC_COMPACT_TEXT_H
#define VELCOR_MISC_COMPACT_TEXT_H

#include <cstring>
#include <string>
#include <utility>

namespace misc {

class CompactText {
public:
    CompactText() = default;
    explicit CompactText(const char* a_text) { assign(a_text, std::strlen(a_text)); }
    explicit CompactText(const std::string& a_text) { assign(a_text.data(), a_text.size()); }
    CompactText(const CompactText& a_other) : CompactText(a_other.c_str()) {}
    CompactText(CompactText&& a_other) noexcept : m_text(std::exchange(a_other.m_text, nullptr)) {}
    CompactText& operator=(CompactText a_other) noexcept
    {
        std::swap(m_text, a_other.m_text);
        return *this;
    }
    ~CompactText() { delete[] m_text; }

    const char* c_str() const { return m_text ? m_text : ""; }
    bool empty() const { return m_text == nullptr; }

private:
    void assign(const char* a_text, std::size_t a_length)
    {
        if (a_length == 0)
            return;
        m_text = new char[a_length + 1];
        std::memcpy(m_text, a_text, a_length);
        m_text[a_length] = '\0';
    }

    // Null for the empty text.
    char* m_text = nullptr;
};

} // namespace misc

#endif
