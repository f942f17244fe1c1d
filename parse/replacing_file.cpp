#include "replacing_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "misc/stop.h"

namespace fs = std::filesystem;

namespace {

const char* const CREATE = "Cannot create";
const char* const WRITE = "Cannot write";

// The temporary file of the run, for a signal that ends the process: the
// handler removes it, then lets the signal act as it would have.
char* volatile pending_temporary = nullptr;
const int ending_signals[] = {SIGHUP, SIGINT, SIGPIPE, SIGTERM};
constexpr std::size_t ENDING_SIGNAL_COUNT = sizeof ending_signals / sizeof ending_signals[0];
struct sigaction previous_actions[ENDING_SIGNAL_COUNT];

extern "C" void removeAndEnd(int a_signal)
{
    if (char* path = pending_temporary)
        ::unlink(path);
    for (std::size_t i = 0; i < ENDING_SIGNAL_COUNT; ++i)
        if (ending_signals[i] == a_signal)
            sigaction(a_signal, &previous_actions[i], nullptr);
    std::raise(a_signal);
}

void watchSignals(const std::string& a_temporary)
{
    pending_temporary = ::strdup(a_temporary.c_str());
    struct sigaction action {};
    action.sa_handler = removeAndEnd;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < ENDING_SIGNAL_COUNT; ++i) {
        sigaction(ending_signals[i], nullptr, &previous_actions[i]);
        // A signal the caller ignores (SIGPIPE, often) stays ignored.
        if (previous_actions[i].sa_handler != SIG_IGN)
            sigaction(ending_signals[i], &action, nullptr);
    }
}

void unwatchSignals()
{
    for (std::size_t i = 0; i < ENDING_SIGNAL_COUNT; ++i)
        sigaction(ending_signals[i], &previous_actions[i], nullptr);
    char* path = pending_temporary;
    pending_temporary = nullptr;
    std::free(path);
}

mode_t creationMask()
{
    mode_t mask = ::umask(0);
    ::umask(mask);
    return mask;
}

} // namespace

ReplacingFile::ReplacingFile(const char* a_path) : m_path(a_path)
{
    std::error_code error;
    fs::file_status status = fs::status(m_path, error);
    if (fs::is_directory(status))
        fail(CREATE, std::strerror(EISDIR));
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        int device = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        if (device < 0)
            fail(CREATE, std::strerror(errno));
        m_buffer.attach(device, true);
        return;
    }

    m_target = m_path;
    if (fs::exists(status)) {
        fs::path resolved = fs::canonical(m_path, error);
        if (!error)
            m_target = resolved.string();
    }
    fs::path target(m_target);
    fs::path directory = target.parent_path();
    std::string pattern = (directory / ("." + target.filename().string() + ".XXXXXX")).string();
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    m_descriptor = ::mkstemp(name.data());
    if (m_descriptor < 0)
        fail(CREATE, std::strerror(errno));
    m_temporary = name.data();
    watchSignals(m_temporary);
    // The same permissions as a_stdout0 rather than mkstemp's private ones.
    if (::fchmod(m_descriptor, 0664 & ~creationMask()) != 0)
        fail(CREATE, std::strerror(errno));
    m_buffer.attach(m_descriptor, false);
}

ReplacingFile::~ReplacingFile()
{
    discard();
}

void ReplacingFile::commit()
{
    // A write that failed on the way (a full disk) shows here.
    if (!m_buffer.close() || m_stream.fail())
        fail(WRITE, "");
    if (m_temporary.empty())
        return;
    if (::fsync(m_descriptor) != 0)
        fail(WRITE, std::strerror(errno));
    if (::rename(m_temporary.c_str(), m_target.c_str()) != 0)
        fail(WRITE, std::strerror(errno));
    m_temporary.clear();
    discard();
}

void ReplacingFile::fail(const char* a_what, const std::string& a_reason)
{
    std::string message = std::string(a_what) + " output file " + m_path;
    if (!a_reason.empty())
        message += " (" + a_reason + ")";
    discard();
    stopRun(message + "\n");
}

void ReplacingFile::discard()
{
    m_buffer.close();
    if (!m_temporary.empty()) {
        ::unlink(m_temporary.c_str());
        m_temporary.clear();
    }
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
        m_descriptor = -1;
        unwatchSignals();
    }
}
