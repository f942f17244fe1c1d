#include "misc/writer.h"

namespace misc {

Writer& Writer::writeSlowly(const char* a_text, std::size_t a_count)
{
    std::streambuf* buffer = m_stream.rdbuf();
    if (!buffer || !m_stream.good())
        m_stream.setstate(std::ios::badbit);
    else if (buffer->sputn(a_text, static_cast<std::streamsize>(a_count)) != static_cast<std::streamsize>(a_count))
        m_stream.setstate(std::ios::badbit);
    return *this;
}

Writer& Writer::putSlowly(char a_char)
{
    std::streambuf* buffer = m_stream.rdbuf();
    if (!buffer || !m_stream.good() ||
        std::streambuf::traits_type::eq_int_type(buffer->sputc(a_char), std::streambuf::traits_type::eof()))
        m_stream.setstate(std::ios::badbit);
    return *this;
}

} // namespace misc
