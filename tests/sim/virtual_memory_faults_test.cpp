// SPDX-License-Identifier: MIT
// Faults of the nodes that show virtual memory.
#include "driver/fault_plan.hpp"
#include "sim_run.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace nimba::sim::test {
namespace {

// Card 2 has a directory beside the debug directory, card 3 has not.
class VirtualMemoryFaults : public ::testing::Test {
  protected:
    int open_error(const std::string& path) { return plan_.open(path, false).open_error; }

    void add(FaultKind kind, const std::string& path)
    {
        Fault fault;
        fault.kind = kind;
        fault.path = path;
        plan_.add(fault);
    }

    FaultPlan plan_{FaultPlan::monotonic_time, {2}};
};

TEST_F(VirtualMemoryFaults, DirectoryBesideIsQvInTheDebugDirectory)
{
    add(FaultKind::kOpen, "qv/devices/*/vm_info");
    EXPECT_EQ(open_error("dri/2/qv/devices/00000011/vm_info"), EIO);
    EXPECT_EQ(open_error("dri/2/qv/devices/00000011/info"), 0);
    EXPECT_EQ(open_error("dri/3/qv/devices/1/vm_info"), 0);
}

TEST_F(VirtualMemoryFaults, DebugDirectoryOfAQvChipHasItsOwnPaths)
{
    add(FaultKind::kOpen, "devices/*/vm_info");
    EXPECT_EQ(open_error("dri/3/qv/devices/1/vm_info"), EIO);
    EXPECT_EQ(open_error("dri/2/qv/devices/00000011/vm_info"), 0);
}

TEST_F(VirtualMemoryFaults, PathsOfTheDebugDirectoryLeaveTheOneBesideItAlone)
{
    add(FaultKind::kVanish, "allocations");
    EXPECT_TRUE(plan_.hides("dri/2/jw/allocations/1/info"));
    EXPECT_FALSE(plan_.hides("dri/2/qv/allocations/1/vm_info"));
    EXPECT_TRUE(plan_.hides("dri/3/qv/allocations/1/vm_info"));
}

TEST_F(VirtualMemoryFaults, WholeDirectoryBesideVanishes)
{
    add(FaultKind::kVanish, "qv");
    EXPECT_TRUE(plan_.hides("dri/2/qv"));
    EXPECT_TRUE(plan_.hides("dri/2/qv/devices"));
    EXPECT_FALSE(plan_.hides("dri/2/jw"));
    EXPECT_FALSE(plan_.hides("dri/3/qv"));
}

TEST_F(VirtualMemoryFaults, DriverThatIsGoneHasNeitherDirectory)
{
    add(FaultKind::kGone, "");
    EXPECT_TRUE(plan_.hides("dri/2/jw"));
    EXPECT_TRUE(plan_.hides("dri/2/qv/devices/00000011/vm_info"));
}

class VirtualMemoryFaultsInARun : public ::testing::Test {
  protected:
    void SetUp() override
    {
        if (!nimba::test::live_drivers_work(NIMBA_SIM)) {
            GTEST_SKIP() << "no FUSE file system can be mounted here";
        }
    }
};

constexpr const char* kNode = "/sys/kernel/debug/dri/0/qv/devices/00000001/vm_info";

TEST_F(VirtualMemoryFaultsInARun, DumpFailsBehindSomeBytes)
{
    const std::string run = std::string{"sh -c 'nimba-sim fault read \"qv/devices/*/vm_info\" "} +
                            "--bytes 12 --error ENODEV; cat " + kNode + "; echo \"|$?\"'";
    EXPECT_EQ(run_on("default", run).output,
              "0:0: entry acat: " + std::string{kNode} + ": No such device\n|1\n");
}

TEST_F(VirtualMemoryFaultsInARun, NodeVanishes)
{
    EXPECT_EQ(run_on("default",
                     "sh -c 'nimba-sim fault vanish \"qv/*/*/vm_info\"; cd "
                     "/sys/kernel/debug/dri/0/qv; ls devices/* allocations/1'")
                  .output,
              "allocations/1:\n\ndevices/00000001:\ninfo\n");
}

TEST_F(VirtualMemoryFaultsInARun, NodesOfAQvChipFailUnderTheirOwnPaths)
{
    EXPECT_EQ(run_on("fifty-contexts",
                     "sh -c 'nimba-sim fault open devices/7/vm_info --error ENOMEM; cd "
                     "/sys/kernel/debug/dri/1/qv/devices; cat 7/vm_info 7/info 8/vm_info'")
                  .output,
              "cat: 7/vm_info: Cannot allocate memory\npid = 4100001\nhandle = 1007\n");
}

TEST_F(VirtualMemoryFaultsInARun, DumpIsTheSameInReadsOfAnySize)
{
    const std::string look =
        "sh -c 'cd /sys/kernel/debug/dri/0/qv/devices/00000011; dd bs=7 if=vm_info 2>/dev/null | "
        "cmp - vm_info && dd bs=333333 if=vm_info 2>/dev/null | cmp - vm_info && wc -l <vm_info'";
    EXPECT_EQ(run_on("page-tables", look).output, "2756\n");
}

}  // namespace
}  // namespace nimba::sim::test
