// What the fuzz targets share: the inputs as files in memory, and complete
// runs of the driver in-process, each on the same large-stack thread.
//
// A campaign runs millions of inputs, so nothing of a run touches the disk
// or the thread list: the inputs are memory files, the output goes to a
// stream that counts and drops it, and one thread made at start runs every
// input. Standard output and standard error are dropped as well.
//
// Bounds on one input, under the fuzzer's memory limit: the output stream
// ends the run in an orderly way past a few megabytes (some short listings
// have an output exponential in their length by the nature of the classic
// formats: a value printed as a tree), expression nodes and exact-translation
// instances are capped lower than the program's own capacities, and the run
// thread gives back the stack pages a deep run touched.
#ifndef VELCOR_FUZZ_FUZZ_SUPPORT_H
#define VELCOR_FUZZ_FUZZ_SUPPORT_H

#include <condition_variable>
#include <cstddef>
#include <iostream>
#include <mutex>
#include <streambuf>
#include <string>
#include <vector>

#include <pthread.h>

namespace fuzz {

constexpr std::size_t OUTPUT_CAP = std::size_t(4) << 20;
// As deep as the program's own run thread may need for a listing of the
// fuzzers' maximum length (the sanitizers make frames larger).
constexpr std::size_t RUN_STACK_BYTES = std::size_t(512) << 20;
// Stack kept mapped between runs; a run that went deeper gives the rest back.
constexpr std::size_t KEPT_STACK_BYTES = std::size_t(8) << 20;
// Expression nodes alive at once: the sanitizers make each node several
// times larger than the program's, and a run must stay well under the
// fuzzer's memory limit.
constexpr std::size_t NODE_LIMIT = 400000;
// Instruction instances of the exact translation once loops are unrolled.
constexpr std::size_t INSTANCE_LIMIT = 4000;

// Counts what is written and keeps none of it; past a_cap (0: none) the
// write throws, which the driver takes as an orderly stop.
class DroppingBuffer : public std::streambuf {
public:
    explicit DroppingBuffer(std::size_t a_cap = 0) : m_cap(a_cap) {}
    void restart() { m_written = 0; }

protected:
    int_type overflow(int_type a_char) override;
    std::streamsize xsputn(const char* a_text, std::streamsize a_count) override;

private:
    void count(std::size_t a_bytes);

    std::size_t m_cap;
    std::size_t m_written = 0;
};

// A file held in memory, under a name that any open() of the program
// accepts (/proc/self/fd/N).
class MemoryFile {
public:
    explicit MemoryFile(const char* a_label);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    // Replaces the contents.
    void assign(const void* a_data, std::size_t a_size);
    const char* path() const { return m_path.c_str(); }

private:
    int m_fd = -1;
    std::string m_path;
};

class Runner {
public:
    Runner();
    ~Runner();
    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;

    // One run of the driver on the command line a_arguments (the program
    // name first); returns its exit status, which must be 0 or 1.
    int run(const std::vector<std::string>& a_arguments);

private:
    static void* threadBody(void* a_self);
    void serve();
    void releaseDeepStack();

    DroppingBuffer m_dropped;
    std::streambuf* m_cout = nullptr;
    std::streambuf* m_cerr = nullptr;
    DroppingBuffer m_output_buffer{OUTPUT_CAP};
    std::ostream m_output;
    std::vector<std::string> m_arguments;
    std::vector<char*> m_argv;
    int m_status = 0;

    // The run thread and its hand-over: a run is pending from run() until
    // the thread has finished it.
    void* m_stack = nullptr;
    pthread_t m_thread{};
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_pending = false;
    bool m_stopping = false;
};

} // namespace fuzz

#endif
