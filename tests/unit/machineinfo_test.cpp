// Machine information: block kinds, the one-entry tables, and the texts of
// the record and of the mapping printers.
#include <gtest/gtest.h>

#include "machineinfo.h"
#include "test_support.h"

TEST(MachineInfoTest, BlockKindsMemoryCellsAndRotatingRegisters)
{
    // A block's kind is the first of its flags found, in the order tested here.
    EXPECT_EQ(machineInfo::setBlockType(0), NORMAL);
    EXPECT_EQ(machineInfo::setBlockType(0x400 | 0x1), SWP);
    EXPECT_EQ(machineInfo::setBlockType(0x40000 | 0x20000), SWP_PROLOGUE);
    EXPECT_EQ(machineInfo::setBlockType(0x20000 | 0x1), SWP_EPILOGUE);
    EXPECT_EQ(machineInfo::setBlockType(0x5), ENTRY_BLOCK);
    EXPECT_EQ(machineInfo::setBlockType(0x200 | 0x4), LOOP_BODY);
    EXPECT_EQ(machineInfo::setBlockType(0x4000 | 0x4), LOOP_PRO_EPI);
    EXPECT_EQ(machineInfo::setBlockType(0x4), EXIT);

    RunFixture run;
    EXPECT_TRUE(machineInfo::isPrintable("MEMX"));
    EXPECT_FALSE(machineInfo::isPrintable("ME"));
    EXPECT_FALSE(machineInfo::isRotating(run.symbols().addTN(TN_SYM_REG, "r31")));
    EXPECT_TRUE(machineInfo::isRotating(run.symbols().addTN(TN_SYM_REG, "r32")));
    EXPECT_TRUE(machineInfo::isRotating(run.symbols().addTN(TN_SYM_REG, "r37")));
    EXPECT_FALSE(machineInfo::isRotating(run.symbols().addTN(TN_SYM_REG, "r38")));
    EXPECT_FALSE(machineInfo::isRotating(run.symbols().addTN(TN_CONST, 33)));
}

TEST(MachineInfoTest, TablesHoldOneEntry)
{
    machineInfo info;
    info.setMaxRegister(0);
    EXPECT_EQ(info.getMaxRegister(), 37);
    EXPECT_EQ(info.getFirstGlobal(), nullptr);
    info.setGlobal("g", "r9");
    info.setGlobal("h", "r10");
    info.addStored("c", "z");
    info.addStored("d", "w");
    EXPECT_EQ(info.globalNumber(), 1);
    EXPECT_STREQ(info.globalArrays()[0].symbol, "g");
    EXPECT_EQ(info.numberOfStored(), 1);
    EXPECT_STREQ(info.storedArray()[0].first, "c");
}

TEST(MachineInfoTest, RecordAndMappingTexts)
{
    RunFixture run(CVC);
    OutputCapture out;
    machineInfo target;
    machineInfo source;
    target.print();
    EXPECT_EQ(out.text(), " Machine info: \n m_global_number = 0\n LC = 0 EC = 0\n");

    out.clear();
    target.setInitialEC(new ConstExp(3));
    mapRegisters(&target, &source, ' ', 0);
    mapRegisters(&target, &source, ' ', 2);
    EXPECT_EQ(out.text(), "% Map lc register of source \ntarXlc+tarXec-3+0=sarXlc AND PtarXlc+PtarXec-3+1=PsarXlc"
                          "% Map lc register of source \ntarXlc+tarXec-1=sarXlc AND PtarXlc+PtarXec-1=PsarXlc");

    setOutFormat(ICS);
    out.clear();
    source.addLoaded("a", "x");
    target.addLoaded("b", "y");
    source.addStored("c", "x");
    mapLoaded(&target, &source, ' ');
    mapStored(&target, &source, ' ');
    EXPECT_EQ(out.text(), "% MAPPING Source Stores to Target Stores\n( sa= tb)\n"
                          "% MAPPING Source Stores to Target Stores\n");

    out.clear();
    source.setGlobal("g", "r9");
    target.setGlobal("h", "r9");
    machineInfo same;
    same.setGlobal("g", "r4");
    mapGlobals(&target, &source, ' ');
    mapGlobals(&same, &source, ' ');
    EXPECT_EQ(out.text(), "% Begin of Globals Mapping\n%End of Globals Mapping\n"
                          "% Begin of Globals Mapping\n( sg= tg)\n%End of Globals Mapping\n");
}
