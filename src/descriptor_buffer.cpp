#include "misc/descriptor_buffer.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace misc {

DescriptorBuffer::DescriptorBuffer(std::size_t a_size) : m_buffer(a_size)
{
    setp(m_buffer.data(), m_buffer.data() + m_buffer.size());
}

DescriptorBuffer::~DescriptorBuffer()
{
    close();
}

void DescriptorBuffer::attach(int a_descriptor, bool a_owned)
{
    close();
    m_descriptor = a_descriptor;
    m_owned = a_owned;
    m_failed = false;
}

bool DescriptorBuffer::close()
{
    bool written = drain() && !m_failed;
    if (m_owned && m_descriptor >= 0 && ::close(m_descriptor) != 0)
        written = false;
    m_descriptor = -1;
    m_owned = false;
    return written;
}

bool DescriptorBuffer::writeAll(const char* a_text, std::size_t a_count)
{
    while (a_count > 0) {
        ssize_t done = ::write(m_descriptor, a_text, a_count);
        if (done < 0 && errno == EINTR)
            continue;
        if (done <= 0)
            return false;
        a_text += done;
        a_count -= static_cast<std::size_t>(done);
    }
    return true;
}

bool DescriptorBuffer::drain()
{
    std::size_t pending = static_cast<std::size_t>(pptr() - pbase());
    setp(m_buffer.data(), m_buffer.data() + m_buffer.size());
    if (pending == 0)
        return true;
    if (m_descriptor < 0 || !writeAll(m_buffer.data(), pending))
        m_failed = true;
    return !m_failed;
}

DescriptorBuffer::int_type DescriptorBuffer::overflow(int_type a_char)
{
    if (!drain())
        return traits_type::eof();
    if (traits_type::eq_int_type(a_char, traits_type::eof()))
        return traits_type::not_eof(a_char);
    *pptr() = traits_type::to_char_type(a_char);
    pbump(1);
    return a_char;
}

int DescriptorBuffer::sync()
{
    return drain() ? 0 : -1;
}

std::streamsize DescriptorBuffer::xsputn(const char* a_text, std::streamsize a_count)
{
    std::size_t count = static_cast<std::size_t>(a_count);
    if (count <= static_cast<std::size_t>(epptr() - pptr())) {
        copySmall(pptr(), a_text, count);
        pbump(static_cast<int>(count));
        return a_count;
    }
    if (!drain())
        return 0;
    if (count >= m_buffer.size()) {
        if (writeAll(a_text, count))
            return a_count;
        m_failed = true;
        return 0;
    }
    std::memcpy(pptr(), a_text, count);
    pbump(static_cast<int>(count));
    return a_count;
}

} // namespace misc
