#include "misc/trace.h"

#include <iostream>

namespace misc {

namespace {

bool quiet = false;

// A stream without a buffer: every write fails at once and costs nothing.
std::ostream& sink()
{
    static std::ostream nothing(nullptr);
    return nothing;
}

} // namespace

std::ostream& traceOut()
{
    return quiet ? sink() : std::cout;
}

std::ostream& traceErr()
{
    return quiet ? sink() : std::cerr;
}

void setQuiet(bool a_quiet)
{
    quiet = a_quiet;
}

bool isQuiet()
{
    return quiet;
}

} // namespace misc
