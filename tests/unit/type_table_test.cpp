// Source types and variables: member lookups through renamings, member
// declarations under memory names, the offset walk, and the variable table
// as the transition's declarations see it.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "executable_support.h"
#include "transition.h"
#include "type_table.h"

namespace {

struct Member {
    const char* m_name;
    const char* m_type;
    int m_offset;
    bool m_pointer = false;
};

class TypeTableTest : public ::testing::Test {
protected:
    TypeTableTest() { type_table = &m_types; }
    ~TypeTableTest() override
    {
        type_table = nullptr;
        symbol_table = nullptr;
    }

    typeSymbol* structure(const char* a_name, std::initializer_list<Member> a_members)
    {
        typeSymbol* type = new typeSymbol(a_name, structure_type);
        for (const Member& member : a_members)
            type->addMember(member.m_name, member.m_type, member.m_pointer)->setOffset(member.m_offset);
        m_types.addType(type);
        return type;
    }
    typeSymbol* renaming(const char* a_name, const char* a_target)
    {
        typeSymbol* type = new typeSymbol(a_name, renaming_type);
        type->setRenamedType(a_target);
        m_types.addType(type);
        return type;
    }
    static std::vector<int> walk(typeSymbol* a_type)
    {
        a_type->initMembersIter();
        std::vector<int> offsets{a_type->getNextMemberOffset()};
        while (offsets.size() < 20 && offsets.back() != -1)
            offsets.push_back(a_type->getNextMemberOffset());
        return offsets;
    }

    RunFixture m_run;
    typeTable m_types;
    symbolTable m_symbols;
};

} // namespace

TEST_F(TypeTableTest, MemberLookupsFollowRenamingChains)
{
    structure("s", {{"a", "int", 0}, {"b", "float", 4}});
    EXPECT_EQ(renaming("S", "s")->getMemberOffset("b"), 4);
    typeSymbol* chain = renaming("SS", "S");
    EXPECT_EQ(chain->getMemberOffset("b"), 4);
    EXPECT_STREQ(chain->getMemberType("a"), "int");
    EXPECT_EQ(chain->getMemberType("c"), nullptr);
    EXPECT_EQ(renaming("L", "lost")->getMemberOffset("a"), -1);

    typeSymbol* x = renaming("X", "Y");
    typeSymbol* y = renaming("Y", "Z");
    renaming("Z", "Y");
    EXPECT_EQ(stopMessage([&] { x->getMemberOffset("a"); }), "Renaming cycle through type Y\n");
    y->setRenamedType("Y");
    EXPECT_EQ(stopMessage([&] { y->initMembersIter(); }), "Renaming cycle through type Y\n");
}

TEST_F(TypeTableTest, MembersAreDeclaredUnderTheMappingsMemoryNames)
{
    typeSymbol* s = structure("S", {{"a", "int", 0}, {"in", "inner", 8}});
    structure("inner", {{"x", "int", 4}});
    s->declareAllMembers(true, "C_", true, &m_symbols);
    EXPECT_EQ(m_symbols.size(), 3u);
    for (const char* name : {"MEM[0+C_]", "MEM[8+C_]", "MEM[12+C_]"})
        EXPECT_NE(m_symbols.getSymbol(name), nullptr) << name;
    const CTn* x = m_symbols.getSymbol("MEM[12+C_]");
    EXPECT_STREQ(x->getTypeName(), "int");
    EXPECT_TRUE(x->getLocal() && !x->isPointer());

    // Pointers are declared but not followed; an unknown type is a cell.
    structure("T", {{"p", "S", 4, true}, {"u", "unknown", 16}});
    renaming("RT", "T")->declareAllMembers(false, "MEM[4+r3]", false, &m_symbols);
    EXPECT_EQ(m_symbols.size(), 5u);
    EXPECT_TRUE(m_symbols.getSymbol("MEM[8+r3]")->isPointer());
    EXPECT_FALSE(m_symbols.getSymbol("MEM[20+r3]")->getLocal());
}

TEST_F(TypeTableTest, NamesThatCannotBeExtendedDeclareNothing)
{
    typeSymbol* s = structure("S", {{"a", "int", 4}});
    StreamCapture out(std::cout);
    StreamCapture err(std::cerr);
    s->declareAllMembers(false, "C_", false, &m_symbols);
    s->declareAllMembers(false, "MEM[x+C_]", false, &m_symbols);
    EXPECT_EQ(m_symbols.size(), 0u);
    EXPECT_EQ(out.text(), "NOT GOOD in type_table\n");
    EXPECT_EQ(err.text(), "ERROR2: Cannot scan MEM[x+C_]\n");

    const std::string base(400, 'r');
    s->declareAllMembers(false, ("MEM[10+" + base + "]").c_str(), false, &m_symbols);
    EXPECT_NE(m_symbols.getSymbol(("MEM[14+" + base + "]").c_str()), nullptr);
}

TEST_F(TypeTableTest, DeclaredNamesAgreeWithTheParameterMapping)
{
    readExecutable(dwarf_debug_o, mkdwarf::build("unit node.c\n  typedef S struct s\n  struct s\n"
                                                 "    member a int at 0\n    member in struct inner at 8\n"
                                                 "    member p pointer T at 16\n  end\n"
                                                 "  struct inner\n    member x int at 0\n    member y int at 4\n  end\n"
                                                 "  typedef T struct t\n  struct t\n    member z int at 0\n  end\n"
                                                 "  subroutine step\n    parameter s pointer S\n  end\nend\n"));
    StreamCapture trace(std::cout);
    dwarf_debug_o.outMembers("_C_", "step", "node.c");
    // The same structure by hand, its offsets taken from the mapping's table.
    typeSymbol* s = structure("S", {{"a", "int", -1}, {"in", "inner", -1}, {"p", "T", -1, true}});
    typeSymbol* t = structure("T", {{"z", "int", -1}});
    for (typeSymbol* type : {s, structure("inner", {{"x", "int", -1}, {"y", "int", -1}}), t})
        type->updateOffsets();
    EXPECT_NE(trace.text().find("Get offset of S#p: offset=16\nGet offset of inner#x: offset=0\n"), std::string::npos);

    symbolTable target;
    s->declareAllMembers(false, "C_", true, &m_symbols);
    s->declareAllMembers(false, "r3", true, &target);
    t->declareAllMembers(false, "MEM[16+C_]", true, &m_symbols);
    t->declareAllMembers(false, "MEM[16+r3]", true, &target);
    const t_members& pairs = dwarf_debug_o.getMembers();
    EXPECT_EQ(pairs.size(), 5u);
    EXPECT_EQ(m_symbols.size(), pairs.size());
    EXPECT_EQ(target.size(), pairs.size());
    for (const auto& pair : pairs) {
        EXPECT_NE(m_symbols.getSymbol(pair.first.c_str()), nullptr) << pair.first;
        EXPECT_NE(target.getSymbol(pair.second.m_target.c_str()), nullptr) << pair.second.m_target;
    }
}

TEST_F(TypeTableTest, OffsetWalkDescendsIntoMembersHeldByValue)
{
    typeSymbol* s = structure("S", {{"a", "int", 0}, {"p", "S", 4, true}, {"in", "inner", 8}});
    structure("inner", {{"x", "int", 4}, {"q", "inner", 12, true}, {"deep", "D", 16}});
    structure("D", {{"d", "int", 0}, {"r", "int", 8, true}});
    const std::vector<int> expected{0, 4, 8, 20, 24, 32, -1};
    EXPECT_EQ(walk(s), expected);
    EXPECT_EQ(walk(renaming("RS", "S")), expected);
    EXPECT_EQ(walk(structure("E", {})), std::vector<int>{-1});
}

TEST_F(TypeTableTest, AStructureHoldingItselfByValueIsRefused)
{
    typeSymbol* s = structure("S", {{"a", "int", 0}, {"in", "inner", 4}});
    structure("inner", {{"back", "RS", 0}});
    renaming("RS", "S");
    const char* refusal = "Type S contains itself by value\n";
    EXPECT_EQ(stopMessage([&] { s->declareAllMembers(false, "C_", true, &m_symbols); }), refusal);
    EXPECT_EQ(stopMessage([&] { walk(s); }), refusal);
    // S is not left marked as being expanded: a new attempt again declares
    // the two cells before the refusal.
    symbolTable again;
    EXPECT_EQ(stopMessage([&] { s->declareAllMembers(false, "C_", true, &again); }), refusal);
    EXPECT_EQ(again.size(), 2u);
}

TEST_F(TypeTableTest, LocalVariablesAreNotDeclaredWithTheTransition)
{
    OutputCapture output;
    StreamCapture names(std::cout);
    Transition t;
    for (const char* name : {"c", "b", "a"})
        t.assign(name, new VarExp(name));
    auto declarations = [&] {
        output.clear();
        t.printAll(false, true);
        return output.text().substr(0, output.text().find("%BEGIN-QUERIES"));
    };
    EXPECT_EQ(declarations(), "%Print Declarations \na: REAL;\n a: REAL;\nb: REAL;\n b: REAL;\nc: REAL;\n c: REAL;\n");
    m_symbols.addSymbol(new CTn(true, "int", "a", false));
    m_symbols.addSymbol(new CTn(false, "int", "b", false));
    symbol_table = &m_symbols;
    std::string with_table = declarations();
    symbol_table = nullptr;
    EXPECT_EQ(with_table, "%Print Declarations \nb: REAL;\n b: REAL;\nc: REAL;\n c: REAL;\n");
}
