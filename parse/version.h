// The version of velcor and the commit it was built from (taken from git
// at build time; "unknown" outside a checkout).
#ifndef VELCOR_PARSE_VERSION_H
#define VELCOR_PARSE_VERSION_H

const char* velcorVersion();
const char* velcorCommit();

#endif
