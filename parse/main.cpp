// The program's entry point. The run goes on a thread with a large stack:
// expressions of long listings nest tens of thousands of levels deep, and
// printing, comparing and freeing them recurses that deep.
#include <malloc.h>
#include <pthread.h>

#include <cstdlib>
#include <iostream>

#include "main_ppc.h"

namespace {

constexpr size_t RUN_STACK_BYTES = size_t(1) << 30;

struct Arguments {
    int argc;
    char** argv;
    int status;
};

void* runThread(void* a_arguments)
{
    Arguments* arguments = static_cast<Arguments*>(a_arguments);
    arguments->status = runVelcor(arguments->argc, arguments->argv, AfterRun::LEAVE);
    return nullptr;
}

} // namespace

int main(int argc, char** argv)
{
    // One arena for the run's thread too: the main one grows in large steps,
    // where a thread's own arena grows a page range at a time.
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_TOP_PAD, 16 << 20);
    Arguments arguments{argc, argv, 1};
    pthread_attr_t attributes;
    pthread_t thread;
    pthread_attr_init(&attributes);
    bool started = pthread_attr_setstacksize(&attributes, RUN_STACK_BYTES) == 0 &&
                   pthread_create(&thread, &attributes, runThread, &arguments) == 0;
    if (started)
        pthread_join(thread, nullptr);
    else
        runThread(&arguments);
    pthread_attr_destroy(&attributes);
    // The run is over and its output written: the system takes back the
    // memory and the files whole, without the destructors of the
    // process-wide objects freeing them piece by piece.
    std::cout.flush();
    std::cerr.flush();
    std::_Exit(arguments.status);
}
