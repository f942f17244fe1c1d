// The translator's core: path conditions per instruction id, guarded values,
// memory and stack cells, and the collection of one instruction's operands.
#include <gtest/gtest.h>

#include <string>

#include "machine.h"
#include "misc/stop.h"
#include "rawtransition.h"
#include "test_support.h"

namespace {

std::string idsOf(const Machine& a_machine)
{
    std::string ids;
    for (const Annotation& annotation : a_machine.annotations())
        ids += std::to_string(annotation.id()) + " ";
    return ids;
}

ExpHandle num(int a_value)
{
    return new ConstExp(a_value);
}

} // namespace

TEST(MachineTest, InitRegistersTheConditionBitsAndTheEntryPath)
{
    RunFixture run;
    OutputCapture capture;
    machine.init(&run.symbols());
    EXPECT_EQ(capture.text(),
              "%------------------Annotation id 0\n%c0true\n%------------------end print annotation \n%c0true\n");
    EXPECT_TRUE(machine.getAnnotation(0).isTrue());
    EXPECT_TRUE(machine.getAnnotation(5).isFalse());
    EXPECT_EQ(idsOf(machine), "0 ");
    ASSERT_NE(run.symbols().getTN("cr31"), nullptr);
    EXPECT_TRUE(run.symbols().getTN("cr00")->isLogical());
    EXPECT_EQ(run.symbols().getTN("cr32"), nullptr);
}

TEST(MachineTest, AnnotationsStaySortedAndReplaceTheirId)
{
    RunFixture run;
    OutputCapture capture;
    machine.init(&run.symbols());
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

TEST(MachineTest, GuardedValues)
{
    RunFixture run;
    ExpHandle then_part = new VarExp("a");
    ExpHandle else_part = new VarExp("b");
    EXPECT_EQ(machine.mayBeIf(true, false, num(1), then_part, else_part).data(), then_part.data());
    EXPECT_EQ(machine.mayBeIf(true, false, num(0), then_part, else_part).data(), else_part.data());
    ExpHandle condition = new VarExp("p1");
    EXPECT_EQ(machine.mayBeIf(false, false, condition, then_part, ExpHandle(new VarExp("a"))).data(), then_part.data());
    ExpHandle guarded = machine.mayBeIf(false, false, condition, then_part, else_part);
    ASSERT_TRUE(guarded->isIf());
    EXPECT_EQ(guarded->operand(1).data(), condition.data());
    EXPECT_EQ(guarded->operand(3).data(), else_part.data());

    EXPECT_TRUE(Machine::isBranch(bl));
    EXPECT_TRUE(Machine::isBranch(bclr));
    EXPECT_FALSE(Machine::isBranch(mtspr));
    EXPECT_FALSE(Machine::isBranch(mfspr));
}

TEST(MachineTest, MemoryAndStackCells)
{
    RunFixture run;
    OutputCapture capture;
    StreamCapture progress(std::cout);
    machine.init(&run.symbols());
    TN* eight = run.symbols().addTN(8L);
    TN* minus_four = run.symbols().addTN(-4L);
    TN* r9 = run.symbols().addTN(TN_SYM_REG, "r9");

    EXPECT_STREQ(machine.memoryVar(eight)->TNName(), "MEM[8]");
    EXPECT_STREQ(machine.memoryVar(eight, r9)->TNName(), "MEM[8+r9]");
    EXPECT_STREQ(machine.memoryVar(minus_four, r9)->TNName(), "oldSP");
    TN* cell = machine.memoryVar(eight, r9);
    EXPECT_EQ(cell, run.symbols().getTN("MEM[8+r9]"));

    TN* stack = machine.stackVar(run.symbols().addTN(0L));
    EXPECT_STREQ(stack->TNName(), "STACK0");
    EXPECT_TRUE(stack->isAddress());
    TN* below = machine.stackVar(run.symbols().addTN(-8L));
    EXPECT_STREQ(below->TNName(), "oldSP");
    EXPECT_FALSE(below->isAddress());

    EXPECT_TRUE(machine.isSp(run.symbols().addTN(TN_SYM_REG, "r1")));
    EXPECT_FALSE(machine.isSp(r9));
    EXPECT_EQ(progress.text(), "**Added oldSp since -4\n"
                               "From StackVar \nstack variable name isSTACK0\n"
                               "From StackVar \n"
                               "DEBUG From isSp : r1\nDEBUG From isSp : r9\n");
    EXPECT_EQ(machine.getUnknownMemory(), 1);
    EXPECT_EQ(machine.getUnknownMemory(), 2);
}

TEST(RawTransitionTest, OperandsBeforeTheOpcodeAreDestinations)
{
    RunFixture run;
    OutputCapture capture;
    StreamCapture progress(std::cout);
    StreamCapture errors(std::cerr);
    machine.init(&run.symbols());
    raw_transition.initRawTransition();
    EXPECT_EQ(raw_transition.getTransition()->size(), 0u);
    EXPECT_EQ(raw_transition.getTransition()->getMaxRegister(), 37);

    // stw r5,8(r9) at offset 0: the displacement form fills two entries.
    raw_transition.addOperand(*run.symbols().addTN(0L));
    raw_transition.addOperation(stw);
    raw_transition.addOperand(*run.symbols().addTN(TN_SYM_REG, "r5"));
    raw_transition.addOperand(*run.symbols().addTN(8L));
    raw_transition.addOperand(*run.symbols().addTN(TN_SYM_REG, "r9"));
    raw_transition.endOperation();
    EXPECT_FALSE(raw_transition.getTransition()->isIn("MEM[8+r9]"));

    // After an instruction the next operand is a destination again; ten
    // operands fit, an eleventh ends the run.
    raw_transition.addOperand(*run.symbols().addTN(16L));
    for (int i = 1; i < RawTransition::MAX_OPERANDS; ++i)
        raw_transition.addOperand(*run.symbols().addTN(static_cast<long>(i)));
    try {
        raw_transition.addOperand(*run.symbols().addTN(99L));
        FAIL() << "an eleventh operand was accepted";
    } catch (const OrderlyStop& stop) {
        EXPECT_STREQ(stop.message(), "Too many operands (m_operands_count < 10) at offset 16\n");
    }
}
