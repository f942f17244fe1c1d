// Fuzz target: arbitrary bytes as the listing, with a fixed valid executable
// whose node takes a structure of plain, embedded and pointed-to members, in
// each output syntax.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "../tools/dwarf_builder.h"
#include "fuzz_support.h"

namespace {

const char* const EXECUTABLE =
    "unit node.c\n"
    "  typedef S struct s\n"
    "  struct s size 20\n"
    "    member a int at 0\n"
    "    member b int at 4\n"
    "    member in struct inner at 8\n"
    "    member p pointer T at 16\n"
    "  end\n"
    "  struct inner size 8\n"
    "    member x int at 0\n"
    "    member y int at 4\n"
    "  end\n"
    "  typedef T struct t\n"
    "  struct t size 4\n"
    "    member z int at 0\n"
    "  end\n"
    "  subroutine step\n"
    "    parameter s pointer S\n"
    "  end\n"
    "end\n";

fuzz::Runner* runner = nullptr;
fuzz::MemoryFile* listing = nullptr;
fuzz::MemoryFile* executable = nullptr;

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    std::string bytes = mkdwarf::build(EXECUTABLE);
    executable = new fuzz::MemoryFile("exe");
    executable->assign(bytes.data(), bytes.size());
    listing = new fuzz::MemoryFile("listing");
    runner = new fuzz::Runner();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    listing->assign(a_data, a_size);
    // The syntax follows from the size, so every input is read in one of
    // the four and the corpus covers all of them; the exact one follows
    // loops one to three times.
    static const char* const formats[] = {"-cvc", "-ics", "-tlv", "-smt2"};
    std::vector<std::string> line = {"velcor", listing->path(), "-d", executable->path(), "-u", "node.c", "-n",
                                     "step", formats[a_size % 4]};
    if (a_size % 4 == 3)
        line.insert(line.end(), {"-unroll", std::to_string(a_size / 4 % 3 + 1)});
    runner->run(line);
    return 0;
}
