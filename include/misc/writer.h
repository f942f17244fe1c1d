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

#include "misc/descriptor_buffer.h"

namespace misc {

class Writer {
public:
    explicit Writer(std::ostream& a_stream)
        : m_stream(a_stream), m_direct(DescriptorBuffer::direct(a_stream.rdbuf()))
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
    Writer& operator<<(char a_char)
    {
        std::streambuf* buffer = m_stream.rdbuf();
        if (buffer == m_direct && m_direct && m_stream.good()) {
            if (!m_direct->append(a_char))
                m_stream.setstate(std::ios::badbit);
            return *this;
        }
        if (!buffer || !m_stream.good() || std::streambuf::traits_type::eq_int_type(
                                                 buffer->sputc(a_char), std::streambuf::traits_type::eof()))
            m_stream.setstate(std::ios::badbit);
        return *this;
    }
    Writer& operator<<(int a_value) { return number(a_value); }
    Writer& operator<<(long a_value) { return number(a_value); }
    template <class T>
    Writer& operator<<(const T& a_value)
    {
        m_stream << a_value;
        return *this;
    }

    std::ostream& stream() const { return m_stream; }

private:
    // As the stream would: nothing into a stream that failed or has no
    // buffer, which is then marked bad.
    Writer& write(const char* a_text, std::size_t a_count)
    {
        std::streambuf* buffer = m_stream.rdbuf();
        if (buffer == m_direct && m_direct && m_stream.good()) {
            if (!m_direct->append(a_text, a_count))
                m_stream.setstate(std::ios::badbit);
            return *this;
        }
        if (!buffer || !m_stream.good())
            m_stream.setstate(std::ios::badbit);
        else if (buffer->sputn(a_text, static_cast<std::streamsize>(a_count)) != static_cast<std::streamsize>(a_count))
            m_stream.setstate(std::ios::badbit);
        return *this;
    }

    template <class Number>
    Writer& number(Number a_value)
    {
        char digits[24];
        std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, a_value);
        return write(digits, static_cast<std::size_t>(end.ptr - digits));
    }

    std::ostream& m_stream;
    // The stream's buffer, when text can be put straight into it.
    DescriptorBuffer* m_direct;
};

} // namespace misc

#endif
