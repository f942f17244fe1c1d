// A stream buffer over a file descriptor: one large buffer, written out with
// write(2) when it is full or flushed. Bytes go in as they are, without the
// conversion and locale checks that std::filebuf makes on every write, which
// is what a run that prints tens of megabytes in small pieces spends its
// time on.
#ifndef VELCOR_MISC_DESCRIPTOR_BUFFER_H
#define VELCOR_MISC_DESCRIPTOR_BUFFER_H

#include <cstddef>
#include <streambuf>
#include <vector>

namespace misc {

class DescriptorBuffer : public std::streambuf {
public:
    explicit DescriptorBuffer(std::size_t a_size = std::size_t(1) << 20);
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

protected:
    int_type overflow(int_type a_char) override;
    int sync() override;
    std::streamsize xsputn(const char* a_text, std::streamsize a_count) override;

private:
    bool drain();
    bool writeAll(const char* a_text, std::size_t a_count);

    std::vector<char> m_buffer;
    int m_descriptor = -1;
    bool m_owned = false;
    bool m_failed = false;
};

} // namespace misc

#endif
