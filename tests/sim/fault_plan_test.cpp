// SPDX-License-Identifier: MIT
// Which openings a fault befalls: by path, by adapter, by number and by time.
#include "driver/fault_plan.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

using namespace std::chrono_literals;

class FaultPlanTest : public ::testing::Test {
  protected:
    int open_error(const std::string& path) { return plan_.open(path, false).open_error; }

    static Fault open_fault(const std::string& path)
    {
        Fault fault;
        fault.path = path;
        return fault;
    }

    FaultPlan::Time now_{0};
    FaultPlan plan_{[this] { return now_; }};
};

TEST_F(FaultPlanTest, StarStandsForOneWholeComponent)
{
    plan_.add(open_fault("allocations/*/info"));
    EXPECT_EQ(open_error("dri/0/jw/allocations/7/info"), EIO);
    EXPECT_EQ(open_error("dri/3/qv/allocations/8/info"), EIO);
    EXPECT_EQ(open_error("dri/0/jw/allocations/7/8/info"), 0);
    EXPECT_EQ(open_error("dri/0/jw/allocations/info"), 0);
    EXPECT_EQ(open_error("dri/0/jw/allocations/7"), 0);
    EXPECT_EQ(open_error("other/0/jw/allocations/7/info"), 0);
}

TEST_F(FaultPlanTest, AdapterIsTheOneOfTheCard)
{
    Fault fault = open_fault("info");
    fault.card = 1;
    plan_.add(fault);
    EXPECT_EQ(open_error("dri/0/jw/info"), 0);
    EXPECT_EQ(open_error("dri/1/jw/info"), EIO);
    EXPECT_EQ(open_error("dri/11/jw/info"), 0);
}

TEST_F(FaultPlanTest, FirstOpeningsOnlyThenTheFaultIsNoMoreListed)
{
    Fault fault = open_fault("info");
    fault.times = FaultTimes::kFirst;
    fault.count = 2;
    plan_.add(fault);
    EXPECT_EQ(open_error("dri/0/jw/info"), EIO);
    EXPECT_EQ(plan_.faults().size(), 1U);
    EXPECT_EQ(open_error("dri/0/jw/info"), EIO);
    EXPECT_EQ(plan_.faults().size(), 0U);
    EXPECT_EQ(open_error("dri/0/jw/info"), 0);
}

TEST_F(FaultPlanTest, EverySecondOpening)
{
    Fault fault = open_fault("info");
    fault.times = FaultTimes::kEvery;
    fault.count = 2;
    plan_.add(fault);
    std::vector<int> errors;
    errors.reserve(6);
    for (int i = 0; i < 6; ++i) {
        errors.push_back(open_error("dri/0/jw/info"));
    }
    EXPECT_EQ(errors, (std::vector<int>{0, EIO, 0, EIO, 0, EIO}));
}

TEST_F(FaultPlanTest, BeginsAndEndsInItsTime)
{
    Fault fault = open_fault("info");
    fault.after = 10ms;
    fault.duration = 5ms;
    plan_.add(fault);
    EXPECT_EQ(open_error("dri/0/jw/info"), 0);
    now_ = 10ms;
    EXPECT_EQ(open_error("dri/0/jw/info"), EIO);
    now_ = 15ms;
    EXPECT_EQ(open_error("dri/0/jw/info"), 0);
    EXPECT_TRUE(plan_.faults().empty());
}

TEST_F(FaultPlanTest, VanishedDirectoryTakesItsNodesAlongForItsTime)
{
    Fault fault = open_fault("allocations/*");
    fault.kind = FaultKind::kVanish;
    fault.duration = 5ms;
    plan_.add(fault);
    EXPECT_FALSE(plan_.hides("dri/0/jw/allocations"));
    EXPECT_TRUE(plan_.hides("dri/0/jw/allocations/7"));
    EXPECT_TRUE(plan_.hides("dri/0/jw/allocations/7/info"));
    now_ = 5ms;
    EXPECT_FALSE(plan_.hides("dri/0/jw/allocations/7/info"));
}

TEST_F(FaultPlanTest, FileThatWasOpenWhenTheDriverWentStaysDead)
{
    Fault fault;
    fault.kind = FaultKind::kGone;
    fault.after = 10ms;
    fault.duration = 5ms;
    plan_.add(fault);
    EXPECT_FALSE(plan_.is_dead("dri/0/jw/info", 0ms));
    now_ = 12ms;
    EXPECT_TRUE(plan_.hides("dri/0"));
    EXPECT_FALSE(plan_.hides("dri"));
    EXPECT_TRUE(plan_.is_dead("dri/0/jw/info", 0ms));
    now_ = 20ms;
    EXPECT_FALSE(plan_.hides("dri/0/jw/info"));
    EXPECT_TRUE(plan_.is_dead("dri/0/jw/info", 0ms));
    EXPECT_FALSE(plan_.is_dead("dri/0/jw/info", 16ms));
}

TEST_F(FaultPlanTest, ClearingBringsEverythingBack)
{
    plan_.add(open_fault("info"));
    Fault gone;
    gone.kind = FaultKind::kGone;
    plan_.add(gone);
    now_ = 1ms;
    plan_.clear();
    EXPECT_FALSE(plan_.hides("dri/0/jw/info"));
    EXPECT_EQ(open_error("dri/0/jw/info"), 0);
    EXPECT_TRUE(plan_.faults().empty());
}

}  // namespace
}  // namespace nimba::sim::test
