// The only source that sees the generated header, so a new commit rebuilds
// this file alone.
#include "version.h"

#include "version_info.h"

const char* velcorVersion()
{
    return VELCOR_VERSION;
}

const char* velcorCommit()
{
    return VELCOR_COMMIT;
}
