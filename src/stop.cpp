#include "misc/stop.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>

void stopRun(const std::string& a_message, int a_status)
{
    throw OrderlyStop(a_message, a_status);
}

void stopCapacity(const std::string& a_what)
{
    stopRun("Capacity exhausted: " + a_what + "\n");
}

// The source is named from the project's top folder ("src/expression.cpp"),
// whatever path the build gave the compiler.
static const char* projectRelative(const char* a_file)
{
    static const char* const folders[] = {"/src_ppc/", "/src/", "/parse/", "/include/", "/tools/"};
    const char* best = nullptr;
    for (const char* folder : folders) {
        const char* at = std::strstr(a_file, folder);
        if (at && (!best || at > best))
            best = at;
    }
    return best ? best + 1 : a_file;
}

void internalError(const char* a_condition, const char* a_file, const char* a_function)
{
    std::cout.flush();
    std::fprintf(stderr, "velcor: internal error: assertion \"%s\" failed in %s, %s\n", a_condition,
                 projectRelative(a_file), a_function);
    std::abort();
}
