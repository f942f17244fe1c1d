// The node's code read from an executable: the image's symbols and
// sections, the listing of a node, and every way the node can lack code.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../../tools/dwarf_builder.h"
#include "elf_image.h"
#include "executable_support.h"
#include "node_code.h"
#include "ppc_decoder.h"

namespace {

// Code at 0x10000000: step (4 words) calling helper, helper (2 words), and
// a word outside every function.
const std::string CODE = "section .text address 0x10000000 flags 6\n"
                         "  raw 81230008 4800000d 48000010 4e800020\n" // lwz; bl +12; b +16; blr
                         "  raw 38600001 4e800020\n"                   // helper: li r3,1; blr
                         "  raw 60000000\n"                            // no function
                         "symbol step 0x10000000 16\n"
                         "symbol helper 0x10000010 8 local\n";

std::unique_ptr<ElfImage> imageOf(const std::string& a_description, std::string& a_problem)
{
    std::string bytes = mkdwarf::build(a_description);
    return ElfImage::fromBytes(std::vector<unsigned char>(bytes.begin(), bytes.end()), "test.elf", a_problem);
}

// The listing of a_node, or the message of the stop that ends its reading.
std::string listingOf(const std::string& a_description, const std::string& a_node = "step")
{
    std::string problem;
    std::unique_ptr<ElfImage> image = imageOf(a_description, problem);
    if (!image)
        return "no image: " + problem;
    std::string listing;
    std::string message = stopMessage([&] { listing = nodeListing(*image, a_node); });
    return message.empty() ? listing : message;
}

std::string cannotRead(const std::string& a_reason, const std::string& a_node = "step")
{
    return "Cannot read the code of node " + a_node + " from test.elf: " + a_reason + "\n";
}

} // namespace

TEST(NodeCodeTest, ListingOfTheNode)
{
    EXPECT_EQ(listingOf(CODE), "10000000: <step>: lwz r9,8(r3)\n"
                               "10000004: <step+4>: bl <helper>\n"
                               "10000008: <step+8>: b <step+24>\n"
                               "1000000c: <step+12>: bclr 20,0\n");
    EXPECT_EQ(listingOf(CODE, "helper"), "10000010: <helper>: addi r3,r0,1\n"
                                         "10000014: <helper+4>: bclr 20,0\n");
    // Targets inside another function, and inside none.
    EXPECT_EQ(listingOf("section .text address 0x10000000 flags 6\n"
                        "  raw 48000014 4800001c 4e800020 00000000 00000000 00000000 00000000 00000000\n"
                        "symbol step 0x10000000 12\n"
                        "symbol other 0x10000010 8\n"),
              "10000000: <step>: b <other+4>\n"
              "10000004: <step+4>: b <step+32>\n"
              "10000008: <step+8>: bclr 20,0\n");
}

TEST(NodeCodeTest, TheNodesSymbol)
{
    // A global symbol is preferred to a local one of the same name.
    EXPECT_EQ(listingOf("section .text address 0x100 flags 6\n"
                        "  raw 60000000 4e800020\n"
                        "symbol step 0x100 4 local\n"
                        "symbol step 0x104 4\n"),
              "00000104: <step>: bclr 20,0\n");
    EXPECT_EQ(listingOf("section .text address 0x100 flags 6\n"
                        "  raw 60000000 4e800020\n"
                        "symbol step 0x100 4 local\n"
                        "symbol step 0x104 4 local\n"),
              cannotRead("several local function symbols of that name"));
    // Only a defined function counts.
    EXPECT_EQ(listingOf(CODE + "symbol data 0x10000000 4 type 1\n", "data"),
              cannotRead("no function symbol of that name", "data"));
    EXPECT_EQ(listingOf(CODE + "symbol imported 0 0 section 0\n", "imported"),
              cannotRead("no function symbol of that name", "imported"));
    EXPECT_EQ(listingOf(CODE, "absent"), cannotRead("no function symbol of that name", "absent"));
    EXPECT_EQ(listingOf("section .debug\n"), cannotRead("no function symbol of that name"));
}

TEST(NodeCodeTest, SymbolsWithoutCodeToRead)
{
    const std::string text = "section .text address 0x100 flags 6\n  raw 60000000 4e800020\n";
    EXPECT_EQ(listingOf(text + "symbol step 0x100 0\n"), cannotRead("its symbol has size 0"));
    EXPECT_EQ(listingOf(text + "symbol step 0x102 4\n"),
              cannotRead("its symbol does not cover whole aligned instruction words"));
    EXPECT_EQ(listingOf(text + "symbol step 0x100 6\n"),
              cannotRead("its symbol does not cover whole aligned instruction words"));
    EXPECT_EQ(listingOf(text + "symbol step 0x104 8\n"),
              cannotRead("its symbol lies outside the contents of its section"));
    EXPECT_EQ(listingOf(text + "symbol step 0xfc 8\n"),
              cannotRead("its symbol lies outside the contents of its section"));
    EXPECT_EQ(listingOf(text + "symbol step 0x100 8 section 9\n"),
              cannotRead("its symbol lies outside the contents of its section"));
    // A section without contents in the file (SHT_NOBITS).
    EXPECT_EQ(listingOf("section .bss address 0x100 type 8 size 8 flags 3\n"
                        "symbol step 0x100 8\n"),
              cannotRead("its symbol lies outside the contents of its section"));
    // A name that the listing could not carry.
    EXPECT_EQ(listingOf(text + "symbol sync 0x100 8\n", "sync"),
              cannotRead("its name cannot be written in a listing", "sync"));
}

TEST(NodeCodeTest, FilesThatAreNoPowerPcExecutable)
{
    const std::string not_powerpc = "not a 32-bit big-endian PowerPC executable";
    EXPECT_EQ(listingOf(CODE + "elf class 2\n"), "no image: " + not_powerpc);
    EXPECT_EQ(listingOf(CODE + "elf data 1\n"), "no image: " + not_powerpc);
    EXPECT_EQ(listingOf(CODE + "elf machine 3\n"), "no image: " + not_powerpc);
    EXPECT_EQ(listingOf(CODE + "elf magic 7f 45 4c 00\n"), "no image: " + not_powerpc);
    EXPECT_EQ(listingOf(CODE + "elf truncate 10\n"), "no image: " + not_powerpc);
    EXPECT_EQ(listingOf(CODE + "elf type 1\n"), "no image: not an executable (link the object first)");
    const std::string past_the_end = "no image: truncated or corrupt executable (a part lies past the end of the file)";
    // The section table cut, or a section whose contents lie past the end.
    EXPECT_EQ(listingOf(CODE + "elf truncate 200\n"), past_the_end);
    EXPECT_EQ(listingOf("section .text address 0x100 flags 6 offset 0x10000 size 8\n"
                        "symbol step 0x100 8\n"),
              past_the_end);
}

TEST(NodeCodeTest, ReadOnlyBytes)
{
    std::string problem;
    std::unique_ptr<ElfImage> image = imageOf("section .rodata address 0x2000 flags 2\n"
                                              "  raw 00000001 00000002\n"
                                              "section .data address 0x3000 flags 3\n"
                                              "  raw 00000003\n"
                                              "section .comment\n"
                                              "  raw 00000004\n",
                                              problem);
    ASSERT_TRUE(image) << problem;
    ElfImage::Bytes constant = image->readOnlyBytes(0x2004, 4);
    ASSERT_NE(constant.m_data, nullptr);
    EXPECT_EQ(bigEndianWord(constant.m_data), 2u);
    EXPECT_EQ(image->readOnlyBytes(0x2006, 4).m_data, nullptr); // past the section's end
    EXPECT_EQ(image->readOnlyBytes(0x3000, 4).m_data, nullptr); // writable
    EXPECT_EQ(image->readOnlyBytes(0, 4).m_data, nullptr);      // not loaded
}
