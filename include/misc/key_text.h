// The key of a string hash map's entry as its iterators show it: a view of
// text that the entry keeps in its own block, next to the entry, so that
// confirming a match reads memory the lookup has just touched.
#ifndef VELCOR_MISC_KEY_TEXT_H
#define VELCOR_MISC_KEY_TEXT_H

#include <cstddef>
#include <cstring>
#include <ostream>
#include <string>
#include <string_view>

namespace misc {

class KeyText {
public:
    KeyText(const char* a_text, std::size_t a_size) : m_text(a_text), m_size(a_size) {}

    // Terminated by a NUL, which size() leaves out.
    const char* c_str() const { return m_text; }
    const char* data() const { return m_text; }
    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    operator std::string() const { return std::string(m_text, m_size); }

private:
    const char* m_text;
    std::size_t m_size;
};

inline bool operator==(const KeyText& a_key, const std::string& a_text)
{
    return a_key.size() == a_text.size() && std::memcmp(a_key.data(), a_text.data(), a_text.size()) == 0;
}
inline bool operator==(const std::string& a_text, const KeyText& a_key) { return a_key == a_text; }
inline bool operator!=(const KeyText& a_key, const std::string& a_text) { return !(a_key == a_text); }
inline bool operator==(const KeyText& a_key, const char* a_text) { return std::strcmp(a_key.c_str(), a_text) == 0; }
inline bool operator!=(const KeyText& a_key, const char* a_text) { return !(a_key == a_text); }

// As a std::string of the same text would be written.
inline std::ostream& operator<<(std::ostream& a_out, const KeyText& a_key)
{
    return a_out << std::string_view(a_key.data(), a_key.size());
}

} // namespace misc

#endif
