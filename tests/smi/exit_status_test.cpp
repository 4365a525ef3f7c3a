// SPDX-License-Identifier: MIT
#include "tools/smi/exit_status.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace nimba::smi {
namespace {

std::vector<Problem> problems(std::initializer_list<ExitStatus> statuses)
{
    std::vector<Problem> result;
    for (const ExitStatus status : statuses) {
        result.push_back({status, std::nullopt, std::nullopt, ""});
    }
    return result;
}

TEST(ExitStatus, IsZeroWithoutProblems)
{
    EXPECT_EQ(overall_status({}), ExitStatus::kOk);
}

TEST(ExitStatus, NumbersAreTheDocumentedOnes)
{
    EXPECT_EQ(static_cast<int>(ExitStatus::kOk), 0);
    EXPECT_EQ(static_cast<int>(ExitStatus::kFailed), 1);
    EXPECT_EQ(static_cast<int>(ExitStatus::kUsage), 2);
    EXPECT_EQ(static_cast<int>(ExitStatus::kNoAdapter), 3);
    EXPECT_EQ(static_cast<int>(ExitStatus::kNoLibrary), 4);
    EXPECT_EQ(static_cast<int>(ExitStatus::kNoLibdrm), 5);
    EXPECT_EQ(static_cast<int>(ExitStatus::kNoPermission), 6);
    EXPECT_EQ(static_cast<int>(ExitStatus::kWorkerLost), 7);
    EXPECT_EQ(static_cast<int>(ExitStatus::kGrowth), 8);
    EXPECT_EQ(static_cast<int>(ExitStatus::kNotTaken), 9);
}

TEST(ExitStatus, GravestProblemDecidesWhereverItStands)
{
    using enum ExitStatus;
    EXPECT_EQ(overall_status(problems({kOk, kGrowth})), kGrowth);
    EXPECT_EQ(overall_status(problems({kGrowth, kNotTaken})), kNotTaken);
    EXPECT_EQ(overall_status(problems({kNotTaken, kNoAdapter})), kNoAdapter);
    EXPECT_EQ(overall_status(problems({kNoAdapter, kNoPermission})), kNoPermission);
    EXPECT_EQ(overall_status(problems({kNoLibdrm, kNoPermission})), kNoLibdrm);
    EXPECT_EQ(overall_status(problems({kNoLibdrm, kWorkerLost})), kWorkerLost);
    EXPECT_EQ(overall_status(problems({kNoLibrary, kWorkerLost})), kNoLibrary);
    EXPECT_EQ(overall_status(problems({kNoLibrary, kUsage})), kUsage);
    EXPECT_EQ(overall_status(problems({kUsage, kWorkerLost, kFailed, kNoAdapter})), kFailed);
}

}  // namespace
}  // namespace nimba::smi
