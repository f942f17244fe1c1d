// The output path: the writer puts the very bytes a stream would, straight
// into the stream's buffer, and the descriptor buffer gets every byte to its
// file, whatever the sizes of the pieces.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "misc/descriptor_buffer.h"
#include "misc/writer.h"

namespace {

std::string contentsOf(const std::string& a_path)
{
    std::ifstream in(a_path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// A file of its own in the temporary directory, removed at the end.
class TemporaryFile {
public:
    TemporaryFile()
    {
        char name[] = "/tmp/velcor-output-XXXXXX";
        m_descriptor = mkstemp(name);
        m_path = name;
    }
    ~TemporaryFile() { std::remove(m_path.c_str()); }
    int descriptor() const { return m_descriptor; }
    const std::string& path() const { return m_path; }

private:
    int m_descriptor = -1;
    std::string m_path;
};

} // namespace

TEST(WriterTest, WritesWhatTheStreamWould)
{
    std::ostringstream expected;
    std::ostringstream written;
    const std::string name = "MEM[8+r9]";
    enum Kind { FIRST, SECOND };
    expected << "ASSERT " << name << '=' << -4 << ',' << 0 << ',' << INT_MIN << ',' << LONG_MAX << ',' << SECOND << ','
             << 2.5 << ',' << true << '\n';
    misc::Writer(written) << "ASSERT " << name << '=' << -4 << ',' << 0 << ',' << INT_MIN << ',' << LONG_MAX << ','
                          << SECOND << ',' << 2.5 << ',' << true << '\n';
    EXPECT_EQ(written.str(), expected.str());

    // Every integer type and enumerations of every underlying type.
    enum Small : signed char { LOW = -3 };
    enum Wide : unsigned long long { HIGH = ULLONG_MAX };
    std::ostringstream expected_numbers;
    std::ostringstream written_numbers;
    expected_numbers << 7u << ' ' << ULONG_MAX << ' ' << LLONG_MIN << ' ' << ULLONG_MAX << ' ' << LOW << ' ' << HIGH
                     << ' ' << std::size_t(42) << ' ' << std::uint32_t(4000000000u);
    misc::Writer(written_numbers) << 7u << ' ' << ULONG_MAX << ' ' << LLONG_MIN << ' ' << ULLONG_MAX << ' ' << LOW
                                  << ' ' << HIGH << ' ' << std::size_t(42) << ' ' << std::uint32_t(4000000000u);
    EXPECT_EQ(written_numbers.str(), expected_numbers.str());
}

TEST(WriterTest, AStreamWithoutBufferTakesNothingAndFails)
{
    std::ostream nowhere(nullptr);
    misc::Writer(nowhere) << "text" << 'c' << 12;
    EXPECT_TRUE(nowhere.bad());
    std::ostringstream null_text;
    const char* nothing = nullptr;
    misc::Writer(null_text) << nothing;
    EXPECT_TRUE(null_text.bad());
    std::ostringstream failed;
    failed.setstate(std::ios::failbit);
    misc::Writer(failed) << "text" << 'c';
    EXPECT_EQ(failed.str(), "");
}

TEST(DescriptorBufferTest, EveryPieceReachesTheFileInOrder)
{
    TemporaryFile file;
    ASSERT_GE(file.descriptor(), 0);
    std::string expected;
    {
        // A small buffer, so that pieces fill it, straddle it and pass it.
        misc::DescriptorBuffer buffer(64);
        buffer.attach(file.descriptor(), true);
        std::ostream out(&buffer);
        for (int i = 0; i < 200; ++i) {
            std::string piece(static_cast<std::size_t>(i % 150), static_cast<char>('a' + i % 26));
            out << piece << i << '\n';
            expected += piece + std::to_string(i) + "\n";
        }
        out.flush();
        EXPECT_EQ(contentsOf(file.path()), expected);
        out << "tail";
        expected += "tail";
        EXPECT_TRUE(buffer.close());
        EXPECT_FALSE(buffer.isOpen());
    }
    EXPECT_EQ(contentsOf(file.path()), expected);
    // The descriptor was the buffer's: it is closed.
    EXPECT_EQ(fcntl(file.descriptor(), F_GETFD), -1);
}

TEST(DescriptorBufferTest, AFailedWriteFailsTheStream)
{
    int full = open("/dev/full", O_WRONLY);
    if (full < 0)
        GTEST_SKIP() << "no /dev/full";
    misc::DescriptorBuffer buffer(16);
    buffer.attach(full, true);
    std::ostream out(&buffer);
    out << "more than sixteen bytes of text";
    out.flush();
    EXPECT_TRUE(out.bad());
    EXPECT_FALSE(buffer.close());
}
