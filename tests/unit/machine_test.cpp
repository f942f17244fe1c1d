// The translator's core: path conditions per instruction id, guarded values,
// and memory cells addressed through a base register.
#include <gtest/gtest.h>

#include <string>

#include "machine.h"
#include "test_support.h"

namespace {

std::string idsOf(const Machine& a_machine)
{
    std::string ids;
    for (const Annotation& annotation : a_machine.annotations())
        ids += std::to_string(annotation.id()) + " ";
    return ids;
}

} // namespace

TEST(MachineTest, AnnotationsStaySortedAndReplaceTheirId)
{
    RunFixture run;
    OutputCapture capture;
    machine.init(&run.symbols());
    EXPECT_TRUE(machine.getAnnotation(5).isFalse());
    machine.setAnnotation(Annotation(10, DNF(false)), false);
    machine.setAnnotation(Annotation(4, DNF()), false);
    machine.setAnnotation(Annotation(7, DNF(false)), false);
    EXPECT_EQ(idsOf(machine), "0 4 7 10 ");
    machine.setAnnotation(Annotation(7, DNF()), false);
    EXPECT_EQ(idsOf(machine), "0 4 7 10 ");
    EXPECT_TRUE(machine.getAnnotation(7).isTrue());

    EXPECT_TRUE(machine.getAndDeleteFirstAnnotation().isTrue());
    EXPECT_EQ(idsOf(machine), "4 7 10 ");
    machine.getAndDeleteFirstAnnotation();
    machine.getAndDeleteFirstAnnotation();
    machine.getAndDeleteFirstAnnotation();
    EXPECT_TRUE(machine.getAndDeleteFirstAnnotation().isFalse());
}

TEST(MachineTest, GuardedValuesCollapseWhenDecidedOrEqual)
{
    RunFixture run;
    ExpHandle then_part = new VarExp("a");
    ExpHandle else_part = new VarExp("b");
    EXPECT_EQ(machine.mayBeIf(true, false, new ConstExp(1), then_part, else_part).data(), then_part.data());
    EXPECT_EQ(machine.mayBeIf(true, false, new ConstExp(0), then_part, else_part).data(), else_part.data());
    ExpHandle condition = new VarExp("p1");
    EXPECT_EQ(machine.mayBeIf(false, false, condition, then_part, ExpHandle(new VarExp("a"))).data(), then_part.data());
}

TEST(MachineTest, CellsBelowAnyBaseAreTheOldStackPointerAndStackCellsAreAddresses)
{
    RunFixture run;
    OutputCapture capture;
    StreamCapture progress(std::cout);
    machine.init(&run.symbols());
    TN* r9 = run.symbols().addTN(TN_SYM_REG, "r9");
    EXPECT_STREQ(machine.memoryVar(run.symbols().addTN(-4L), r9)->TNName(), "oldSP");
    EXPECT_TRUE(machine.stackVar(run.symbols().addTN(0L))->isAddress());
    EXPECT_EQ(progress.text(), "**Added oldSp since -4\n"
                               "From StackVar \nstack variable name isSTACK0\n");
}
