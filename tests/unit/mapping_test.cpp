// The mapping of the node's parameter structure onto memory names of both
// sides, on executables made by the builder; and the reader's robustness
// against every small corruption of such an executable. The printed mapping
// of ordinary structures is checked by the end-to-end cases.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "executable_support.h"
#include "swap.h"

namespace {

using Pairs = std::map<std::string, std::string>;

// A unit whose node "f" takes a pointer to the typedef S of "struct s" (or
// a_parameter), with the given members and further declarations.
std::string nodeWith(const std::string& a_members, const std::string& a_more = "",
                     const std::string& a_parameter = "pointer S")
{
    return "unit u.c\n  typedef S struct s\n  struct s\n" + a_members + "  end\n" + a_more +
           "  subroutine f\n    parameter state " + a_parameter + "\n  end\nend\n";
}

// Two ints, an embedded structure and a pointer to a typedef'd structure.
const std::string example_members = "    member a int at 0\n    member b int at 4\n"
                                    "    member in struct inner at 8\n    member p pointer T at 16\n";
const std::string example_types = "  struct inner size 8\n    member x int at 0\n    member y int at 4\n  end\n"
                                  "  typedef T struct t\n  struct t size 4\n    member z int at 0\n  end\n";

class MappingTest : public ::testing::Test {
protected:
    void read(const std::string& a_description) { readExecutable(m_reader, mkdwarf::build(a_description)); }
    void map()
    {
        StreamCapture trace(std::cout);
        m_reader.outMembers("_C_", "f", "u.c");
    }
    std::string mapStop(const std::string& a_description)
    {
        return stopMessage([&] {
            read(a_description);
            map();
        });
    }
    Pairs pairs() const
    {
        Pairs all;
        for (const auto& pair : m_reader.getMembers())
            all[pair.first] = pair.second.m_target;
        return all;
    }
    std::string printed()
    {
        OutputCapture output;
        m_reader.print();
        m_reader.printStructAsserts();
        return output.text();
    }

    RunFixture m_run;
    dwarf_debug m_reader;
};

} // namespace

// The offsets of ordinary members are checked through the type table, in
// type_table_test.cpp.
TEST_F(MappingTest, OffsetsAreKeptByStructureAndMemberAndBothNamesAreDeclared)
{
    const std::string long_member(5000, 'm');
    read(nodeWith(example_members + "    member " + long_member + " int at 20\n", example_types));
    map();
    EXPECT_EQ(m_reader.getOffset(("S#" + long_member).c_str()), 20);
    EXPECT_EQ(m_reader.getTypeFieldOffsets().size(), 8u);
    {
        // The typedef's name stands for the structure it names.
        StreamCapture trace(std::cout);
        EXPECT_EQ(m_reader.getOffset("s#a"), -1);
        EXPECT_EQ(trace.text(), "NOT FOUND!! -s#a=\n");
    }
    ASSERT_EQ(m_reader.getMembers().size(), 7u);
    for (const auto& pair : m_reader.getMembers()) {
        EXPECT_TRUE(m_run.symbols().isIn(pair.first.c_str())) << pair.first;
        EXPECT_TRUE(m_run.symbols().isIn(pair.second.m_target.c_str())) << pair.second.m_target;
    }
    EXPECT_EQ(m_run.symbols().table().size(), 15u); // with "true"
}

TEST_F(MappingTest, NestedStructuresFlattenPointersNestAndUnionsAndArraysGiveNoPair)
{
    read(nodeWith("    member a int at 0\n"
                  "    member p pointer T at 4\n"
                  "    member in struct inner at 8\n"
                  "    member u union V at 40\n    member list array A at 44\n"
                  "    member c char at 48\n    member ip pointer int at 52\n",
                  "  struct inner\n    member x int at 4\n    member deep struct deepest at 8\n  end\n"
                  "  struct deepest\n    member d int at 12\n  end\n"
                  "  typedef T struct t\n"
                  "  struct t\n    member z int at 0\n    member q pointer U at 8\n"
                  "    member in struct inner at 16\n  end\n"
                  "  typedef U struct u\n  struct u\n    member w int at 4\n  end\n"
                  "  union V\n    member i int at 0\n    member f float at 0\n  end\n"
                  "  array A 10 int\n"));
    map();
    // Fundamental types, also behind modifiers, are cells themselves.
    EXPECT_EQ(pairs(), (Pairs{{"MEM[0+C_]", "MEM[0+r3]"},
                              {"MEM[4+C_]", "MEM[4+r3]"},
                              {"MEM[12+C_]", "MEM[12+r3]"},
                              {"MEM[28+C_]", "MEM[28+r3]"},
                              {"MEM[48+C_]", "MEM[48+r3]"},
                              {"MEM[52+C_]", "MEM[52+r3]"},
                              {"MEM[0+MEM[4+C_]]", "MEM[0+MEM[4+r3]]"},
                              {"MEM[8+MEM[4+C_]]", "MEM[8+MEM[4+r3]]"},
                              {"MEM[4+MEM[8+MEM[4+C_]]]", "MEM[4+MEM[8+MEM[4+r3]]]"},
                              {"MEM[20+MEM[4+C_]]", "MEM[20+MEM[4+r3]]"},
                              {"MEM[36+MEM[4+C_]]", "MEM[36+MEM[4+r3]]"}}));
}

TEST_F(MappingTest, OnlyATypeBeingExpandedIsNotExpandedAgain)
{
    // A list node pointing to itself, directly and through its typedef.
    read("unit u.c\n  typedef S struct node\n"
         "  struct node\n    member value int at 0\n    member next pointer struct node at 4\n"
         "    member alias pointer S at 8\n  end\n"
         "  subroutine f\n    parameter state pointer S\n  end\nend\n");
    map();
    EXPECT_EQ(pairs(),
              (Pairs{{"MEM[0+C_]", "MEM[0+r3]"}, {"MEM[4+C_]", "MEM[4+r3]"}, {"MEM[8+C_]", "MEM[8+r3]"}}));

    // Clearing forgets the file and the mapping of the previous run.
    m_reader.clear();
    EXPECT_EQ(m_reader.getDwarfSize(), 0);
    EXPECT_TRUE(m_reader.getMembers().empty() && m_reader.getTypeFieldOffsets().empty());

    // Two structures pointing at each other.
    read(nodeWith("    member there pointer struct b at 0\n",
                  "  struct b\n    member x int at 0\n    member back pointer struct s at 4\n  end\n"));
    map();
    EXPECT_EQ(pairs(), (Pairs{{"MEM[0+C_]", "MEM[0+r3]"},
                              {"MEM[0+MEM[0+C_]]", "MEM[0+MEM[0+r3]]"},
                              {"MEM[4+MEM[0+C_]]", "MEM[4+MEM[0+r3]]"}}));

    // A type met again off the path is expanded again.
    m_reader.clear();
    read(nodeWith("    member p pointer T at 0\n    member q pointer T at 4\n",
                  "  typedef T struct t\n  struct t\n    member z int at 0\n  end\n"));
    map();
    EXPECT_EQ(pairs(), (Pairs{{"MEM[0+C_]", "MEM[0+r3]"},
                              {"MEM[4+C_]", "MEM[4+r3]"},
                              {"MEM[0+MEM[0+C_]]", "MEM[0+MEM[0+r3]]"},
                              {"MEM[0+MEM[4+C_]]", "MEM[0+MEM[4+r3]]"}}));
}

TEST_F(MappingTest, EachCellKeepsTheSizeOfItsFundamentalType)
{
    read(nodeWith("    member c char at 0\n    member s short at 2\n    member i int at 4\n"
                  "    member f float at 8\n    member d double at 16\n    member p pointer int at 24\n"
                  "    member q pointer T at 28\n    member n word at 32\n    member k const unsigned-char at 34\n"
                  "    member b bool at 35\n    member v void at 36\n",
                  "  typedef word unsigned-short\n  typedef T struct t\n  struct t\n    member z long at 0\n  end\n"));
    map();
    std::map<std::string, unsigned> sizes;
    for (const auto& pair : m_reader.getMembers())
        sizes[pair.first] = pair.second.m_byte_size;
    // Pointers, with or without modifiers, take 4 bytes; a type of no size
    // gives 0.
    EXPECT_EQ(sizes, (std::map<std::string, unsigned>{{"MEM[0+C_]", 1},
                                                      {"MEM[2+C_]", 2},
                                                      {"MEM[4+C_]", 4},
                                                      {"MEM[8+C_]", 4},
                                                      {"MEM[16+C_]", 8},
                                                      {"MEM[24+C_]", 4},
                                                      {"MEM[28+C_]", 4},
                                                      {"MEM[0+MEM[28+C_]]", 4},
                                                      {"MEM[32+C_]", 2},
                                                      {"MEM[34+C_]", 1},
                                                      {"MEM[35+C_]", 1},
                                                      {"MEM[36+C_]", 0}}));
}

TEST_F(MappingTest, EveryPairIsKeptEvenWithEqualNames)
{
    read(nodeWith("    member a int at 0\n    member b int at 0\n"));
    map();
    ASSERT_EQ(m_reader.getMembers().size(), 2u);
    const char* key = m_reader.getMembers().begin()->first.c_str();
    EXPECT_STREQ(m_reader.getSourceName(key), "MEM[0+r3]");
    // Only the very key text is found, not an equal one.
    EXPECT_EQ(m_reader.getSourceName("MEM[0+C_]"), nullptr);
    // The syntax without keywords still ends each line with ";".
    setOutFormat(TLV);
    EXPECT_EQ(printed(), "MEM[0+C_]=MEM[0+r3];\nPMEM[0+C_]=PMEM[0+r3];\n"
                         "MEM[0+C_]=MEM[0+r3];\nPMEM[0+C_]=PMEM[0+r3];\n");
}

TEST_F(MappingTest, ParametersMembersAndTypedefsThatCannotBeMapped)
{
    const std::string members = "    member a int at 0\n";
    // The first parameter must point to a typedef.
    EXPECT_EQ(mapStop(nodeWith(members, "", "pointer struct s")), " ERROR - expects user define type\n");
    EXPECT_EQ(mapStop(nodeWith(members, "", "reference S")),
              "Precondition failed: *attp==MOD_pointer_to in getAttributeValueT\n");
    EXPECT_EQ(mapStop(nodeWith(members, "", "int")), "ERROR - attribute does not exists\n");

    EXPECT_EQ(mapStop(nodeWith("    member q pointer pointer S at 4\n")),
              "Precondition failed: length2==5 in getAttributeValueT\n");
    EXPECT_EQ(mapStop(nodeWith("    member p reference S at 4\n")),
              "Precondition failed: *attp==MOD_pointer_to in getAttributeValueT\n");
    EXPECT_EQ(mapStop(nodeWith("    member v P at 0\n", "  typedef P pointer int\n")),
              "No AT_user_Def_Type attribute in P\n");
    // A member entry without a location.
    EXPECT_EQ(mapStop(nodeWith("    typedef a int with tag 13\n")), "ERROR - no location attribute\n");
}

TEST_F(MappingTest, ABrokenStructureStopsTheWalk)
{
    const std::string corrupt = "Truncated or corrupt executable: test.elf\n";
    // A type reference outside the section.
    EXPECT_EQ(mapStop(nodeWith("    member a int at 0 with attr 0x0072 00001000\n")), corrupt);
    // A member whose length runs past the section.
    EXPECT_EQ(mapStop(nodeWith("    member a int at 0\n    member b int at 4 with length 9000\n")), corrupt);
    // A location block too short for its atom's operand.
    EXPECT_EQ(mapStop(nodeWith("    typedef a int with tag 13 attr 0x0023 0003040000\n")), corrupt);

    // The structure ends the section: the unit (24), the node with its
    // parameter (16 + 38 + 4), the typedef (22) and the unit's null entry
    // (4) take 108 bytes; the structure (16), its members (30 each) and its
    // null entry (4) 80 more. Without the last 4 the list never ends.
    const std::string tail = "unit u.c\n  subroutine f\n    parameter state pointer S\n  end\n"
                             "  typedef S struct s\nend\n"
                             "struct s\n  member a int at 0\n  member b int at 4\nend\n";
    EXPECT_EQ(mapStop("section .debug size 188\n" + tail), "");
    EXPECT_EQ(pairs().size(), 2u);
    EXPECT_EQ(mapStop("section .debug size 184\n" + tail), corrupt);
}

TEST_F(MappingTest, TheNumberOfCellsIsBounded)
{
    // Each level points twice to the next: 2^20 cells. (The bound on type
    // levels is reached in an end-to-end case, on a larger stack.)
    std::string levels;
    for (int level = 0; level < 20; ++level)
        levels += "  struct l" + std::to_string(level) + "\n    member a pointer struct l" +
                  std::to_string(level + 1) + " at 0\n    member b pointer struct l" + std::to_string(level + 1) +
                  " at 4\n  end\n";
    levels += "  struct l20\n    member x int at 0\n  end\n";
    EXPECT_EQ(mapStop(nodeWith("    member top pointer struct l0 at 0\n", levels)),
              "Capacity exhausted: more than 100000 mapped memory cells\n");
}

// Every truncation of the file and of its ".debug" section, and every
// single-byte change of the section, ends in a complete run or an orderly
// stop; the sanitizer build checks that no read leaves the buffers.
TEST_F(MappingTest, NoSmallCorruptionCrashesTheReader)
{
    const std::string good =
        mkdwarf::build(nodeWith(example_members, example_types) + "unit other.c\n  subroutine g\n  end\nend\n");
    const std::size_t shoff = bigEndianWord(good.data() + 32);
    const std::size_t debug_header = shoff + 40;
    const std::size_t debug_offset = bigEndianWord(good.data() + debug_header + 16);
    const std::size_t debug_size = bigEndianWord(good.data() + debug_header + 20);
    ASSERT_GT(debug_size, 400u);

    StreamCapture trace(std::cout);
    StreamCapture errors(std::cerr);
    int completed = 0;
    auto run = [&](const std::string& a_bytes) {
        dwarf_debug reader;
        std::string message = stopMessage([&] {
            readExecutable(reader, a_bytes);
            reader.outMembers("_C_", "f", "u.c");
        });
        completed += message.empty();
    };
    for (std::size_t length = 0; length < good.size(); ++length)
        run(good.substr(0, length));
    for (std::size_t size = 0; size <= debug_size; ++size) {
        std::string bytes = good;
        const unsigned char field[] = {0, 0, static_cast<unsigned char>(size >> 8), static_cast<unsigned char>(size)};
        bytes.replace(debug_header + 20, 4, reinterpret_cast<const char*>(field), 4);
        run(bytes);
    }
    for (std::size_t at = debug_offset; at < debug_offset + debug_size; ++at) {
        for (unsigned char change : {0x00, 0xff, 0x80, 0x01}) {
            std::string bytes = good;
            bytes[at] = static_cast<char>(change == 0x80 || change == 0x01 ? bytes[at] ^ change : change);
            run(bytes);
        }
    }
    // The intact file, and the changes that do not matter, run through.
    EXPECT_GT(completed, 0);
}
