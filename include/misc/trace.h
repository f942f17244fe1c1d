// Trace and progress lines: the running commentary of the driver, the
// translator and the readers. They go to standard output (a few, as they
// always have, to standard error) unless the run is quiet. Messages about
// failures, and warnings a user must act on, never come through here: they
// are written to standard error directly, or end the run (misc/stop.h).
#ifndef VELCOR_MISC_TRACE_H
#define VELCOR_MISC_TRACE_H

#include "misc/writer.h"

namespace misc {

// Standard output, or a sink that drops everything when quiet.
Writer traceOut();
// Standard error, or the same sink when quiet.
Writer traceErr();

void setQuiet(bool a_quiet);
bool isQuiet();

} // namespace misc

#endif
