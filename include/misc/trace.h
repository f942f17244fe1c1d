// Trace and progress lines: the running commentary of the driver, the
// translator and the readers. They go to standard output (a few, as they
// always have, to standard error) unless the run is quiet. Messages about
// failures, and warnings a user must act on, never come through here: they
// are written to standard error directly, or end the run (misc/stop.h).
#ifndef VELCOR_MISC_TRACE_H
#define VELCOR_MISC_TRACE_H

#include "misc/writer.h"

namespace misc {

namespace trace_detail {
// Where the two kinds of trace go: standard output and standard error, or a
// sink that drops everything when quiet. Set by setQuiet.
extern std::ostream* out_stream;
extern std::ostream* err_stream;
} // namespace trace_detail

// Standard output, or a sink that drops everything when quiet. A run writes
// hundreds of thousands of trace lines, so these are inline.
inline Writer traceOut()
{
    return Writer(*trace_detail::out_stream);
}
// Standard error, or the same sink when quiet.
inline Writer traceErr()
{
    return Writer(*trace_detail::err_stream);
}

void setQuiet(bool a_quiet);
bool isQuiet();

} // namespace misc

#endif
