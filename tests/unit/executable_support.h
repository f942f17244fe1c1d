// Helpers for the tests of the debug-information reader: executables made
// by the test-executable builder, read in memory under the name "test.elf".
#ifndef VELCOR_TESTS_EXECUTABLE_SUPPORT_H
#define VELCOR_TESTS_EXECUTABLE_SUPPORT_H

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <string>

#include "../../tools/dwarf_builder.h"
#include "dwarf_debug.h"
#include "misc/stop.h"
#include "test_support.h"

// Reads a_bytes as the executable "test.elf"; the trace lines are dropped.
inline void readExecutable(dwarf_debug& a_reader, const std::string& a_bytes)
{
    std::istringstream file(a_bytes);
    StreamCapture trace(std::cout);
    a_reader.readDwarf(file, "test.elf");
}

// The message of the orderly stop that a_action ends with, "" when it runs
// to its end. Every stop of the reader has status 1.
template <class Action>
std::string stopMessage(Action a_action)
{
    try {
        a_action();
    } catch (const OrderlyStop& stop) {
        EXPECT_EQ(stop.status(), 1);
        return stop.message();
    }
    return "";
}

#endif
