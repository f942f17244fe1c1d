// mkdwarf DESCRIPTION OUTPUT: writes the test executable that the text
// description asks for (format in dwarf_builder.h).
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "dwarf_builder.h"

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: mkdwarf DESCRIPTION OUTPUT\n";
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    if (!in) {
        std::cerr << "mkdwarf: cannot read " << argv[1] << '\n';
        return 1;
    }
    std::string description((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::string bytes;
    try {
        bytes = mkdwarf::build(description);
    } catch (const mkdwarf::Error& error) {
        std::cerr << "mkdwarf: " << argv[1] << ": " << error.what() << '\n';
        return 1;
    }
    std::ofstream out(argv[2], std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) {
        std::cerr << "mkdwarf: cannot write " << argv[2] << '\n';
        return 1;
    }
    return 0;
}
