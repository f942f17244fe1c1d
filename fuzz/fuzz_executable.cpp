// Fuzz target: arbitrary bytes as the executable, with a fixed valid listing
// that loads and stores through the node's structure, or as the listing as
// well (its node's code read from it) for the exact syntax.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "fuzz_support.h"

namespace {

const char* const LISTING =
    "10000480: <step>: lwz r9,0(r3)\n"
    "10000484: <step+4>: lwz r0,8(r3)\n"
    "10000488: <step+8>: addi r9,r9,1\n"
    "1000048c: <step+12>: subf r0,r0,r9\n"
    "10000490: <step+16>: cmpi 0,r0,0\n"
    "10000494: <step+20>: bc 4,1,<step+36>\n"
    "10000498: <step+24>: lwz r9,4(r3)\n"
    "1000049c: <step+28>: stw r0,12(r3)\n"
    "100004a0: <step+32>: stw r9,16(r3)\n"
    "100004a4: <step+36>: stw r9,0(r3)\n"
    "100004a8: <step+40>: bclr 20,0\n";

// The unit and node names of the seed executables (the tests' and the
// example's). An input is run with each pair whose unit name it contains,
// so that mutations of a seed get past the search for the node.
const std::pair<const char*, const char*> NAMES[] = {
    {"node.c", "step"}, {"u.c", "f"}, {"unit.c", "node"}, {"counter.c", "counter_step"}, {"counter.c", "step"}};

fuzz::Runner* runner = nullptr;
fuzz::MemoryFile* listing = nullptr;
fuzz::MemoryFile* executable = nullptr;

// One search for the whole input: a comparison at each offset costs a
// sanitizer check each, and took a fifth of the time of a run.
bool contains(const std::uint8_t* a_data, std::size_t a_size, const char* a_text)
{
    std::size_t length = std::strlen(a_text) + 1; // with its NUL, as the entries hold it
    return memmem(a_data, a_size, a_text, length) != nullptr;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    listing = new fuzz::MemoryFile("listing");
    listing->assign(LISTING, std::strlen(LISTING));
    executable = new fuzz::MemoryFile("exe");
    runner = new fuzz::Runner();
    return 0;
}

namespace {

// Inputs of even size run with the fixed listing in the CVC syntax; those of
// odd size are the listing too, so the node's code and the constants of the
// exact translation come from them, in the exact syntax.
void runWith(std::size_t a_size, const char* a_unit, const char* a_node)
{
    if (a_size % 2 == 0) {
        runner->run({"velcor", listing->path(), "-d", executable->path(), "-u", a_unit, "-n", a_node, "-cvc"});
        return;
    }
    runner->run({"velcor", executable->path(), "-d", executable->path(), "-u", a_unit, "-n", a_node, "-smt2",
                 "-unroll", std::to_string(a_size / 2 % 3 + 1)});
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    executable->assign(a_data, a_size);
    bool ran = false;
    for (const auto& names : NAMES) {
        if (!contains(a_data, a_size, names.first))
            continue;
        runWith(a_size, names.first, names.second);
        ran = true;
    }
    if (!ran)
        runWith(a_size, "node.c", "step");
    return 0;
}
