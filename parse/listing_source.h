// The stream the listing scanner reads: a listing file as it is, or, when
// the LISTING argument is an executable (it starts with the ELF magic), the
// listing decoded from the node's code. Nothing after the scanner knows
// which of the two it read.
#ifndef VELCOR_PARSE_LISTING_SOURCE_H
#define VELCOR_PARSE_LISTING_SOURCE_H

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

class ElfImage;

class ListingSource {
public:
    ListingSource();
    ~ListingSource();
    ListingSource(const ListingSource&) = delete;
    ListingSource& operator=(const ListingSource&) = delete;

    // Opens a_path and looks at its first bytes; false when it cannot be
    // opened.
    bool open(const char* a_path);
    bool isExecutable() const { return m_executable; }
    // Decodes node a_node of the executable into the listing to scan; stops
    // the run with a message when the node has no code to read.
    void decodeNode(const char* a_node);
    // The stream to scan.
    FILE* stream() const { return m_file; }
    // The executable the node was decoded from, or null for a listing file.
    const ElfImage* image() const { return m_image.get(); }

private:
    void scanFromMemory(const std::string& a_text);

    std::string m_path;
    FILE* m_file = nullptr;
    bool m_executable = false;
    std::unique_ptr<ElfImage> m_image;
    // The first bytes, read to tell an executable from a listing.
    std::vector<unsigned char> m_start;
    // A decoded listing, held for as long as the scanner reads it.
    std::string m_text;
    // A listing on a stream that cannot go back to its start: the pipe, and
    // how much of m_start has been read again.
    FILE* m_pipe = nullptr;
    std::size_t m_replayed = 0;
};

#endif
