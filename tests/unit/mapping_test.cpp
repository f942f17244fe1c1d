// The mapping of the node's parameter structure onto memory names of both
// sides, on executables made by the builder; and the reader's robustness
// against every small corruption of such an executable.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "executable_support.h"
#include "swap.h"
#include "transition.h"

namespace {

using Pairs = std::map<std::string, std::string>;

// The example of a node whose first parameter points to a typedef S of a
// structure with two ints, an embedded structure and a pointer.
const char* const six_pairs = R"(
unit node.c
  typedef S struct s
  struct s size 20
    member a int at 0
    member b int at 4
    member in struct inner at 8
    member p pointer T at 16
  end
  struct inner size 8
    member x int at 0
    member y int at 4
  end
  typedef T struct t
  struct t size 4
    member z int at 0
  end
  subroutine step
    parameter s pointer S
  end
end
)";

// A unit whose node "f" takes a pointer to the typedef S of "struct s" (or
// a_parameter), with the given members and further declarations.
std::string nodeWith(const std::string& a_members, const std::string& a_more = "",
                     const std::string& a_parameter = "pointer S")
{
    return "unit u.c\n  typedef S struct s\n  struct s\n" + a_members + "  end\n" + a_more +
           "  subroutine f\n    parameter state " + a_parameter + "\n  end\nend\n";
}

class MappingTest : public ::testing::Test {
protected:
    void read(const std::string& a_description) { readExecutable(m_reader, mkdwarf::build(a_description)); }
    void map(const char* a_node = "f", const char* a_unit = "u.c")
    {
        StreamCapture trace(std::cout);
        m_reader.outMembers("_C_", a_node, a_unit);
        m_trace = trace.text();
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
            all[pair.first] = pair.second;
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
    std::string m_trace;
};

} // namespace

TEST_F(MappingTest, TheExampleStructureGivesSixPairsInHashOrder)
{
    read(six_pairs);
    map("step", "node.c");
    // Buckets of 193: MEM[4+C_] 5, MEM[0+C_] 14, MEM[16+C_] 104,
    // MEM[0+MEM[16+C_]] 111, MEM[12+C_] 113, MEM[8+C_] 189.
    EXPECT_EQ(printed(), "ASSERT MEM[4+C_]=MEM[4+r3];\n"
                         "ASSERT PMEM[4+C_]=PMEM[4+r3];\n"
                         "ASSERT MEM[0+C_]=MEM[0+r3];\n"
                         "ASSERT PMEM[0+C_]=PMEM[0+r3];\n"
                         "ASSERT MEM[16+C_]=MEM[16+r3];\n"
                         "ASSERT PMEM[16+C_]=PMEM[16+r3];\n"
                         "ASSERT MEM[0+MEM[16+C_]]=MEM[0+MEM[16+r3]];\n"
                         "ASSERT PMEM[0+MEM[16+C_]]=PMEM[0+MEM[16+r3]];\n"
                         "ASSERT MEM[12+C_]=MEM[12+r3];\n"
                         "ASSERT PMEM[12+C_]=PMEM[12+r3];\n"
                         "ASSERT MEM[8+C_]=MEM[8+r3];\n"
                         "ASSERT PMEM[8+C_]=PMEM[8+r3];\n");
    // Both names of every pair are declared operands.
    for (const auto& pair : pairs()) {
        EXPECT_TRUE(m_run.symbols().isIn(pair.first.c_str())) << pair.first;
        EXPECT_TRUE(m_run.symbols().isIn(pair.second.c_str())) << pair.second;
    }
    EXPECT_EQ(m_run.symbols().table().size(), 13u);
    // The embedded structure's members are traced as they flatten.
    EXPECT_NE(m_trace.find(" PREV C NAME=MEM[8+C_] +offset 0, we get MEM[8+C_]\n"
                           " PREV C NAME=MEM[8+C_] +offset 4, we get MEM[12+C_]\n"),
              std::string::npos);
}

TEST_F(MappingTest, MemberOffsetsAreKeptByStructureAndMemberName)
{
    read(six_pairs);
    map("step", "node.c");
    // The typedef's name stands for the structure it names; an embedded
    // structure is known by its own name.
    EXPECT_EQ(m_reader.getOffset("S#a"), 0);
    EXPECT_EQ(m_reader.getOffset("S#b"), 4);
    EXPECT_EQ(m_reader.getOffset("S#in"), 8);
    EXPECT_EQ(m_reader.getOffset("S#p"), 16);
    EXPECT_EQ(m_reader.getOffset("inner#y"), 4);
    EXPECT_EQ(m_reader.getOffset("T#z"), 0);
    EXPECT_EQ(m_reader.getTypeFieldOffsets().size(), 7u);

    StreamCapture trace(std::cout);
    EXPECT_EQ(m_reader.getOffset("s#a"), -1);
    EXPECT_EQ(trace.text(), "NOT FOUND!! -s#a=\n");
}

TEST_F(MappingTest, OneIntMemberGivesOnePair)
{
    read(nodeWith("    member count int at 0\n"));
    map();
    EXPECT_EQ(pairs(), (Pairs{{"MEM[0+C_]", "MEM[0+r3]"}}));
    EXPECT_EQ(printed(), "ASSERT MEM[0+C_]=MEM[0+r3];\nASSERT PMEM[0+C_]=PMEM[0+r3];\n");
    EXPECT_EQ(m_run.symbols().table().size(), 3u); // with "true"
    EXPECT_TRUE(m_run.symbols().isIn("MEM[0+C_]"));
    EXPECT_TRUE(m_run.symbols().isIn("MEM[0+r3]"));
}

TEST_F(MappingTest, NestedStructuresFlattenAndPointersNest)
{
    read(nodeWith("    member a int at 0\n"
                  "    member p pointer T at 4\n"
                  "    member in struct inner at 8\n",
                  "  struct inner\n    member x int at 4\n    member deep struct deepest at 8\n  end\n"
                  "  struct deepest\n    member d int at 12\n  end\n"
                  "  typedef T struct t\n"
                  "  struct t\n    member z int at 0\n    member q pointer U at 8\n"
                  "    member in struct inner at 16\n  end\n"
                  "  typedef U struct u\n  struct u\n    member w int at 4\n  end\n"));
    map();
    EXPECT_EQ(pairs(), (Pairs{{"MEM[0+C_]", "MEM[0+r3]"},
                              {"MEM[4+C_]", "MEM[4+r3]"},
                              {"MEM[12+C_]", "MEM[12+r3]"},
                              {"MEM[28+C_]", "MEM[28+r3]"},
                              {"MEM[0+MEM[4+C_]]", "MEM[0+MEM[4+r3]]"},
                              {"MEM[8+MEM[4+C_]]", "MEM[8+MEM[4+r3]]"},
                              {"MEM[4+MEM[8+MEM[4+C_]]]", "MEM[4+MEM[8+MEM[4+r3]]]"},
                              {"MEM[20+MEM[4+C_]]", "MEM[20+MEM[4+r3]]"},
                              {"MEM[36+MEM[4+C_]]", "MEM[36+MEM[4+r3]]"}}));
}

TEST_F(MappingTest, UnionsArraysAndOtherTypesGiveNoPair)
{
    read(nodeWith("    member u union U at 0\n"
                  "    member list array A at 8\n"
                  "    member c char at 48\n"
                  "    member ip pointer int at 52\n",
                  "  union U\n    member i int at 0\n    member f float at 0\n  end\n"
                  "  array A 10 int\n"));
    map();
    // Fundamental types, also behind modifiers, are cells themselves.
    EXPECT_EQ(pairs(), (Pairs{{"MEM[48+C_]", "MEM[48+r3]"}, {"MEM[52+C_]", "MEM[52+r3]"}}));
}

TEST_F(MappingTest, ANodeWithoutParametersMapsNothing)
{
    read("unit u.c\n  subroutine g\n    parameter x int\n  end\n  subroutine f\n  end\nend\n");
    map();
    EXPECT_TRUE(m_reader.getMembers().empty());
    EXPECT_EQ(printed(), "");
    OutputCapture output;
    Transition transition;
    m_reader.addVars(&transition);
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(m_run.symbols().table().size(), 1u);
}

TEST_F(MappingTest, ATypeBeingExpandedIsNotExpandedAgain)
{
    // A list node pointing to itself, directly and through its typedef.
    read("unit u.c\n  typedef S struct node\n"
         "  struct node\n    member value int at 0\n    member next pointer struct node at 4\n"
         "    member alias pointer S at 8\n  end\n"
         "  subroutine f\n    parameter state pointer S\n  end\nend\n");
    map();
    EXPECT_EQ(pairs(),
              (Pairs{{"MEM[0+C_]", "MEM[0+r3]"}, {"MEM[4+C_]", "MEM[4+r3]"}, {"MEM[8+C_]", "MEM[8+r3]"}}));

    // Two structures pointing at each other.
    m_reader.clear();
    read(nodeWith("    member there pointer struct b at 0\n",
                  "  struct b\n    member x int at 0\n    member back pointer struct s at 4\n  end\n"));
    map();
    EXPECT_EQ(pairs(), (Pairs{{"MEM[0+C_]", "MEM[0+r3]"},
                              {"MEM[0+MEM[0+C_]]", "MEM[0+MEM[0+r3]]"},
                              {"MEM[4+MEM[0+C_]]", "MEM[4+MEM[0+r3]]"}}));
}

TEST_F(MappingTest, ATypeMetAgainOffThePathIsExpandedAgain)
{
    read(nodeWith("    member p pointer T at 0\n    member q pointer T at 4\n",
                  "  typedef T struct t\n  struct t\n    member z int at 0\n  end\n"));
    map();
    EXPECT_EQ(pairs(), (Pairs{{"MEM[0+C_]", "MEM[0+r3]"},
                              {"MEM[4+C_]", "MEM[4+r3]"},
                              {"MEM[0+MEM[0+C_]]", "MEM[0+MEM[0+r3]]"},
                              {"MEM[0+MEM[4+C_]]", "MEM[0+MEM[4+r3]]"}}));
}

TEST_F(MappingTest, NamesOfAnyLength)
{
    // Thirty structures, each pointing to the next: names far longer than
    // any fixed buffer would take.
    std::string types;
    for (int level = 0; level < 30; ++level)
        types += "  struct l" + std::to_string(level) + "\n    member next pointer struct l" +
                 std::to_string(level + 1) + " at 0\n  end\n";
    types += "  struct l30\n    member last int at 4\n  end\n";
    const std::string long_member(5000, 'm');
    read(nodeWith("    member head pointer struct l0 at 0\n    member " + long_member + " int at 4\n", types));
    map();
    std::string deepest_c = "C_";
    std::string deepest_a = "r3";
    for (int level = 0; level < 31; ++level) {
        deepest_c = "MEM[0+" + deepest_c + "]";
        deepest_a = "MEM[0+" + deepest_a + "]";
    }
    deepest_c = "MEM[4+" + deepest_c + "]";
    deepest_a = "MEM[4+" + deepest_a + "]";
    Pairs all = pairs();
    EXPECT_EQ(all.size(), 33u);
    EXPECT_EQ(all[deepest_c], deepest_a);
    EXPECT_EQ(m_reader.getOffset(("S#" + long_member).c_str()), 4);
}

TEST_F(MappingTest, AddVarsPreservesTheCellsTheBlockDoesNotWrite)
{
    read(nodeWith("    member a int at 0\n    member b int at 4\n    member c int at 8\n"));
    map();
    Transition transition;
    transition.assign("MEM[4+r3]", new VarExp("r9"));
    OutputCapture output;
    m_reader.addVars(&transition);
    // Map order: MEM[4+C_] (bucket 5), MEM[0+C_] (14), MEM[8+C_] (189).
    EXPECT_EQ(output.text(), " %FORM addVARS\nASSERT PMEM[0+r3]=MEM[0+r3];\n"
                             " %FORM addVARS\nASSERT PMEM[8+r3]=MEM[8+r3];\n");
    output.clear();
    m_reader.addVars(nullptr);
    EXPECT_EQ(output.text(), "");
}

TEST_F(MappingTest, KeywordsFollowTheOutputSyntax)
{
    read(nodeWith("    member a int at 0\n    member b int at 4\n"));
    map();
    Transition transition;
    setOutFormat(ICS);
    {
        OutputCapture output;
        m_reader.addVars(&transition);
        EXPECT_EQ(output.text(), " %FORM addVARS\nassert(PMEM[4+r3]=MEM[4+r3]).\n"
                                 " %FORM addVARS\nassert(PMEM[0+r3]=MEM[0+r3]).\n");
    }
    // The mapping lines end with ";" in every syntax.
    EXPECT_EQ(printed(), "assert(MEM[4+C_]=MEM[4+r3];\nassert(PMEM[4+C_]=PMEM[4+r3];\n"
                         "assert(MEM[0+C_]=MEM[0+r3];\nassert(PMEM[0+C_]=PMEM[0+r3];\n");
    setOutFormat(TLV);
    EXPECT_EQ(printed(), "MEM[4+C_]=MEM[4+r3];\nPMEM[4+C_]=PMEM[4+r3];\n"
                         "MEM[0+C_]=MEM[0+r3];\nPMEM[0+C_]=PMEM[0+r3];\n");
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
    EXPECT_EQ(printed(), "ASSERT MEM[0+C_]=MEM[0+r3];\nASSERT PMEM[0+C_]=PMEM[0+r3];\n"
                         "ASSERT MEM[0+C_]=MEM[0+r3];\nASSERT PMEM[0+C_]=PMEM[0+r3];\n");
}

TEST_F(MappingTest, AMemberWithoutAContainingCellGetsNoPair)
{
    read(nodeWith("    member a int at 0\n    member b int at 4\n"));
    char* structure = m_reader.getSibling(m_reader.getKid(m_reader.getFirstEntry()));
    StreamCapture trace(std::cout);
    m_reader.recursive_outMembers(m_reader.getKid(structure), "S", "C_", "r3", false);
    EXPECT_EQ(trace.text(), "NOT GOOD in dwarf\nNOT GOOD in dwarf\n");
    EXPECT_TRUE(m_reader.getMembers().empty());
}

TEST_F(MappingTest, TheFirstParameterMustPointToATypedef)
{
    const std::string members = "    member a int at 0\n";
    EXPECT_EQ(mapStop(nodeWith(members, "", "pointer struct s")), " ERROR - expects user define type\n");
    EXPECT_EQ(mapStop(nodeWith(members, "", "pointer pointer S")),
              "Precondition failed: length2==5 in getAttributeValueT\n");
    EXPECT_EQ(mapStop(nodeWith(members, "", "reference S")),
              "Precondition failed: *attp==MOD_pointer_to in getAttributeValueT\n");
    EXPECT_EQ(mapStop(nodeWith(members, "", "int")), "ERROR - attribute does not exists\n");

    // A first child that is not a parameter is reported; the run then needs
    // a typedef there.
    StreamCapture errors(std::cerr);
    EXPECT_EQ(mapStop("unit u.c\n  subroutine f\n    variable i int at 8\n  end\nend\n"),
              " ERROR - expects user define type\n");
    EXPECT_EQ(errors.text(), "ERROR - NO FORMAL PARAMETRS\n");
}

TEST_F(MappingTest, MembersAndTypedefsThatCannotBeMapped)
{
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

TEST_F(MappingTest, TheWalkIsBounded)
{
    // Hundreds of levels are walked (the bound on levels, 10000, is reached
    // in an end-to-end case: this test's stack is the small default one).
    std::string chain = "unit u.c\n  typedef S T0\n";
    for (int i = 0; i < 300; ++i)
        chain += "  typedef T" + std::to_string(i) + " T" + std::to_string(i + 1) + "\n";
    chain += "  typedef T300 int\n  subroutine f\n    parameter state pointer S\n  end\nend\n";
    EXPECT_EQ(mapStop(chain), "");
    EXPECT_EQ(pairs(), (Pairs{{"C_", "r3"}}));

    // Each level points twice to the next: 2^20 cells.
    std::string levels;
    for (int level = 0; level < 20; ++level)
        levels += "  struct l" + std::to_string(level) + "\n    member a pointer struct l" +
                  std::to_string(level + 1) + " at 0\n    member b pointer struct l" + std::to_string(level + 1) +
                  " at 4\n  end\n";
    levels += "  struct l20\n    member x int at 0\n  end\n";
    EXPECT_EQ(mapStop(nodeWith("    member top pointer struct l0 at 0\n", levels)),
              "Capacity exhausted: more than 100000 mapped memory cells\n");
}

TEST_F(MappingTest, ClearForgetsTheFileAndTheMapping)
{
    read(six_pairs);
    map("step", "node.c");
    m_reader.clear();
    EXPECT_EQ(m_reader.getDwarfSize(), 0);
    EXPECT_TRUE(m_reader.getSectionHeaders().empty());
    EXPECT_TRUE(m_reader.getMembers().empty());
    EXPECT_TRUE(m_reader.getTypeFieldOffsets().empty());
    EXPECT_EQ(m_reader.getMembers().bucketCount(), 193u);
    EXPECT_EQ(printed(), "");
}

// Every truncation of the file and of its ".debug" section, and every
// single-byte change of the section, ends in a complete run or an orderly
// stop; the sanitizer build checks that no read leaves the buffers.
TEST_F(MappingTest, NoSmallCorruptionCrashesTheReader)
{
    const std::string good = mkdwarf::build(std::string(six_pairs) + "unit other.c\n  subroutine g\n  end\nend\n");
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
            reader.outMembers("_C_", "step", "node.c");
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
