// SPDX-License-Identifier: MIT
// Which openings a fault befalls: by path, by adapter, by number and by time.
#include "driver/fault_plan.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>
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

TEST_F(FaultPlanTest, AbsencesOfTheDriverAreCountedAndStayCounted)
{
    Fault fault;
    fault.kind = FaultKind::kGone;
    fault.after = 10ms;
    fault.duration = 5ms;
    plan_.add(fault);
    EXPECT_EQ(plan_.absences("dri/0/jw/info"), 0U);
    now_ = 12ms;
    EXPECT_TRUE(plan_.hides("dri/0"));
    EXPECT_FALSE(plan_.hides("dri"));
    EXPECT_EQ(plan_.absences("dri/0/jw/info"), 1U);
    EXPECT_EQ(plan_.absences("dri"), 0U);
    now_ = 20ms;
    EXPECT_FALSE(plan_.hides("dri/0/jw/info"));
    EXPECT_EQ(plan_.absences("dri/0/jw/info"), 1U);
    plan_.clear();
    EXPECT_EQ(plan_.absences("dri/0/jw/info"), 1U);
    fault.card = 1;
    plan_.add(fault);
    now_ = 30ms;
    EXPECT_EQ(plan_.absences("dri/0/jw/info"), 1U);
    EXPECT_EQ(plan_.absences("dri/1/jw/info"), 2U);
}

TEST_F(FaultPlanTest, DirectoryIsThatOfTheFault)
{
    const std::vector<std::string> nodes{"dri/3/jw/eclk", "info/3/eclk", "hwmon/3/hwmon3/eclk",
                                         "proc/gpuinfo_3"};
    const std::vector<std::pair<NodeDirectory, std::string>> places{{NodeDirectory::kDebug, "eclk"},
                                                                    {NodeDirectory::kInfo, "eclk"},
                                                                    {NodeDirectory::kHwmon, "eclk"},
                                                                    {NodeDirectory::kProc, ""}};
    for (std::size_t place = 0; place < places.size(); ++place) {
        Fault fault = open_fault(places[place].second);
        fault.directory = places[place].first;
        fault.card = 3;
        plan_.add(fault);
        for (std::size_t node = 0; node < nodes.size(); ++node) {
            EXPECT_EQ(open_error(nodes[node]), node == place ? EIO : 0) << nodes[node];
        }
        plan_.clear();
    }
}

TEST_F(FaultPlanTest, NodesOfNoAdapterHaveNoFaults)
{
    plan_.add(open_fault(""));
    Fault proc = open_fault("");
    proc.directory = NodeDirectory::kProc;
    plan_.add(proc);
    Fault gone;
    gone.kind = FaultKind::kGone;
    plan_.add(gone);
    for (const char* path : {"", "proc", "proc/3", "proc/gpuinfo_", "proc/gpuinfo_x", "info/x/eclk",
                             "other/3/jw", "hwmon"}) {
        EXPECT_EQ(open_error(path), 0) << path;
        EXPECT_FALSE(plan_.hides(path)) << path;
    }
}

TEST_F(FaultPlanTest, DriverThatIsGoneTakesAllItsDirectoriesAlong)
{
    Fault gone;
    gone.kind = FaultKind::kGone;
    gone.card = 3;
    plan_.add(gone);
    for (const char* path : {"dri/3", "dri/3/jw/info", "info/3", "info/3/eclk", "hwmon/3",
                             "hwmon/3/hwmon3", "hwmon/3/hwmon3/temp1_input", "proc/gpuinfo_3"}) {
        EXPECT_TRUE(plan_.hides(path)) << path;
        EXPECT_EQ(plan_.absences(path), 1U) << path;
    }
    for (const char* path : {"info", "info/4/eclk", "proc/gpuinfo_33"}) {
        EXPECT_FALSE(plan_.hides(path)) << path;
        EXPECT_EQ(plan_.absences(path), 0U) << path;
    }
}

TEST_F(FaultPlanTest, CommandsAreCountedApartFromOpenings)
{
    Fault fault = open_fault("eclk");
    fault.kind = FaultKind::kWrite;
    fault.directory = NodeDirectory::kInfo;
    fault.error = EBUSY;
    fault.times = FaultTimes::kFirst;
    fault.count = 1;
    plan_.add(fault);
    EXPECT_EQ(open_error("info/0/eclk"), 0);
    EXPECT_EQ(plan_.command("dri/0/jw/eclk"), 0);
    EXPECT_EQ(plan_.command("info/0/eclk"), EBUSY);
    EXPECT_EQ(plan_.command("info/0/eclk"), 0);
}

TEST_F(FaultPlanTest, EarliestFaultOfACommandHasItsError)
{
    Fault fault = open_fault("*");
    fault.kind = FaultKind::kWrite;
    fault.error = EPERM;
    plan_.add(fault);
    fault.error = EBUSY;
    plan_.add(fault);
    EXPECT_EQ(plan_.command("dri/0/jw/eclk"), EPERM);
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
