// A stream buffer over a file descriptor: one buffer, written out with
// write(2) when it is full or flushed. Bytes go in as they are, without the
// conversion and locale checks that std::filebuf makes on every write, which
// is what a run that prints tens of megabytes in small pieces spends its
// time on. 64 KB stays in the processor's cache between writes, where the
// megabyte it once was made every byte miss twice, going in and going out.
#ifndef VELCOR_MISC_DESCRIPTOR_BUFFER_H
#define VELCOR_MISC_DESCRIPTOR_BUFFER_H

#include <cstddef>
#include <cstring>
#include <streambuf>
#include <typeinfo>
#include <vector>

namespace misc {

class DescriptorBuffer : public std::streambuf {
public:
    explicit DescriptorBuffer(std::size_t a_size = std::size_t(1) << 16);
    // Writes out what is buffered; closes the descriptor when it owns it.
    ~DescriptorBuffer() override;
    DescriptorBuffer(const DescriptorBuffer&) = delete;
    DescriptorBuffer& operator=(const DescriptorBuffer&) = delete;

    // Writes to a_descriptor from now on (after writing out what is
    // buffered for the previous one, which is closed when owned).
    void attach(int a_descriptor, bool a_owned);
    // Writes out what is buffered and closes an owned descriptor; false when
    // some of the text since attach could not be written.
    bool close();
    bool isOpen() const { return m_descriptor >= 0; }

    // a_buffer as a DescriptorBuffer when that is what it is, else null: a
    // writer that knows it can put text in without a virtual call.
    static DescriptorBuffer* direct(std::streambuf* a_buffer)
    {
        return a_buffer && typeid(*a_buffer) == typeid(DescriptorBuffer) ? static_cast<DescriptorBuffer*>(a_buffer)
                                                                          : nullptr;
    }

    // Whether a_count bytes fit in the buffer as it is; appendFitting then
    // puts them in as sputn would, inline.
    bool fits(std::size_t a_count) const { return a_count <= static_cast<std::size_t>(epptr() - pptr()); }
    void appendFitting(const char* a_text, std::size_t a_count)
    {
        copySmall(pptr(), a_text, a_count);
        pbump(static_cast<int>(a_count));
    }
    void appendFitting(char a_char)
    {
        *pptr() = a_char;
        pbump(1);
    }

protected:
    int_type overflow(int_type a_char) override;
    int sync() override;
    std::streamsize xsputn(const char* a_text, std::streamsize a_count) override;

private:
    // Most pieces are a few bytes: copied as two words that overlap in the
    // middle (never reading past the text), without a call.
    static void copySmall(char* a_to, const char* a_from, std::size_t a_count)
    {
        if (a_count >= 8 && a_count <= 16) {
            std::memcpy(a_to, a_from, 8);
            std::memcpy(a_to + a_count - 8, a_from + a_count - 8, 8);
        } else if (a_count >= 4 && a_count < 8) {
            std::memcpy(a_to, a_from, 4);
            std::memcpy(a_to + a_count - 4, a_from + a_count - 4, 4);
        } else if (a_count < 4) {
            for (std::size_t i = 0; i < a_count; ++i)
                a_to[i] = a_from[i];
        } else {
            std::memcpy(a_to, a_from, a_count);
        }
    }

    bool drain();
    bool writeAll(const char* a_text, std::size_t a_count);

    std::vector<char> m_buffer;
    int m_descriptor = -1;
    bool m_owned = false;
    bool m_failed = false;
};

} // namespace misc

#endif
