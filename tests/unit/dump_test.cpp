// The symbol dump file: it must exist, and it names no address.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "dump.h"
#include "executable_support.h"

TEST(DumpTest, AnEmptyDumpFileNamesNothingAndAMissingOneStopsTheRun)
{
    const std::string path = ::testing::TempDir() + "velcor_empty_dump";
    std::ofstream(path).close();
    Dump dump(path.c_str());
    std::remove(path.c_str());
    EXPECT_EQ(dump.getName("100004a0"), nullptr);
    EXPECT_EQ(dump.getName(""), nullptr);
    EXPECT_EQ(stopMessage([] { Dump missing("no/such/dump"); }), "Cannot open dump file no/such/dump\n");
}
