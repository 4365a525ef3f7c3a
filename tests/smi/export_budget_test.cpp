// SPDX-License-Identifier: MIT
#include "tools/smi/export/budget.hpp"

#include <gtest/gtest.h>

namespace nimba::smi::exporting {
namespace {

using namespace std::chrono_literals;

TEST(ExportBudget, IsTwiceTheDeadlineForAllAndNoMoreThanItForOne)
{
    Budget budget{2000ms};
    EXPECT_EQ(budget.for_next(), 2000ms);
    budget.spend(1900ms, 2000ms, false);
    EXPECT_EQ(budget.for_next(), 2000ms);
    budget.spend(1900ms, 2000ms, false);
    EXPECT_EQ(budget.for_next(), 200ms);
    budget.spend(150ms + 300us, 200ms, false);
    EXPECT_EQ(budget.for_next(), 49ms);
}

TEST(ExportBudget, WhenItIsSpentNothingIsLeftHoweverLateTheLastAnswerCame)
{
    Budget budget{500ms};
    budget.spend(400ms, 500ms, false);
    budget.spend(1300ms, 500ms, false);
    EXPECT_EQ(budget.for_next(), 0ms);
}

TEST(ExportBudget, ALostCollectorPaysItsDeadlineAndNotTheSecondBehindIt)
{
    Budget budget{400ms};
    budget.spend(1400ms, 400ms, true);
    EXPECT_EQ(budget.for_next(), 400ms);
    budget.spend(1500ms, 400ms, true);
    EXPECT_EQ(budget.for_next(), 0ms);
}

TEST(ExportBudget, OneThatDiesPaysWhatItTook)
{
    Budget budget{400ms};
    budget.spend(500ms, 400ms, false);
    budget.spend(30ms, 300ms, true);
    EXPECT_EQ(budget.for_next(), 270ms);
}

// However the collectors share it, they take no more than twice the deadline and two seconds, of
// which a lost one takes one beyond its own time, and the last answer may come as late.
TEST(ExportBudget, NineCollectorsThatAnswerJustInTimeTakeTwiceTheDeadlineAndOneSecond)
{
    Budget budget{2000ms};
    auto sum = 0ms;
    int asked = 0;
    for (int collector = 0; collector < 9; ++collector) {
        const auto allowed = budget.for_next();
        if (allowed > 0ms) {
            ++asked;
            sum += allowed + 999ms;
            budget.spend(allowed + 999ms, allowed, false);
        }
    }
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(sum, 4999ms);
}

}  // namespace
}  // namespace nimba::smi::exporting
