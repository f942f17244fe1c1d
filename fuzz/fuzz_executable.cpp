// Fuzz target: arbitrary bytes as the executable, with a fixed valid listing
// that loads and stores through the node's structure.
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

bool contains(const std::uint8_t* a_data, std::size_t a_size, const char* a_text)
{
    std::size_t length = std::strlen(a_text) + 1; // with its NUL, as the entries hold it
    for (std::size_t i = 0; i + length <= a_size; ++i)
        if (std::memcmp(a_data + i, a_text, length) == 0)
            return true;
    return false;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::enterWorkDirectory();
    fuzz::writeFile("listing.s", LISTING, std::strlen(LISTING));
    runner = new fuzz::Runner();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    fuzz::writeFile("exe", a_data, a_size);
    bool ran = false;
    for (const auto& names : NAMES) {
        if (!contains(a_data, a_size, names.first))
            continue;
        runner->run({"velcor", "listing.s", "-d", "exe", "-u", names.first, "-n", names.second, "-cvc"});
        ran = true;
    }
    if (!ran)
        runner->run({"velcor", "listing.s", "-d", "exe", "-u", "node.c", "-n", "step", "-cvc"});
    return 0;
}
