// An output file that only a complete run replaces. The text goes to a
// temporary file in the same directory, renamed over the file at the end,
// so a failed or interrupted run leaves an existing file as it was and
// removes the temporary one. A symbolic link is followed to its file. A
// device or a pipe (/dev/null) cannot be replaced and is written directly.
#ifndef VELCOR_PARSE_REPLACING_FILE_H
#define VELCOR_PARSE_REPLACING_FILE_H

#include <ostream>
#include <string>

#include "misc/descriptor_buffer.h"

class ReplacingFile {
public:
    // Creates the temporary file (mode 0664 before the creation mask); stops
    // the run with "Cannot create output file PATH (reason)" when it cannot.
    explicit ReplacingFile(const char* a_path);
    // Removes the temporary file unless the text was put in place.
    ~ReplacingFile();
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;

    std::ostream& stream() { return m_stream; }

    // Puts the text in place of the file; stops the run with "Cannot write
    // output file PATH" when it cannot (the temporary file removed).
    void commit();

private:
    // Stops the run with "a_what output file PATH (a_reason)".
    [[noreturn]] void fail(const char* a_what, const std::string& a_reason);
    void discard();

    std::string m_path;      // as given, for messages
    std::string m_temporary; // empty when the file is written directly
    std::string m_target;    // what the temporary file replaces
    int m_descriptor = -1;   // of the temporary file, kept for fsync
    // The same buffer as the output file's (and the same writers' fast
    // path into it).
    misc::DescriptorBuffer m_buffer;
    std::ostream m_stream{&m_buffer};
};

#endif
