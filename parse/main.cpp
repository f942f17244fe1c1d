// The program's entry point. The run goes on a thread with a large stack:
// expressions of long listings nest tens of thousands of levels deep, and
// printing, comparing and freeing them recurses that deep.
#include <pthread.h>

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
    arguments->status = runVelcor(arguments->argc, arguments->argv);
    return nullptr;
}

} // namespace

int main(int argc, char** argv)
{
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
    return arguments.status;
}
