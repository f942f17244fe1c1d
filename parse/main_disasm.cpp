// velcor-disasm EXECUTABLE NODE: prints the listing that velcor reads from
// the node's code in the executable (the same decoder, layout and writer),
// so that it can be read, kept, compared, or given back to velcor.
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "misc/stop.h"
#include "node_code.h"

namespace {

int run(int argc, char** argv)
{
    if (argc != 3)
        stopRun("usage: velcor-disasm EXECUTABLE NODE\n");
    FILE* file = std::fopen(argv[1], "rb");
    if (!file)
        stopRun(std::string("Cannot open executable file ") + argv[1] + "\n");
    std::string listing;
    try {
        listing = nodeListing(file, {}, argv[1], argv[2]);
    } catch (...) {
        std::fclose(file);
        throw;
    }
    std::fclose(file);
    std::cout << listing;
    std::cout.flush();
    return std::cout ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    std::ios::sync_with_stdio(false);
    try {
        return run(argc, argv);
    } catch (const OrderlyStop& stop) {
        std::cerr << stop.message();
        return stop.status();
    }
}
