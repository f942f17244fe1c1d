// The reader of DWARF 2 to 5 on step functions that the cross compiler
// builds during the test: the cells beyond what DWARF 1 can state, with
// their byte sizes (32-bit PowerPC SysV: natural alignment, big-endian),
// the member offsets, the searches for unit and node, and the files that
// must end in a message. Skipped with a notice where the cross compiler is
// absent. The equivalence with DWARF 1 is checked end to end
// (tests/e2e/equivalence).
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "executable_support.h"
#include "swap.h"

namespace {

const char* const FORMATS[] = {"-gdwarf-2", "-gdwarf-4", "-g"};

// Source name -> (target name, byte size).
using Cells = std::map<std::string, std::pair<std::string, unsigned>>;

// The cell of source name a_source, its target name made from it.
Cells::value_type cell(const std::string& a_source, unsigned a_size)
{
    std::string target = a_source;
    target.replace(target.find("C_"), 2, "r3");
    return {a_source, {target, a_size}};
}

// A section of an ELF image: where its header and its bytes lie.
struct Section {
    std::size_t m_header = 0;
    std::size_t m_offset = 0;
    std::size_t m_size = 0;
};

Section sectionNamed(const std::string& a_image, const char* a_name)
{
    const char* bytes = a_image.data();
    const std::size_t shoff = bigEndianWord(bytes + 32);
    const std::size_t shnum = bigEndianHalf(bytes + 48);
    const std::size_t names = bigEndianWord(bytes + shoff + bigEndianHalf(bytes + 50) * 40 + 16);
    for (std::size_t index = 0; index < shnum; ++index) {
        const std::size_t header = shoff + index * 40;
        if (std::strcmp(bytes + names + bigEndianWord(bytes + header), a_name) == 0)
            return {header, bigEndianWord(bytes + header + 16), bigEndianWord(bytes + header + 20)};
    }
    ADD_FAILURE() << "no section " << a_name;
    return {};
}

void setWord(std::string& a_image, std::size_t a_at, std::uint32_t a_value)
{
    for (int i = 0; i < 4; ++i)
        a_image[a_at + i] = static_cast<char>(a_value >> (24 - 8 * i));
}

class ModernDwarfTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (std::system("command -v powerpc-linux-gnu-gcc >/dev/null 2>&1") != 0)
            GTEST_SKIP() << "powerpc-linux-gnu-gcc not found (install gcc-powerpc-linux-gnu to run this test)";
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/velcor-modern-XXXXXX";
        ASSERT_NE(mkdtemp(&pattern[0]), nullptr);
        m_directory = pattern;
    }
    void TearDown() override
    {
        if (!m_directory.empty())
            std::filesystem::remove_all(m_directory);
    }

    // The executable built from a_source (written as a_file, handed to the
    // compiler by its absolute path when a_absolute), its node "step".
    std::string compile(const std::string& a_source, const std::string& a_flags, const char* a_file = "node.c",
                        bool a_absolute = false)
    {
        std::ofstream(m_directory + "/" + a_file) << a_source;
        const std::string command = "cd '" + m_directory + "' && . '" VELCOR_SOURCE_DIR
                                    "/tests/e2e/cross_compile.sh' && compile_node '" +
                                    (a_absolute ? m_directory + "/" : "") + a_file + "' exe step " + a_flags +
                                    " 2>compile.err";
        EXPECT_EQ(std::system(command.c_str()), 0) << a_source;
        std::ifstream file(m_directory + "/exe", std::ios::binary);
        std::ostringstream bytes;
        bytes << file.rdbuf();
        return bytes.str();
    }

    void map(const std::string& a_image, const char* a_unit = "node.c")
    {
        m_reader.clear();
        readExecutable(m_reader, a_image);
        StreamCapture trace(std::cout);
        m_reader.outMembers("_C_", "step", a_unit);
    }
    std::string mapStop(const std::string& a_image, const char* a_unit = "node.c")
    {
        return stopMessage([&] { map(a_image, a_unit); });
    }
    Cells cells() const
    {
        Cells all;
        for (const auto& pair : m_reader.getMembers())
            all[pair.first] = {pair.second.m_target, pair.second.m_byte_size};
        return all;
    }

    std::string m_directory;
    RunFixture m_run;
    dwarf_debug m_reader;
};

// A structure of what DWARF 1 cannot describe, all of it reached through
// the parameter's typedef; offsets and sizes follow from the declarations.
const char* const WIDE = R"(
enum mode { IDLE, RUNNING, STOPPED };
typedef unsigned char byte;
struct pair { short lo; short hi; };
typedef struct wide {
    _Bool ready;                  /* 0 */
    char tag;                     /* 1 */
    short delta;                  /* 2 */
    float gain;                   /* 4 */
    unsigned count;               /* 8 */
    enum mode mode;               /* 12 */
    byte raw[3];                  /* 16, 17, 18 */
    int grid[2][2];               /* 20 to 32 */
    struct pair pairs[2];         /* 36 to 43 */
    union { int i; float f; } either; /* 44 */
    unsigned low : 4;             /* bits 0-3 of the unit at 48 */
    unsigned high : 12;           /* bits 4-15, same unit */
    int next_word : 20;           /* would cross bit 32: the unit at 52 */
    unsigned char flags : 3;      /* bits 20-22 from 52: the byte at 54 */
    const volatile int *watch;    /* 56 */
    void (*hook)(void);           /* 60 */
    struct pair *pp;              /* 64, and the pair it points to */
    const struct pair fixed;      /* 68, 70 */
    double ratio;                 /* 72 */
    long long big;                /* 80 */
    int flexible[];               /* 88, no element */
} wide_t;

void step(wide_t *w) { w->count++; }
)";

} // namespace

TEST_F(ModernDwarfTest, EveryScalarGetsItsCellWithItsSize)
{
    const Cells expected{cell("MEM[0+C_]", 1),  cell("MEM[1+C_]", 1),  cell("MEM[2+C_]", 2),
                         cell("MEM[4+C_]", 4),  cell("MEM[8+C_]", 4),  cell("MEM[12+C_]", 4),
                         cell("MEM[16+C_]", 1), cell("MEM[17+C_]", 1), cell("MEM[18+C_]", 1),
                         cell("MEM[20+C_]", 4), cell("MEM[24+C_]", 4), cell("MEM[28+C_]", 4),
                         cell("MEM[32+C_]", 4), cell("MEM[36+C_]", 2), cell("MEM[38+C_]", 2),
                         cell("MEM[40+C_]", 2), cell("MEM[42+C_]", 2), cell("MEM[44+C_]", 4),
                         cell("MEM[48+C_]", 4), cell("MEM[52+C_]", 4), cell("MEM[54+C_]", 1),
                         cell("MEM[56+C_]", 4), cell("MEM[60+C_]", 4), cell("MEM[64+C_]", 4),
                         cell("MEM[0+MEM[64+C_]]", 2), cell("MEM[2+MEM[64+C_]]", 2), cell("MEM[68+C_]", 2),
                         cell("MEM[70+C_]", 2), cell("MEM[72+C_]", 8), cell("MEM[80+C_]", 8)};
    for (const char* format : FORMATS) {
        map(compile(WIDE, std::string("-O1 ") + format));
        EXPECT_EQ(cells(), expected) << format;
        // One pair per cell: the bit-fields of one unit share theirs.
        EXPECT_EQ(m_reader.getMembers().size(), expected.size()) << format;
        EXPECT_TRUE(m_reader.hasModernDebugInfo());
    }
}

TEST_F(ModernDwarfTest, MemberOffsetsAreKeptUnderTheNameTheStructureIsReachedBy)
{
    for (const char* format : FORMATS) {
        map(compile(WIDE, std::string("-O0 ") + format));
        // Reached through the typedef, through a pointer to the tag, as the
        // elements of an array; bit-fields at their unit.
        for (const auto& member : std::map<std::string, int>{{"wide_t#count", 8},
                                                             {"wide_t#pairs", 36},
                                                             {"wide_t#high", 48},
                                                             {"wide_t#next_word", 52},
                                                             {"wide_t#flags", 54},
                                                             {"wide_t#flexible", 88},
                                                             {"pair#hi", 2}})
            EXPECT_EQ(m_reader.getOffset(member.first.c_str()), member.second) << member.first << " " << format;
    }
}

TEST_F(ModernDwarfTest, TheParameterMayReachItsStructureInEveryWayCAllows)
{
    const std::string types = "struct state { int a; struct state *self; };\n"
                              "typedef struct state state_t;\ntypedef state_t *handle;\n";
    const Cells expected{cell("MEM[0+C_]", 4), cell("MEM[4+C_]", 4)};
    // The structure is named by the entry the pointer reaches.
    for (const auto& parameter : std::map<std::string, std::string>{{"struct state *s", "state#a"},
                                                                    {"const state_t *s", "state_t#a"},
                                                                    {"handle s", "state_t#a"},
                                                                    {"volatile handle s", "state_t#a"}}) {
        map(compile(types + "int step(" + parameter.first + ") { return s->a; }\n", "-O1 -g"));
        EXPECT_EQ(cells(), expected) << parameter.first;
        EXPECT_EQ(m_reader.getOffset(parameter.second.c_str()), 0) << parameter.first;
    }

    // A node that other code of its unit inlines: its out-of-line copy is
    // described through the inlined one's entries.
    map(compile("typedef struct state { int a; int b; } state_t;\n"
                "void step(state_t *s) { s->a += s->b; }\n"
                "void twice(state_t *s) { step(s); step(s); }\n",
                "-O2 -g"));
    EXPECT_EQ(cells(), (Cells{cell("MEM[0+C_]", 4), cell("MEM[4+C_]", 4)}));
}

TEST_F(ModernDwarfTest, FirstParametersThatDoNotPointToAStructureAreRefused)
{
    const std::string refusal = " ERROR - expects user define type\n";
    const std::string types = "typedef struct state { int a; } state_t;\nunion u { int i; float f; };\n";
    for (const char* parameter : {"int *s", "state_t s", "state_t **s", "union u *s", "void *s"}) {
        EXPECT_EQ(mapStop(compile(types + "void step(" + std::string(parameter) + ") { (void)s; }\n", "-O1 -g")),
                  refusal)
            << parameter;
    }
    // Parameters after the first one do not matter; no parameter maps nothing.
    map(compile(types + "void step(state_t *s, int *p) { s->a = *p; }\n", "-O1 -g"));
    EXPECT_EQ(cells(), (Cells{cell("MEM[0+C_]", 4)}));
    map(compile(types + "int counter;\nvoid step(void) { counter++; }\n", "-O1 -g"));
    EXPECT_TRUE(cells().empty());
}

TEST_F(ModernDwarfTest, TheUnitIsFoundByItsNameOrItsFileName)
{
    const std::string source = "typedef struct state { int a; } state_t;\n"
                               "void step(state_t *s) { s->a = 0; }\n";
    // The compiler keeps the path as it was typed.
    const std::string image = compile(source, "-O1 -g", "node.c", true);
    map(image);
    EXPECT_EQ(cells().size(), 1u);
    map(image, (m_directory + "/node.c").c_str());
    EXPECT_EQ(cells().size(), 1u);
    for (const char* other : {"de.c", "node", "/node.c", "node.c/"})
        EXPECT_EQ(mapStop(image, other), std::string(" compilation entry ") + other + " does not exits\n") << other;

    // The node: an external function of that unit.
    EXPECT_EQ(mapStop(compile("typedef struct state { int a; } state_t;\n"
                              "static void step(state_t *s) { s->a = 0; }\n"
                              "void (*keep)(state_t *) = step;\n",
                              "-O1 -g")),
              "ERROR - no subroutine step in compilation unit\n");
}

TEST_F(ModernDwarfTest, BrokenFilesEndWithAMessage)
{
    const std::string good = compile(WIDE, "-O1 -g");
    const Section info = sectionNamed(good, ".debug_info");
    const std::string prefix = "Cannot read the debugging information of test.elf: ";

    std::string outside = good;
    setWord(outside, info.m_header + 16, static_cast<std::uint32_t>(good.size() - info.m_size + 1));
    EXPECT_EQ(mapStop(outside).rfind(prefix + "section ", 0), 0u);
    EXPECT_NE(mapStop(outside).find(" lies outside the file\n"), std::string::npos);

    // A compressed section whose header promises 2 GB.
    std::string inflating = good;
    setWord(inflating, info.m_header + 8, SHF_COMPRESSED);
    setWord(inflating, info.m_offset, ELFCOMPRESS_ZLIB);
    setWord(inflating, info.m_offset + 4, 0x80000000u);
    EXPECT_NE(mapStop(inflating).find(" inflates to more than 64 MiB\n"), std::string::npos);

    std::string headers = good;
    headers[47] = 41; // the size of a section header
    EXPECT_EQ(mapStop(headers), prefix + "a broken section table\n");

    // The units' list ends early: libdw's reason is given.
    std::string cut = good;
    setWord(cut, info.m_header + 20, 40);
    EXPECT_EQ(mapStop(cut), prefix + "invalid DWARF\n");
}

TEST_F(ModernDwarfTest, TheWalkIsBounded)
{
    // One cell per element, more than the mapping holds.
    EXPECT_EQ(mapStop(compile("typedef struct state { char bytes[100001]; } state_t;\n"
                              "void step(state_t *s) { s->bytes[0] = 0; }\n",
                              "-O1 -g")),
              "Capacity exhausted: more than 100000 mapped memory cells\n");
    // Elements without a cell (empty structures, as GNU C has them).
    EXPECT_EQ(mapStop(compile("struct empty {};\ntypedef struct state { int a; struct empty none[2000000]; } state_t;\n"
                              "void step(state_t *s) { s->a = 0; }\n",
                              "-O1 -g")),
              "Capacity exhausted: more than 1000000 steps through the node's structure\n");
}

// Every truncation of the file and every single-byte change of its
// entries and abbreviations ends in a complete run or an orderly stop; the
// sanitizer build checks that nothing is read or written out of bounds.
TEST_F(ModernDwarfTest, NoSmallCorruptionCrashesTheReader)
{
    for (const char* format : {"-gdwarf-2", "-g"}) {
        const std::string good = compile(WIDE, std::string("-O1 ") + format);
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
        for (std::size_t length = 0; length < good.size(); length += 7)
            run(good.substr(0, length));
        for (const char* name : {".debug_info", ".debug_abbrev"}) {
            const Section section = sectionNamed(good, name);
            for (std::size_t at = section.m_offset; at < section.m_offset + section.m_size; ++at) {
                for (unsigned char change : {0x00, 0xff, 0x80, 0x01}) {
                    std::string bytes = good;
                    bytes[at] = static_cast<char>(change == 0x80 || change == 0x01 ? bytes[at] ^ change : change);
                    run(bytes);
                }
            }
        }
        EXPECT_GT(completed, 0) << format;
    }
}
