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

Writer traceOut()
{
    return Writer(quiet ? sink() : std::cout);
}

Writer traceErr()
{
    return Writer(quiet ? sink() : std::cerr);
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
