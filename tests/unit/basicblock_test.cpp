// Basic blocks: kind and neighbour lists, the copied transition, and the
// invariants a block hands to its successors.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "basicblock.h"
#include "misc/stop.h"
#include "test_support.h"

namespace {

std::string stopMessage(const std::function<void()>& a_action)
{
    try {
        a_action();
    } catch (const OrderlyStop& stop) {
        return stop.message();
    }
    return "(no stop)";
}

} // namespace

TEST(BasicBlockTest, NeighbourListsAndTheirCapacity)
{
    RunFixture run;
    BasicBlock block(4, 1, 0, &run.symbols());
    EXPECT_EQ(block.Type(), NORMAL);
    EXPECT_STREQ(block.label(), "");
    EXPECT_EQ(block.numPreds() + block.numSuccs(), 0u);

    block.addSucc(3);
    block.addSucc(5);
    block.addSucc(0);
    EXPECT_EQ(block.numSuccs(), 0u);
    block.addSucc(7);
    ASSERT_EQ(block.numSuccs(), 1u);
    EXPECT_EQ(block.BeginSuccs()[0], 7u);

    BasicBlock full(0, 1, 0, &run.symbols());
    for (unsigned n = 1; n <= 100; ++n) {
        full.addPred(n);
        full.addSucc(n);
    }
    EXPECT_EQ(full.BeginPreds()[99], 100u);
    EXPECT_EQ(stopMessage([&] { full.addPred(101); }),
              "Capacity exhausted: more than 100 predecessors (m_num_preds <= (100))\n");
    EXPECT_EQ(stopMessage([&] { full.addSucc(101); }),
              "Capacity exhausted: more than 100 successors (m_num_succs <= (100))\n");
}

TEST(BasicBlockTest, TransitionIsACopyAndInvariantsReachEverySuccessor)
{
    RunFixture run(CVC);
    TN* r3 = run.symbols().addTN(TN_SYM_REG, "r3");
    BasicBlock first(1, 1, 0, &run.symbols());
    BasicBlock second(2, 1, 0, &run.symbols());
    BasicBlock third(3, 1, 0, &run.symbols());

    Transition t;
    t.assign("MEM[8]", new ConstExp(1));
    t.assign("r3", new ConstExp(5));
    first.setTransition(&t);
    t.assign("MEM[12]", new ConstExp(2));
    EXPECT_EQ(first.getTransition()->size(), 2u);

    BasicBlock* blocks[4] = {nullptr, &first, &second, &third};
    first.addSucc(2);
    first.addSucc(3);
    first.produceInvarients(&run.symbols());
    first.pushInvarients(blocks);
    EXPECT_EQ(first.getState()->data().size(), 2u);
    EXPECT_EQ(second.getState()->getExp(r3)->constValue(), 5);
    EXPECT_EQ(third.getState()->getExp("MEM[8]")->constValue(), 1);
}
