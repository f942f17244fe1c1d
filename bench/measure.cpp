// measure STDOUT STDERR COMMAND [ARGUMENTS...]
//
// Runs COMMAND with its standard output and standard error sent to the two
// files, waits for it, and prints "SECONDS PEAK_KB STATUS CPU_SECONDS": the
// wall time, the peak resident memory of the child, its exit status (128 +
// signal number when a signal ended it) and the processor time it used, user
// and system together (what a loaded machine changes least). GNU time is not
// always installed.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

int main(int argc, char** argv)
{
    if (argc < 4) {
        std::fprintf(stderr, "usage: measure STDOUT STDERR COMMAND [ARGUMENTS...]\n");
        return 2;
    }
    auto start = std::chrono::steady_clock::now();
    pid_t child = fork();
    if (child < 0) {
        std::perror("measure: fork");
        return 2;
    }
    if (child == 0) {
        int out = open(argv[1], O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int err = open(argv[2], O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (out < 0 || err < 0 || dup2(out, 1) < 0 || dup2(err, 2) < 0)
            _exit(127);
        close(out);
        close(err);
        execvp(argv[3], argv + 3);
        _exit(127);
    }
    int status = 0;
    struct rusage usage {};
    if (wait4(child, &status, 0, &usage) < 0) {
        std::perror("measure: wait4");
        return 2;
    }
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    double cpu = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                 static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    std::printf("%.3f %ld %d %.3f\n", seconds, usage.ru_maxrss, code, cpu);
    return 0;
}
