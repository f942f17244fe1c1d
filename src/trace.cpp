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

std::ostream* trace_detail::out_stream = &std::cout;
std::ostream* trace_detail::err_stream = &std::cerr;

void setQuiet(bool a_quiet)
{
    quiet = a_quiet;
    trace_detail::out_stream = quiet ? &sink() : &std::cout;
    trace_detail::err_stream = quiet ? &sink() : &std::cerr;
}

bool isQuiet()
{
    return quiet;
}

} // namespace misc
