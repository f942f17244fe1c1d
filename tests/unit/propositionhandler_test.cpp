// The registry that numbers branch conditions.
#include <gtest/gtest.h>

#include "misc/stop.h"
#include "propositionhandler.h"
#include "test_support.h"

TEST(PropositionHandlerTest, KnownNamesKeepTheirOperandAndCapacityEndsTheRun)
{
    RunFixture run(CVC);
    OutputCapture output;
    propositionHandler registry(10);
    EXPECT_EQ(registry.getProposition(0)->constValue(), 1);
    // A name already in the table keeps its operand; the variable uses it.
    TN* stored = run.symbols().addTN(TN_SYM_REG, "p2");
    for (int i = 1; i <= 9; ++i)
        EXPECT_EQ(registry.setNextProposition(new ConstExp(i)), i);
    EXPECT_EQ(registry.getProposition(2)->TNValue(), stored);
    output.clear();
    registry.getProposition(2)->print(false, TARGET, true);
    EXPECT_EQ(output.text(), "p2");
    output.clear();
    try {
        registry.setNextProposition(new ConstExp(7));
        ADD_FAILURE() << "the tenth registration must end the run";
    } catch (const OrderlyStop& stop) {
        EXPECT_STREQ(stop.message(), "Capacity exhausted: more than 9 propositions (m_next_index < m_size)\n");
        EXPECT_EQ(stop.status(), 1);
    }
    EXPECT_EQ(output.text(), "PPPPPPPPPPPPPP proposition index = 97PPPPPPPPPPPPPP \n");
    EXPECT_FALSE(run.symbols().isIn("p10"));
}

TEST(PropositionHandlerTest, ClearedRegistryNumbersAgainWithItsWholeCapacity)
{
    RunFixture run(CVC);
    OutputCapture output;
    propositionHandler registry(4);
    ExpHandle condition = new VarExp("c");
    for (int round = 0; round < 2; ++round) {
        for (int i = 1; i <= 3; ++i)
            EXPECT_EQ(registry.setNextProposition(condition), i);
        EXPECT_EQ(condition.count(), 4);
        registry.clear();
        // It lets go of what it held, and proposition 0 is true again.
        EXPECT_EQ(condition.count(), 1);
        EXPECT_EQ(registry.lastIndex(), 0);
        EXPECT_TRUE(registry.getExp(3).isNull());
        EXPECT_EQ(registry.getProposition(0)->constValue(), 1);
    }
}

TEST(PropositionHandlerTest, PrintAllDecidesConstantConditions)
{
    RunFixture run(CVC);
    OutputCapture output;
    ExpHandle a = new VarExp("a");
    ExpHandle b = new VarExp("b");
    proposition_handler->setNextProposition(new TrinaryExp(IF, new ConstExp(1), a, b));
    proposition_handler->setNextProposition(new TrinaryExp(IF, new ConstExp(0), a, b));
    proposition_handler->setNextProposition(new TrinaryExp(IF, new VarExp("c"), a, b));
    output.clear();
    proposition_handler->printAll(&run.symbols());
    EXPECT_EQ(output.text(), "%----------------Proposition Values \n"
                             "ASSERT p1=a;\n"
                             "ASSERT p2=b;\n"
                             "ASSERT p3= (IF (c) THEN \na ELSE \nb ENDIF) ;\n");
}
