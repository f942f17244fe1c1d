#include "listing_source.h"

#include <algorithm>

#include "elf_image.h"
#include "misc/stop.h"
#include "node_code.h"

ListingSource::ListingSource() = default;

ListingSource::~ListingSource()
{
    if (m_file)
        std::fclose(m_file);
    if (m_pipe)
        std::fclose(m_pipe);
}

bool ListingSource::open(const char* a_path)
{
    m_path = a_path;
    m_file = std::fopen(a_path, "r");
    if (!m_file)
        return false;
    unsigned char start[4];
    const std::size_t count = std::fread(start, 1, sizeof start, m_file);
    m_start.assign(start, start + count);
    m_executable = ElfImage::startsLikeElf(m_start);
    if (m_executable || std::ferror(m_file)) {
        // A stream that failed is left as it is: the scanner meets the
        // failure again and reports it.
        return true;
    }
    if (std::fseek(m_file, 0, SEEK_SET) == 0)
        return true;
    // A pipe cannot go back: the scanner reads the first bytes again from
    // here, then the rest of the pipe as it comes.
    cookie_io_functions_t functions = {};
    functions.read = [](void* a_source, char* a_buffer, std::size_t a_size) -> ssize_t {
        ListingSource& source = *static_cast<ListingSource*>(a_source);
        if (source.m_replayed < source.m_start.size()) {
            std::size_t count = std::min(a_size, source.m_start.size() - source.m_replayed);
            std::copy_n(source.m_start.begin() + static_cast<long>(source.m_replayed), count, a_buffer);
            source.m_replayed += count;
            return static_cast<ssize_t>(count);
        }
        std::size_t count = std::fread(a_buffer, 1, a_size, source.m_pipe);
        return count == 0 && std::ferror(source.m_pipe) ? -1 : static_cast<ssize_t>(count);
    };
    m_pipe = m_file;
    m_file = fopencookie(this, "r", functions);
    if (!m_file)
        stopRun("Cannot read concrete system file " + m_path + "\n");
    return true;
}

void ListingSource::decodeNode(const char* a_node)
{
    m_image = readNodeImage(m_file, m_start, m_path, a_node);
    scanFromMemory(nodeListing(*m_image, a_node));
}

void ListingSource::scanFromMemory(const std::string& a_text)
{
    std::fclose(m_file);
    m_file = nullptr;
    m_text = a_text;
    // An empty listing still scans, as an empty file does.
    if (m_text.empty())
        m_file = std::fopen("/dev/null", "r");
    else
        m_file = fmemopen(&m_text[0], m_text.size(), "r");
    if (!m_file)
        stopRun("Cannot read concrete system file " + m_path + "\n");
}
