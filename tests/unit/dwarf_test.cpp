// The debug-information reader on executables made by the builder: the ELF
// checks, the entries and attributes, and the searches for unit and node.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "executable_support.h"

namespace {

// A unit with a node, a file-local function, a typedef'd structure, and a
// second unit after it.
const char* const two_units = R"(
unit first.c
  subroutine node
    parameter s pointer S
  end
  static-subroutine helper
  end
  typedef S struct s
  struct s size 8
    member a int at 0
    member b pointer S at 4
  end
  variable counter int at 0x10000100
end
unit second.c
  subroutine other
  end
end
)";

class ReaderTest : public ::testing::Test {
protected:
    void read(const std::string& a_description) { readExecutable(m_reader, mkdwarf::build(a_description)); }
    std::string readStop(const std::string& a_description)
    {
        return stopMessage([&] { read(a_description); });
    }
    // The unit's first child named a_name, found by walking siblings.
    char* child(char* a_parent, const char* a_name)
    {
        for (char* entry = m_reader.getKid(a_parent); entry; entry = m_reader.getSibling(entry))
            if (std::strcmp(m_reader.getEntryName(entry), a_name) == 0)
                return entry;
        return nullptr;
    }
    char* unit(const char* a_name)
    {
        StreamCapture trace(std::cout);
        return m_reader.getCompilationUnit(nullptr, a_name);
    }
    std::string unitStop(const char* a_name)
    {
        return stopMessage([&] { unit(a_name); });
    }

    RunFixture m_run;
    dwarf_debug m_reader;
};

const std::string not_elf = "Not a 32-bit big-endian ELF file: test.elf\n";
const std::string corrupt = "Truncated or corrupt executable: test.elf\n";

} // namespace

TEST_F(ReaderTest, ReadsTheDebugSectionAndTracesTheNameTable)
{
    std::istringstream file(mkdwarf::build("unit u.c\nend\n"));
    StreamCapture trace(std::cout);
    m_reader.readDwarf(file, "test.elf");
    // Names: "", ".debug", ".shstrtab" with their NULs.
    EXPECT_EQ(trace.text(), "---strtable malloc of 18\n");
    EXPECT_EQ(m_reader.getSectionHeaders().size(), 3u);
    EXPECT_EQ(m_reader.getDebugSectionIndex(), 1);
    // The unit (length, tag, sibling, "u.c", language: 24 bytes) and the null
    // entry that ends its children.
    EXPECT_EQ(m_reader.getDwarfSize(), 28);
    EXPECT_EQ(m_reader.getSize(m_reader.getFirstEntry()), 24u);
}

TEST_F(ReaderTest, OnlyThirtyTwoBitBigEndianElfFilesAreRead)
{
    EXPECT_EQ(readStop("elf magic 4e4f5420\nunit u.c\nend\n"), not_elf);
    EXPECT_EQ(readStop("elf class 2\nunit u.c\nend\n"), not_elf);
    EXPECT_EQ(readStop("elf data 1\nunit u.c\nend\n"), not_elf);
    // Too short to hold the identification bytes.
    EXPECT_EQ(readStop("elf truncate 5\nunit u.c\nend\n"), not_elf);
    EXPECT_EQ(stopMessage([&] { readExecutable(m_reader, ""); }), not_elf);
    // The identification is there, the rest of the header is not.
    EXPECT_EQ(readStop("elf truncate 6\nunit u.c\nend\n"), corrupt);
    EXPECT_EQ(readStop("elf truncate 51\nunit u.c\nend\n"), corrupt);
}

TEST_F(ReaderTest, EveryReadMustFitTheFile)
{
    // The section table past the end, or claiming more headers than fit.
    EXPECT_EQ(readStop("elf shoff 0x7ffffff0\nunit u.c\nend\n"), corrupt);
    EXPECT_EQ(readStop("elf shnum 200\nunit u.c\nend\n"), corrupt);
    // Header 52, ".debug" 28, names 18 (to 100 with padding): the table
    // starts at 100 and is cut off.
    EXPECT_EQ(readStop("elf truncate 120\nunit u.c\nend\n"), corrupt);
    // The name table's index must be below the section count.
    EXPECT_EQ(readStop("elf shstrndx 3\nunit u.c\nend\n"), corrupt);
    EXPECT_EQ(readStop("elf shnum 0\nunit u.c\nend\n"), corrupt);
    // A section whose bytes lie past the end of the file.
    EXPECT_EQ(readStop("section .debug offset 0x10000\nunit u.c\nend\n"), corrupt);
    EXPECT_EQ(readStop("section .debug size 0x10000\nunit u.c\nend\n"), corrupt);
    EXPECT_EQ(readStop("section .debug size 0xffffffff\nunit u.c\nend\n"), corrupt);
}

TEST_F(ReaderTest, TheSectionNameMustBeDebugExactly)
{
    read("section .debug\nunit a.c\nend\nsection .debug\nunit b.c\nend\n");
    EXPECT_EQ(m_reader.getDebugSectionIndex(), 2);
    EXPECT_NE(unit("b.c"), nullptr);
    EXPECT_EQ(unitStop("a.c"), " compilation entry a.c does not exits\n");

    // Without a ".debug" section the table is section 0: empty.
    read("section .debugX\nunit a.c\nend\n");
    EXPECT_EQ(m_reader.getDebugSectionIndex(), 0);
    EXPECT_EQ(m_reader.getDwarfSize(), 0);
    EXPECT_EQ(unitStop("a.c"), " compilation entry a.c does not exits\n");

    // A name offset outside the name table matches nothing.
    read("section .debug name 5000\nunit a.c\nend\n");
    EXPECT_EQ(m_reader.getDebugSectionIndex(), 0);

    // The name is read where sh_name points: offset 2 of "\0a.debug\0" is
    // ".debug".
    read("section a.debug name 2\nunit a.c\nend\n");
    EXPECT_EQ(m_reader.getDebugSectionIndex(), 1);
}

TEST_F(ReaderTest, EntriesAreReadAtTheirFixedPlaces)
{
    read(two_units);
    char* first = m_reader.getFirstEntry();
    EXPECT_EQ(m_reader.getTag(first), TAG_compile_unit);
    // Length, tag, sibling, "first.c", language.
    EXPECT_EQ(m_reader.getSize(first), 28u);
    EXPECT_STREQ(m_reader.getEntryName(first), "first.c");
    EXPECT_EQ(m_reader.getEntryName(first), first + 14);

    char* node = m_reader.getKid(first);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node, first + 28);
    EXPECT_EQ(m_reader.getTag(node), TAG_global_subroutine);
    char* parameter = m_reader.getKid(node);
    ASSERT_NE(parameter, nullptr);
    EXPECT_EQ(m_reader.getTag(parameter), TAG_formal_parameter);
    // The parameter is the node's only child: a null entry follows it.
    EXPECT_EQ(m_reader.getKid(parameter), nullptr);

    // The sibling of the node skips its children and their null entry.
    char* helper = m_reader.getSibling(node);
    EXPECT_EQ(helper, parameter + m_reader.getSize(parameter) + 4);
    EXPECT_EQ(m_reader.getTag(helper), TAG_subroutine);
    EXPECT_STREQ(m_reader.getEntryName(helper), "helper");
    // A block without children still ends with its null entry.
    EXPECT_EQ(m_reader.getKid(helper), nullptr);

    char* second = m_reader.getSibling(first);
    EXPECT_STREQ(m_reader.getEntryName(second), "second.c");
    EXPECT_EQ(m_reader.getSibling(second), first + m_reader.getDwarfSize());

    char* name = m_reader.checkAttribute(AT_name, first);
    EXPECT_FALSE(m_reader.checkIn(first, name));
    EXPECT_TRUE(m_reader.checkIn(first, first + m_reader.getSize(first)));
    EXPECT_EQ(m_reader.getRegister("r3"), nullptr);
}

TEST_F(ReaderTest, EntryNamesWithoutTheUsualLayout)
{
    read("unit u.c\n"
         "  struct anonymous with no-name\n  end\n"
         "  typedef late int with no-sibling\n"
         "end\n");
    char* unit_entry = m_reader.getFirstEntry();
    char* anonymous = m_reader.getKid(unit_entry);
    EXPECT_STREQ(m_reader.getEntryName(anonymous), "");
    char* late = m_reader.getSibling(anonymous);
    EXPECT_STREQ(m_reader.getEntryName(late), "late");
}

TEST_F(ReaderTest, AttributesAreFoundByTheirWholeCode)
{
    read("unit u.c\n"
         // AT_name's base with the 2-byte data form, and no real name.
         "  typedef t int with no-name lead-attr 0x0035 0007\n"
         // A block-4 of length 10 before the sibling.
         "  typedef b int with lead-attr 0x00f4 0000000a00112233445566778899\n"
         "end\n");
    char* t = m_reader.getKid(m_reader.getFirstEntry());
    EXPECT_EQ(m_reader.checkAttribute(AT_name, t), nullptr);
    EXPECT_EQ(m_reader.getAttributeValueI(AT_fund_type, t), unsigned(FT_integer));
    EXPECT_EQ(m_reader.getAttributeValueI(static_cast<dwarf_attribute>(0x0035), t), 7u);

    char* b = m_reader.getSibling(t);
    char* block = b + 8; // after the length, the tag and the block's code
    EXPECT_EQ(m_reader.attributeSize(block, AT_element_list), 14);
    EXPECT_EQ(m_reader.checkAttribute(AT_sibling, b), block + 14 + 2);
    EXPECT_STREQ(m_reader.getEntryName(b), "b");
    // A form outside 1 to 8 has no size.
    EXPECT_EQ(m_reader.attributeSize(block, 0x0039), -1);
}

TEST_F(ReaderTest, AttributeValuesOfTheWrongKindStopTheRun)
{
    read(two_units);
    char* unit_entry = m_reader.getFirstEntry();
    EXPECT_EQ(stopMessage([&] { m_reader.getAttributeValueI(AT_byte_size, unit_entry); }),
              "ERROR - attribute does not exists\n");
    char* parameter = m_reader.getKid(m_reader.getKid(unit_entry));
    EXPECT_EQ(stopMessage([&] { m_reader.getAttributeValueI(AT_mod_u_d_type, parameter); }),
              " ERROR - should not be of block form\n");
    EXPECT_EQ(stopMessage([&] { m_reader.getAttributeValueI(AT_name, unit_entry); }),
              "ERROR : Wrong form of attribute\n");
    EXPECT_EQ(stopMessage([&] { m_reader.getAttributeValueS(AT_producer, unit_entry); }), " no such attribute\n");

    StreamCapture errors(std::cerr);
    char* language = m_reader.getAttributeValueS(AT_language, unit_entry);
    EXPECT_EQ(errors.text(), " no string found\n");
    EXPECT_EQ(language, m_reader.checkAttribute(AT_language, unit_entry));
}

TEST_F(ReaderTest, AnUnknownFormCannotBeSkipped)
{
    read("unit u.c\n  typedef t int with attr 0x0039 00\nend\n");
    char* t = m_reader.getKid(m_reader.getFirstEntry());
    EXPECT_STREQ(m_reader.getEntryName(t), "t");
    EXPECT_EQ(stopMessage([&] { m_reader.checkAttribute(AT_user_def_type, t); }), " wrong attribute size\n");
}

TEST_F(ReaderTest, AttributesMustEndInsideTheirEntry)
{
    // The string of AT_name runs to the end of the entry without its NUL.
    read("unit u.c\n  typedef t int with length 14\n  typedef v int\nend\n");
    char* t = m_reader.getKid(m_reader.getFirstEntry());
    EXPECT_EQ(stopMessage([&] { m_reader.checkAttribute(AT_fund_type, t); }), corrupt);
    // A block whose length reaches past the entry.
    read("unit u.c\n  typedef t int with attr 0x0083 ffff01\nend\n");
    t = m_reader.getKid(m_reader.getFirstEntry());
    EXPECT_EQ(stopMessage([&] { m_reader.checkAttribute(AT_mod_u_d_type, t); }), corrupt);
}

TEST_F(ReaderTest, PointerTypesMustBePlainPointersToUserTypes)
{
    read("unit u.c\n"
         "  typedef S int\n"
         "  subroutine f\n"
         "    parameter plain pointer S\n"
         "    parameter twice pointer pointer S\n"
         "    parameter ref reference S\n"
         "    parameter number int\n"
         "  end\n"
         "end\n");
    char* typedef_entry = m_reader.getKid(m_reader.getFirstEntry());
    char* plain = m_reader.getKid(m_reader.getSibling(typedef_entry));
    char* twice = m_reader.getSibling(plain);
    char* ref = m_reader.getSibling(twice);
    char* number = m_reader.getSibling(ref);
    EXPECT_EQ(m_reader.getAttributeValueT(AT_mod_u_d_type, plain),
              unsigned(typedef_entry - m_reader.getFirstEntry()));
    EXPECT_EQ(stopMessage([&] { m_reader.getAttributeValueT(AT_mod_u_d_type, twice); }),
              "Precondition failed: length2==5 in getAttributeValueT\n");
    EXPECT_EQ(stopMessage([&] { m_reader.getAttributeValueT(AT_mod_u_d_type, ref); }),
              "Precondition failed: *attp==MOD_pointer_to in getAttributeValueT\n");
    EXPECT_EQ(stopMessage([&] { m_reader.getAttributeValueT(AT_mod_u_d_type, number); }),
              "ERROR - attribute does not exists\n");
}

TEST_F(ReaderTest, LocationsGiveTheFirstAtomsOperand)
{
    read(two_units);
    char* first = m_reader.getFirstEntry();
    char* structure = child(first, "s");
    char* b = m_reader.getSibling(m_reader.getKid(structure));
    EXPECT_EQ(m_reader.getLoc(b), 4ul);
    EXPECT_EQ(m_reader.getLoc(child(first, "counter")), 0x10000100ul);
    EXPECT_EQ(m_reader.getLoc(m_reader.getKid(child(first, "node"))), 3ul); // register r3
    EXPECT_EQ(stopMessage([&] { m_reader.getLoc(structure); }), "ERROR - no location attribute\n");
}

TEST_F(ReaderTest, TheUnitSearchVisitsTopLevelEntries)
{
    read(two_units);
    EXPECT_EQ(unit("first.c"), m_reader.getFirstEntry());
    EXPECT_EQ(unit("second.c"), m_reader.getSibling(m_reader.getFirstEntry()));
    EXPECT_EQ(unitStop("Second.c"), " compilation entry Second.c does not exits\n");
    // Subroutines are children, not top-level entries.
    EXPECT_EQ(unitStop("node"), " compilation entry node does not exits\n");
}

TEST_F(ReaderTest, TheUnitSearchTracesEachEntry)
{
    read("unit u.c\nend\n");
    StreamCapture trace(std::cout);
    EXPECT_EQ(stopMessage([&] { m_reader.getCompilationUnit(nullptr, "v.c"); }),
              " compilation entry v.c does not exits\n");
    EXPECT_EQ(trace.text(), "Entry=0, GetSize(entry)=24, while PREFIX SIZE is5\n"
                            "DWARFSize=28 m_debug_table size=28, together 24\n"
                            "We are here and this is good, TAG_compile_unit is 17, getTag(entry)=17\n"
                            "TAG_unit\n"
                            "STR=u.c, while name=v.c\n");
}

TEST_F(ReaderTest, TheUnitSearchEndsAtTheEndOfTheSection)
{
    const std::string missing = " compilation entry b.c does not exits\n";
    // A zero-length entry, a null entry, an entry running past the section.
    read("unit a.c\nend\nraw 00000000\nunit b.c\nend\n");
    EXPECT_EQ(unitStop("b.c"), missing);
    read("raw 00000004\nunit b.c\nend\n");
    EXPECT_EQ(unitStop("b.c"), missing);
    read("unit a.c with length 5000\nend\nunit b.c\nend\n");
    EXPECT_EQ(unitStop("b.c"), missing);
    // Siblings outside the section or leading back.
    read("unit a.c with sibling 5000\nend\nunit b.c\nend\n");
    EXPECT_EQ(unitStop("b.c"), missing);
    read("unit a.c with sibling 0\nend\nunit b.c\nend\n");
    EXPECT_EQ(unitStop("b.c"), missing);
    // Only a few bytes of a length at the end.
    read("unit a.c\nend\nraw 0000\n");
    EXPECT_EQ(unitStop("b.c"), missing);

    read("unit a.c with no-sibling\nend\nunit b.c\nend\n");
    EXPECT_EQ(unitStop("b.c"), " No sibiling entry exits\n");
    read("unit a.c with no-name\nend\n");
    EXPECT_EQ(unitStop("b.c"), " no such attribute\n");
}

TEST_F(ReaderTest, TheNodeIsAGlobalSubroutineOfItsUnit)
{
    read(two_units);
    char* first = unit("first.c");
    char* node = m_reader.getGlobalSubroutine(m_reader.getKid(first), "node");
    EXPECT_EQ(node, m_reader.getKid(first));
    EXPECT_EQ(stopMessage([&] { m_reader.getGlobalSubroutine(m_reader.getKid(first), "helper"); }),
              "ERROR - no subroutine helper in compilation unit\n");
    EXPECT_EQ(stopMessage([&] { m_reader.getGlobalSubroutine(m_reader.getKid(first), "other"); }),
              "ERROR - no subroutine other in compilation unit\n");
    EXPECT_EQ(stopMessage([&] { m_reader.getGlobalSubroutine(m_reader.getKid(first), "Node"); }),
              "ERROR - no subroutine Node in compilation unit\n");
    // From the first entry, the walk passes units only.
    EXPECT_EQ(stopMessage([&] { m_reader.getGlobalSubroutine(nullptr, "node"); }),
              "ERROR - no subroutine node in compilation unit\n");
}

TEST_F(ReaderTest, TheNodeSearchEndsAtTheEndOfTheSection)
{
    const std::string missing = "ERROR - no subroutine f in compilation unit\n";
    for (const char* description : {
             "unit u.c\n  subroutine g with sibling 9000\n  end\n  subroutine f\n  end\nend\n",
             "unit u.c\n  subroutine g with sibling 6\n  end\n  subroutine f\n  end\nend\n",
             "unit u.c\n  subroutine g with length 9000\n  end\n  subroutine f\n  end\nend\n",
             // The section ends inside the unit's children: after g (24 + 16).
             "section .debug size 40\nunit u.c\n  subroutine g\n  end\n  subroutine f\n  end\nend\n"}) {
        read(description);
        char* first = unit("u.c");
        EXPECT_EQ(stopMessage([&] { m_reader.getGlobalSubroutine(m_reader.getKid(first), "f"); }), missing)
            << description;
    }
}

TEST_F(ReaderTest, NamesOfAnyLength)
{
    const std::string long_unit(10000, 'u');
    const std::string long_node(3000, 'n');
    read("unit " + long_unit + "\n  subroutine " + long_node + "\n  end\nend\n");
    char* found = unit(long_unit.c_str());
    EXPECT_EQ(m_reader.getEntryName(found), long_unit);
    EXPECT_EQ(m_reader.getEntryName(m_reader.getGlobalSubroutine(m_reader.getKid(found), long_node.c_str())),
              long_node);
}
