#include "listing_source.h"

#include "elf_image.h"
#include "misc/stop.h"
#include "node_code.h"

ListingSource::~ListingSource()
{
    if (m_file)
        std::fclose(m_file);
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
    // A pipe cannot go back: what was read and the rest are scanned from
    // memory.
    std::string text(m_start.begin(), m_start.end());
    char buffer[65536];
    std::size_t read;
    while ((read = std::fread(buffer, 1, sizeof buffer, m_file)) > 0)
        text.append(buffer, read);
    if (std::ferror(m_file))
        return true;
    scanFromMemory(text);
    return true;
}

void ListingSource::decodeNode(const char* a_node)
{
    scanFromMemory(nodeListing(m_file, m_start, m_path, a_node));
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
