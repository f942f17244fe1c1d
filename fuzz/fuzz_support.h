// What the fuzz targets share: a private working directory, the inputs
// written as files, and one complete run of the driver in-process.
//
// A run goes on a thread with a large stack, as in the program itself. Its
// standard output and standard error are dropped. The output file goes to a
// stream that drops the text too, but ends the run in an orderly way once
// more than a few megabytes were written: some short listings have an
// output exponential in their length by the nature of the format (a value
// printed as a tree), and that is not a fault.
#ifndef VELCOR_FUZZ_FUZZ_SUPPORT_H
#define VELCOR_FUZZ_FUZZ_SUPPORT_H

#include <pthread.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <streambuf>
#include <string>
#include <vector>

#include "common.h"
#include "expression.h"
#include "main_ppc.h"
#include "misc/stop.h"

namespace fuzz {

constexpr std::size_t OUTPUT_CAP = std::size_t(4) << 20;
constexpr std::size_t RUN_STACK_BYTES = std::size_t(512) << 20;
// Expression nodes alive at once: the sanitizers make each node several
// times larger, and the fuzzer's memory limit is two gigabytes.
constexpr std::size_t NODE_LIMIT = 1000000;

// Counts what is written and keeps none of it.
class DroppingBuffer : public std::streambuf {
public:
    explicit DroppingBuffer(std::size_t a_cap = 0) : m_cap(a_cap) {}
    void restart() { m_written = 0; }

protected:
    int_type overflow(int_type a_char) override
    {
        count(1);
        return traits_type::not_eof(a_char);
    }
    std::streamsize xsputn(const char*, std::streamsize a_count) override
    {
        count(static_cast<std::size_t>(a_count));
        return a_count;
    }

private:
    void count(std::size_t a_bytes)
    {
        m_written += a_bytes;
        // The stream rethrows this to the driver (its badbit exception is
        // on), which ends the run as for any other orderly stop.
        if (m_cap && m_written > m_cap)
            throw OrderlyStop("Output cap of the fuzz target reached\n", 1);
    }

    std::size_t m_cap;
    std::size_t m_written = 0;
};

// Makes a fresh directory under $TMPDIR (or /tmp) the working directory.
inline void enterWorkDirectory()
{
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/velcor-fuzz-XXXXXX";
    std::vector<char> path(pattern.begin(), pattern.end());
    path.push_back('\0');
    if (!mkdtemp(path.data()) || chdir(path.data()) != 0) {
        std::perror("velcor fuzz target: working directory");
        std::abort();
    }
}

inline void writeFile(const char* a_name, const void* a_data, std::size_t a_size)
{
    std::ofstream file(a_name, std::ios::binary | std::ios::trunc);
    file.write(static_cast<const char*>(a_data), static_cast<std::streamsize>(a_size));
    file.close();
    if (!file) {
        std::fprintf(stderr, "velcor fuzz target: cannot write %s\n", a_name);
        std::abort();
    }
}

class Runner {
public:
    Runner() : m_output(&m_output_buffer)
    {
        m_output.exceptions(std::ios::badbit);
        Expression::setNodeLimit(NODE_LIMIT);
        m_cout = std::cout.rdbuf(&m_dropped);
        m_cerr = std::cerr.rdbuf(&m_dropped);
    }
    ~Runner()
    {
        std::cout.rdbuf(m_cout);
        std::cerr.rdbuf(m_cerr);
    }
    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;

    // One run of the driver on the command line a_arguments (the program
    // name first); returns its exit status, which must be 0 or 1.
    int run(const std::vector<std::string>& a_arguments)
    {
        m_arguments.assign(a_arguments.begin(), a_arguments.end());
        m_argv.clear();
        for (std::string& argument : m_arguments)
            m_argv.push_back(&argument[0]);
        m_argv.push_back(nullptr);

        m_output_buffer.restart();
        m_output.clear();
        setOutStream(&m_output);
        pthread_attr_t attributes;
        pthread_t thread;
        pthread_attr_init(&attributes);
        if (pthread_attr_setstacksize(&attributes, RUN_STACK_BYTES) != 0 ||
            pthread_create(&thread, &attributes, &Runner::body, this) != 0) {
            std::fprintf(stderr, "velcor fuzz target: cannot start the run's thread\n");
            std::abort();
        }
        pthread_join(thread, nullptr);
        pthread_attr_destroy(&attributes);
        setOutStream(nullptr);
        std::cout.clear();
        std::cerr.clear();
        if (m_status != 0 && m_status != 1) {
            std::fprintf(stderr, "velcor fuzz target: exit status %d\n", m_status);
            std::abort();
        }
        return m_status;
    }

private:
    static void* body(void* a_self)
    {
        Runner* self = static_cast<Runner*>(a_self);
        self->m_status = runVelcor(static_cast<int>(self->m_argv.size()) - 1, self->m_argv.data());
        return nullptr;
    }

    DroppingBuffer m_dropped;
    std::streambuf* m_cout = nullptr;
    std::streambuf* m_cerr = nullptr;
    DroppingBuffer m_output_buffer{OUTPUT_CAP};
    std::ostream m_output;
    std::vector<std::string> m_arguments;
    std::vector<char*> m_argv;
    int m_status = 0;
};

} // namespace fuzz

#endif
