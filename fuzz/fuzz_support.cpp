#include "fuzz_support.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "common.h"
#include "exact_translator.h"
#include "expression.h"
#include "main_ppc.h"
#include "misc/stop.h"

// The sanitizers' defaults for the targets. A quarantine of freed memory
// smaller than the default 256 MB keeps a target's memory well under the
// fuzzer's limit; shorter allocation stacks make each allocation cheaper
// and still show where a block came from.
extern "C" const char* __asan_default_options()
{
    return "quarantine_size_mb=32:malloc_context_size=12";
}

namespace fuzz {

namespace {

[[noreturn]] void fail(const char* a_what)
{
    std::perror(a_what);
    std::abort();
}

} // namespace

DroppingBuffer::int_type DroppingBuffer::overflow(int_type a_char)
{
    count(1);
    return traits_type::not_eof(a_char);
}

std::streamsize DroppingBuffer::xsputn(const char*, std::streamsize a_count)
{
    count(static_cast<std::size_t>(a_count));
    return a_count;
}

void DroppingBuffer::count(std::size_t a_bytes)
{
    m_written += a_bytes;
    // The stream rethrows this to the driver (its badbit exception is on),
    // which ends the run as for any other orderly stop.
    if (m_cap && m_written > m_cap)
        throw OrderlyStop("Output cap of the fuzz target reached\n", 1);
}

MemoryFile::MemoryFile(const char* a_label)
{
    m_fd = memfd_create(a_label, MFD_CLOEXEC);
    if (m_fd < 0)
        fail("velcor fuzz target: memory file");
    m_path = "/proc/self/fd/" + std::to_string(m_fd);
}

MemoryFile::~MemoryFile()
{
    close(m_fd);
}

void MemoryFile::assign(const void* a_data, std::size_t a_size)
{
    const char* data = static_cast<const char*>(a_data);
    std::size_t done = 0;
    while (done < a_size) {
        ssize_t written = pwrite(m_fd, data + done, a_size - done, static_cast<off_t>(done));
        if (written <= 0)
            fail("velcor fuzz target: memory file");
        done += static_cast<std::size_t>(written);
    }
    if (ftruncate(m_fd, static_cast<off_t>(a_size)) != 0)
        fail("velcor fuzz target: memory file");
}

Runner::Runner() : m_output(&m_output_buffer)
{
    m_output.exceptions(std::ios::badbit);
    Expression::setNodeLimit(NODE_LIMIT);
    ExactTranslator::setInstanceLimit(INSTANCE_LIMIT);
    m_cout = std::cout.rdbuf(&m_dropped);
    m_cerr = std::cerr.rdbuf(&m_dropped);

    // The stack is our own mapping, so that the pages a deep run touched
    // can be given back while the thread waits.
    m_stack = mmap(nullptr, RUN_STACK_BYTES, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE,
                   -1, 0);
    if (m_stack == MAP_FAILED)
        fail("velcor fuzz target: run stack");
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    if (pthread_attr_setstack(&attributes, m_stack, RUN_STACK_BYTES) != 0 ||
        pthread_create(&m_thread, &attributes, &Runner::threadBody, this) != 0)
        fail("velcor fuzz target: run thread");
    pthread_attr_destroy(&attributes);
}

Runner::~Runner()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    pthread_join(m_thread, nullptr);
    munmap(m_stack, RUN_STACK_BYTES);
    std::cout.rdbuf(m_cout);
    std::cerr.rdbuf(m_cerr);
}

int Runner::run(const std::vector<std::string>& a_arguments)
{
    m_arguments.assign(a_arguments.begin(), a_arguments.end());
    m_argv.clear();
    for (std::string& argument : m_arguments)
        m_argv.push_back(&argument[0]);
    m_argv.push_back(nullptr);

    m_output_buffer.restart();
    m_output.clear();
    setOutStream(&m_output);
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_pending = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_pending; });
    }
    releaseDeepStack();
    setOutStream(nullptr);
    std::cout.clear();
    std::cerr.clear();
    if (m_status != 0 && m_status != 1) {
        std::fprintf(stderr, "velcor fuzz target: exit status %d\n", m_status);
        std::abort();
    }
    return m_status;
}

void* Runner::threadBody(void* a_self)
{
    static_cast<Runner*>(a_self)->serve();
    return nullptr;
}

void Runner::serve()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_pending || m_stopping; });
        if (m_stopping)
            return;
        lock.unlock();
        m_status = runVelcor(static_cast<int>(m_argv.size()) - 1, m_argv.data());
        lock.lock();
        m_pending = false;
        m_changed.notify_all();
    }
}

// The thread waits near the top of its stack (it grows down): everything
// below the kept part is unused until the next run.
void Runner::releaseDeepStack()
{
    if (madvise(m_stack, RUN_STACK_BYTES - KEPT_STACK_BYTES, MADV_DONTNEED) != 0)
        fail("velcor fuzz target: run stack");
}

} // namespace fuzz
