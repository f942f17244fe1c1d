// Writes text straight into a stream's buffer: the same bytes as `stream <<
// value`, without the work std::ostream does for every insertion (a sentry,
// the locale's number formatting). That work is most of the cost of output
// that comes in many small pieces, as traces and formulas do. Values of other
// types go through the stream as before.
#ifndef VELCOR_MISC_WRITER_H
#define VELCOR_MISC_WRITER_H

#include <charconv>
#include <cstring>
#include <ostream>
#include <string>
#include <type_traits>

#include "misc/descriptor_buffer.h"
#include "misc/key_text.h"

namespace misc {

class Writer {
    // Unscoped enumerations at least as wide as int, which the stream prints
    // as numbers (one of characters prints as a character).
    template <class T, bool = std::is_enum<T>::value>
    struct IsNumberEnum : std::false_type {};
    template <class T>
    struct IsNumberEnum<T, true>
        : std::integral_constant<bool, std::is_convertible<T, int>::value &&
                                           sizeof(typename std::underlying_type<T>::type) >= sizeof(int)> {};
    template <class T>
    static constexpr bool IS_PLAIN_ENUM = IsNumberEnum<T>::value;

public:
    explicit Writer(std::ostream& a_stream)
        : m_stream(a_stream), m_state(a_stream), m_direct(DescriptorBuffer::direct(a_stream.rdbuf()))
    {
    }

    // A null text is refused as the stream refuses it: nothing, and bad.
    Writer& operator<<(const char* a_text)
    {
        if (!a_text) {
            m_stream.setstate(std::ios::badbit);
            return *this;
        }
        return write(a_text, std::strlen(a_text));
    }
    Writer& operator<<(const std::string& a_text) { return write(a_text.data(), a_text.size()); }
    Writer& operator<<(const KeyText& a_text) { return write(a_text.data(), a_text.size()); }
    Writer& operator<<(char a_char)
    {
        if (direct() && m_direct->fits(1)) {
            m_direct->appendFitting(a_char);
            return *this;
        }
        return putSlowly(a_char);
    }
    Writer& operator<<(int a_value) { return number(a_value); }
    Writer& operator<<(long a_value) { return number(a_value); }
    Writer& operator<<(unsigned a_value) { return number(a_value); }
    Writer& operator<<(unsigned long a_value) { return number(a_value); }
    Writer& operator<<(long long a_value) { return number(a_value); }
    Writer& operator<<(unsigned long long a_value) { return number(a_value); }
    // Such an enumeration prints as its number, as the stream prints it.
    template <class T, typename std::enable_if<IS_PLAIN_ENUM<T>, int>::type = 0>
    Writer& operator<<(T a_value)
    {
        return number(static_cast<typename std::underlying_type<T>::type>(a_value));
    }
    template <class T, typename std::enable_if<!IS_PLAIN_ENUM<T>, int>::type = 0>
    Writer& operator<<(const T& a_value)
    {
        m_stream << a_value;
        return *this;
    }

    std::ostream& stream() const { return m_stream; }

private:
    // Whether text can go straight into the buffer: the stream is still
    // good and still has the buffer it had.
    bool direct() const { return m_direct && m_state.rdbuf() == m_direct && m_state.rdstate() == 0; }

    // The common case inline, where a literal's length is known when it is
    // compiled; the rest as the stream would do it.
    Writer& write(const char* a_text, std::size_t a_count)
    {
        if (direct() && m_direct->fits(a_count)) {
            m_direct->appendFitting(a_text, a_count);
            return *this;
        }
        return writeSlowly(a_text, a_count);
    }
    // As the stream would: nothing into a stream that failed or has no
    // buffer, which is then marked bad.
    Writer& writeSlowly(const char* a_text, std::size_t a_count);
    Writer& putSlowly(char a_char);

    template <class Number>
    Writer& number(Number a_value)
    {
        char digits[24];
        std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, a_value);
        return write(digits, static_cast<std::size_t>(end.ptr - digits));
    }

    std::ostream& m_stream;
    // The stream's state and buffer, reached once.
    std::ios& m_state;
    // The stream's buffer, when text can be put straight into it.
    DescriptorBuffer* m_direct;
};

} // namespace misc

#endif
