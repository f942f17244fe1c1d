// The debug-information reader on executables made by the builder: the ELF
// checks, the entries and attributes, and the searches for unit and node.
// The end-to-end cases run the usual layouts and the reader's traces.
#include <gtest/gtest.h>

#include <string>

#include "executable_support.h"

namespace {

// A unit with a node and a variable, and a second unit after it.
const char* const two_units = R"(
unit first.c
  subroutine node
    parameter s pointer S
  end
  typedef S int
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
    char* unit(const char* a_name)
    {
        StreamCapture trace(std::cout);
        return m_reader.getCompilationUnit(nullptr, a_name);
    }
    std::string unitStop(const char* a_name)
    {
        return stopMessage([&] { unit(a_name); });
    }
    // The first child of the first unit.
    char* firstChild() { return m_reader.getKid(m_reader.getFirstEntry()); }

    RunFixture m_run;
    dwarf_debug m_reader;
};

const std::string not_elf = "Not a 32-bit big-endian ELF file: test.elf\n";
const std::string corrupt = "Truncated or corrupt executable: test.elf\n";

} // namespace

TEST_F(ReaderTest, OnlyWholeThirtyTwoBitBigEndianElfFilesAreRead)
{
    // A foreign identification, or too few bytes to hold one.
    for (const char* change : {"elf magic 4e4f5420", "elf class 2", "elf data 1", "elf truncate 5"})
        EXPECT_EQ(readStop(std::string(change) + "\nunit u.c\nend\n"), not_elf) << change;
    EXPECT_EQ(stopMessage([&] { readExecutable(m_reader, ""); }), not_elf);

    for (const char* change : {
             // The identification is there, the rest of the header is not.
             "elf truncate 6", "elf truncate 51",
             // The section table past the end, or claiming more headers than
             // fit; header 52, ".debug" 28, names 18 (to 100 with padding):
             // the table starts at 100 and is cut off.
             "elf shoff 0x7ffffff0", "elf shnum 200", "elf truncate 120",
             // The name table's index must be below the section count.
             "elf shstrndx 3", "elf shnum 0",
             // A section whose bytes lie past the end of the file.
             "section .debug offset 0x10000", "section .debug size 0xffffffff"})
        EXPECT_EQ(readStop(std::string(change) + "\nunit u.c\nend\n"), corrupt) << change;
}

TEST_F(ReaderTest, TheSectionNameMustBeDebugExactly)
{
    read("section .debug\nunit a.c\nend\nsection .debug\nunit b.c\nend\n");
    EXPECT_EQ(m_reader.getDebugSectionIndex(), 2);
    EXPECT_NE(unit("b.c"), nullptr);
    EXPECT_EQ(unitStop("a.c"), " compilation entry a.c does not exits\n");
    // A name offset outside the name table matches nothing.
    read("section .debug name 5000\nunit a.c\nend\n");
    EXPECT_EQ(m_reader.getDebugSectionIndex(), 0);
    // The name is read where sh_name points: offset 2 of "\0a.debug\0" is
    // ".debug".
    read("section a.debug name 2\nunit a.c\nend\n");
    EXPECT_EQ(m_reader.getDebugSectionIndex(), 1);
}

TEST_F(ReaderTest, NamesAndAttributesOutsideTheUsualLayout)
{
    read("unit u.c\n"
         "  struct anonymous with no-name\n  end\n"
         // AT_name's base with the 2-byte data form, and no real name.
         "  typedef t int with no-name lead-attr 0x0035 0007\n"
         // A block-4 of length 10 before the sibling.
         "  typedef b int with lead-attr 0x00f4 0000000a00112233445566778899\n"
         "  typedef late int with no-sibling\n"
         "end\n");
    char* anonymous = firstChild();
    EXPECT_STREQ(m_reader.getEntryName(anonymous), "");

    // Attributes are found by their whole code.
    char* t = m_reader.getSibling(anonymous);
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
    EXPECT_STREQ(m_reader.getEntryName(m_reader.getSibling(b)), "late");
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

TEST_F(ReaderTest, AttributesMustEndInsideTheirEntry)
{
    // The string of AT_name runs to the end of the entry without its NUL.
    read("unit u.c\n  typedef t int with length 14\n  typedef v int\nend\n");
    EXPECT_EQ(stopMessage([&] { m_reader.checkAttribute(AT_fund_type, firstChild()); }), corrupt);
    // A block whose length reaches past the entry.
    read("unit u.c\n  typedef t int with attr 0x0083 ffff01\nend\n");
    EXPECT_EQ(stopMessage([&] { m_reader.checkAttribute(AT_mod_u_d_type, firstChild()); }), corrupt);
    // The attributes before the bad one are found, however often and in
    // whatever order they are asked for; one after it, or one the entry
    // lacks, is not reached.
    char* t = firstChild();
    EXPECT_STREQ(m_reader.getEntryName(t), "t");
    EXPECT_EQ(m_reader.getAttributeValueI(AT_fund_type, t), unsigned(FT_integer));
    EXPECT_EQ(stopMessage([&] { m_reader.checkAttribute(AT_location, t); }), corrupt);
    EXPECT_NE(m_reader.checkAttribute(AT_name, t), nullptr);
    EXPECT_EQ(stopMessage([&] { m_reader.checkAttribute(AT_mod_u_d_type, t); }), corrupt);
    // A form outside 1 to 8 stops the search in the same way, with its own
    // message.
    read("unit u.c\n  typedef t int with attr 0x0039 00\nend\n");
    t = firstChild();
    EXPECT_EQ(m_reader.getAttributeValueI(AT_fund_type, t), unsigned(FT_integer));
    EXPECT_EQ(stopMessage([&] { m_reader.checkAttribute(AT_location, t); }), " wrong attribute size\n");
    EXPECT_EQ(m_reader.getAttributeValueI(AT_fund_type, t), unsigned(FT_integer));
}

TEST_F(ReaderTest, LocationsGiveTheFirstAtomsWholeOperand)
{
    read(two_units);
    char* counter = m_reader.getSibling(m_reader.getSibling(firstChild()));
    EXPECT_STREQ(m_reader.getEntryName(counter), "counter");
    EXPECT_EQ(m_reader.getLoc(counter), 0x10000100ul);
    EXPECT_EQ(m_reader.getLoc(m_reader.getKid(firstChild())), 3ul); // register r3
}

TEST_F(ReaderTest, TheUnitSearchVisitsTopLevelEntriesUpToTheEndOfTheSection)
{
    read(two_units);
    EXPECT_EQ(unit("second.c"), m_reader.getSibling(m_reader.getFirstEntry()));
    // Subroutines are children, not top-level entries.
    EXPECT_EQ(unitStop("node"), " compilation entry node does not exits\n");

    for (const char* description : {
             // A zero-length entry, a null entry, an entry running past the
             // section.
             "unit a.c\nend\nraw 00000000\nunit b.c\nend\n", "raw 00000004\nunit b.c\nend\n",
             "unit a.c with length 5000\nend\nunit b.c\nend\n",
             // Siblings outside the section or leading back.
             "unit a.c with sibling 5000\nend\nunit b.c\nend\n", "unit a.c with sibling 0\nend\nunit b.c\nend\n",
             // Only a few bytes of a length at the end.
             "unit a.c\nend\nraw 0000\n"}) {
        read(description);
        EXPECT_EQ(unitStop("b.c"), " compilation entry b.c does not exits\n") << description;
    }
    read("unit a.c with no-sibling\nend\nunit b.c\nend\n");
    EXPECT_EQ(unitStop("b.c"), " No sibiling entry exits\n");
    read("unit a.c with no-name\nend\n");
    EXPECT_EQ(unitStop("b.c"), " no such attribute\n");
}

TEST_F(ReaderTest, TheNodeIsAGlobalSubroutineOfItsUnitBeforeTheSectionEnds)
{
    read(two_units);
    char* first = unit("first.c");
    EXPECT_EQ(m_reader.getGlobalSubroutine(m_reader.getKid(first), "node"), m_reader.getKid(first));
    for (const char* name : {"other", "Node"})
        EXPECT_EQ(stopMessage([&] { m_reader.getGlobalSubroutine(m_reader.getKid(first), name); }),
                  "ERROR - no subroutine " + std::string(name) + " in compilation unit\n");
    // From the first entry, the walk passes units only.
    EXPECT_EQ(stopMessage([&] { m_reader.getGlobalSubroutine(nullptr, "node"); }),
              "ERROR - no subroutine node in compilation unit\n");

    for (const char* description : {
             "unit u.c\n  subroutine g with sibling 9000\n  end\n  subroutine f\n  end\nend\n",
             "unit u.c\n  subroutine g with sibling 6\n  end\n  subroutine f\n  end\nend\n",
             "unit u.c\n  subroutine g with length 9000\n  end\n  subroutine f\n  end\nend\n",
             // The section ends inside the unit's children: after g (24 + 16).
             "section .debug size 40\nunit u.c\n  subroutine g\n  end\n  subroutine f\n  end\nend\n"}) {
        read(description);
        first = unit("u.c");
        EXPECT_EQ(stopMessage([&] { m_reader.getGlobalSubroutine(m_reader.getKid(first), "f"); }),
                  "ERROR - no subroutine f in compilation unit\n")
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
