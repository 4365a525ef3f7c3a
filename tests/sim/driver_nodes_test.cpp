// SPDX-License-Identifier: MIT
// The nodes of a driver in its directories in sysfs and in /proc: which there are, with which
// permissions, and what commands do.
#include "driver/live_driver.hpp"
#include "driver/snapshot.hpp"
#include "memory_tables.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

using Names = std::vector<std::string>;

// A load that does not move, so that neither do the figures that follow it.
constexpr const char* kSteady = "[adapter.activity]\nload = 50\nswing = 0\n";

LiveDriver::Clock standing_clock()
{
    return [] { return std::chrono::nanoseconds{0}; };
}

TEST(DriverNodes, EachDirectoryHasThoseOfTheDriverWithTheirPermissions)
{
    LiveDriver driver{machine_of(adapter("", ""))};
    EXPECT_EQ(driver.look_up("info/2"), (NodeAttributes{true, 0755}));
    EXPECT_EQ(driver.look_up("info/2/eclk"), (NodeAttributes{false, 0444}));
    EXPECT_EQ(driver.look_up("info/2/dvfs_level"), (NodeAttributes{false, 0644}));
    EXPECT_EQ(driver.look_up("hwmon/2"), (NodeAttributes{true, 0755}));
    EXPECT_EQ(driver.list("hwmon/2"), Names{"hwmon2"});
    EXPECT_EQ(driver.look_up("hwmon/2/hwmon2/temp1_input"), (NodeAttributes{false, 0444}));
    EXPECT_EQ(driver.look_up("proc/gpuinfo_2"), (NodeAttributes{false, 0444}));
    EXPECT_EQ(driver.look_up("info/1"), std::nullopt);
    EXPECT_EQ(driver.look_up("proc/gpuinfo_1"), std::nullopt);
    EXPECT_EQ(driver.read("info/2"), std::nullopt);
}

TEST(DriverNodes, CommandsChangeWhatIsReadNextUnlessTheyAreMalformed)
{
    LiveDriver driver{machine_of(adapter("", ""))};
    EXPECT_EQ(driver.read("info/2/dvfs_level"), "dvfs_level:balance\n");
    EXPECT_EQ(driver.write("info/2/dvfs_level", "performance\n"), 0);
    EXPECT_EQ(driver.read("info/2/dvfs_level"), "dvfs_level:performance\n");
    EXPECT_EQ(driver.write("info/2/dvfs_level", "odd\n"), EINVAL);
    EXPECT_EQ(driver.write("info/2/dvfs_level", "balance\nlowpower\n"), EINVAL);
    EXPECT_EQ(driver.read("info/2/dvfs_level"), "dvfs_level:performance\n");
}

TEST(DriverNodes, ThoseWithoutCommandsAndDirectoriesRejectEveryCommand)
{
    LiveDriver driver{machine_of(adapter("", ""))};
    EXPECT_EQ(driver.write("info/2/eclk", "1\n"), EACCES);
    EXPECT_EQ(driver.write("hwmon/2/hwmon2/temp1_input", "1\n"), EACCES);
    EXPECT_EQ(driver.write("proc/gpuinfo_2", "1\n"), EACCES);
    EXPECT_EQ(driver.write("info/2", "1\n"), EISDIR);
    EXPECT_EQ(driver.write("info/2/none", "1\n"), ENOENT);
}

TEST(DriverNodes, ChipsWithHeapsShowThemInTheDebugDirectory)
{
    LiveDriver driver{
        machine_of("[[adapter]]\nchip = \"qv-m30\"\nbus_id = \"0000:01:00.0\"\ncard = 7\n"
                   "[[adapter.segment]]\nid = 1\ntotal = 8192\nused = 4096\n")};
    EXPECT_EQ(driver.read("dri/7/qv/heaps/heap_local/info"),
              "Total segment size:  8192\nKMD used segment memory:  4096\n");
    EXPECT_EQ(driver.look_up("info/7/segment_info"), std::nullopt);
}

TEST(DriverNodes, TextsOfTheMachineFileStandInPlaceOfThoseOfTheDriver)
{
    LiveDriver driver{machine_of(adapter("proc = \"Device ID : 1\\n\"", R"(
[adapter.info]
eclk = "none\n"
"vclk/deep" = "1"
own = "2"

[adapter.hwmon]
temp1_input = "20 *C\n"
)"))};
    EXPECT_EQ(driver.read("info/2/eclk"), "none\n");
    EXPECT_EQ(driver.look_up("info/2/eclk"), (NodeAttributes{false, 0644}));
    EXPECT_EQ(driver.write("info/2/eclk", "odd"), 0);
    EXPECT_EQ(driver.read("info/2/eclk"), "odd");
    EXPECT_EQ(driver.list("info/2/vclk"), Names{"deep"});
    EXPECT_EQ(driver.read("info/2/own"), "2");
    EXPECT_EQ(driver.read("hwmon/2/hwmon2/temp1_input"), "20 *C\n");
    EXPECT_EQ(driver.read("proc/gpuinfo_2"), "Device ID : 1\n");
    EXPECT_EQ(driver.write("proc/gpuinfo_2", "1"), EACCES);
    const Names names = driver.list("info/2");
    EXPECT_EQ(names.size(), 31U);  // the 30 of the driver, and "own"
    EXPECT_EQ(std::ranges::count(names, "eclk"), 1);
}

TEST(DriverNodes, MissingOnesAreNotThere)
{
    LiveDriver driver{machine_of(
        adapter("missing = [\"info/eclk\", \"info/own\", \"hwmon\", \"proc\", \"debug/info\"]",
                "[adapter.info]\nown = \"1\"\n"))};
    EXPECT_EQ(driver.look_up("info/2/eclk"), std::nullopt);
    EXPECT_EQ(driver.write("info/2/eclk", "1\n"), ENOENT);
    EXPECT_EQ(driver.look_up("info/2/own"), std::nullopt);
    EXPECT_EQ(driver.list("info/2").size(), 29U);
    EXPECT_EQ(driver.look_up("hwmon"), std::nullopt);
    EXPECT_EQ(driver.look_up("proc"), std::nullopt);
    EXPECT_EQ(driver.list("dri/2/jw"), (Names{"allocations", "devices"}));
}

TEST(DriverNodes, MissingDirectoriesTakeWhatIsBelowAlong)
{
    const std::string qv = "[[adapter]]\nchip = \"qv-m30\"\nbus_id = \"0000:01:00.0\"\ncard = 7\n";
    LiveDriver driver{machine_of(qv + "missing = [\"debug/heaps/heap_local\"]\n")};
    EXPECT_EQ(driver.list("dri/7/qv/heaps"),
              (Names{"heap_invalid", "heap_pcie_unsnoop", "heap_pcie_snoop"}));
    LiveDriver without{machine_of(qv + "missing = [\"debug\"]\n")};
    EXPECT_EQ(without.look_up("dri"), std::nullopt);
    EXPECT_EQ(without.list("").size(), 3U);
}

TEST(DriverNodes, UnreadableOnesHaveNoPermissions)
{
    LiveDriver driver{
        machine_of(adapter("unreadable = [\"info/dvfs_level\", \"hwmon\", \"proc\"]", ""))};
    EXPECT_EQ(driver.look_up("info/2/dvfs_level"), (NodeAttributes{false, 0}));
    EXPECT_EQ(driver.write("info/2/dvfs_level", "lowpower\n"), 0);
    EXPECT_EQ(driver.look_up("hwmon/2/hwmon2"), (NodeAttributes{true, 0}));
    EXPECT_EQ(driver.look_up("hwmon/2"), (NodeAttributes{true, 0755}));
    EXPECT_EQ(driver.look_up("proc/gpuinfo_2"), (NodeAttributes{false, 0}));
}

TEST(DriverNodes, MoveWithTimeAndSoDoTheCounters)
{
    std::chrono::nanoseconds now{0};
    LiveDriver driver{machine_of(adapter("", std::string{kSteady} + "flips = 60\n")),
                      [&] { return now; }};
    EXPECT_EQ(driver.read("info/2/fps_count"), "0 0\n");
    EXPECT_EQ(driver.counters(2).flips, 0);
    now = std::chrono::seconds{2};
    EXPECT_EQ(driver.read("info/2/fps_count"), "120 2000000000\n");
    EXPECT_EQ(driver.counters(2).flips, 120);
    EXPECT_EQ(driver.counters(2).time, 2000000000);
}

TEST(DriverNodes, AccountOfUsageFollowsItsSwitch)
{
    LiveDriver driver{machine_of(adapter("", kSteady)), standing_clock()};
    EXPECT_EQ(driver.read("info/2/engine_3d_usage"), "0\n");
    EXPECT_EQ(driver.write("info/2/enable_usage", "1\n"), 0);
    EXPECT_EQ(driver.read("info/2/engine_3d_usage"), "50\n");
}

// In units of 1000 bytes.
constexpr const char* kSegments = R"(
[[adapter.segment]]
id = 0
total = 1000000

[[adapter.segment]]
id = 1
total = 2000000
used = 3000
)";

TEST(DriverNodes, SegmentsAreInUseByTheAllocationsOfTheMoment)
{
    std::chrono::nanoseconds now{0};
    LiveDriver driver{machine_of(adapter("", std::string{kSegments} + R"(
[[adapter.context]]
pid = 1
handle = 1

[[adapter.allocation]]
size = 8000

[[adapter.allocation]]
size = 5000
segmentid = 1

[[adapter.allocation]]
size = 7000
segmentid = "odd"

[[adapter.allocation]]
size = 7000
segmentid = -1

[[adapter.shape]]
name = "lost"
size = 1000

[[adapter.leak]]
shape = "lost"
device = 1
per_second = 10
segment = 1
)")),
                      [&] { return now; }};
    EXPECT_EQ(
        driver.read("info/2/segment_info"),
        "segment_id:0,total_size:1000,used_size:8\nsegment_id:1,total_size:2000,used_size:8\n");
    now = std::chrono::seconds{1};
    EXPECT_EQ(
        driver.read("info/2/segment_info"),
        "segment_id:0,total_size:1000,used_size:8\nsegment_id:1,total_size:2000,used_size:18\n");
}

TEST(DriverNodes, SegmentIsFreeAgainWhenItsAllocationsAreGone)
{
    std::chrono::nanoseconds now{0};
    LiveDriver driver{machine_of(adapter("", std::string{kSegments} + R"(
[[adapter.context]]
pid = 1
handle = 1

[[adapter.shape]]
name = "picture"
size = 4000
segmentid = 0

[adapter.generated]
allocations = 3

[adapter.change]
vanish = 1
)")),
                      [&] { return now; }};
    EXPECT_EQ(
        driver.read("info/2/segment_info"),
        "segment_id:0,total_size:1000,used_size:12\nsegment_id:1,total_size:2000,used_size:3\n");
    now = std::chrono::seconds{2};
    EXPECT_EQ(
        driver.read("info/2/segment_info"),
        "segment_id:0,total_size:1000,used_size:4\nsegment_id:1,total_size:2000,used_size:3\n");
}

TEST(DriverNodes, SnapshotOfOneFileIsThatFile)
{
    LiveDriver driver{machine_of(adapter("proc = \"Device ID : 1\\n\"", ""))};
    EXPECT_EQ(take_snapshot(driver, "proc/gpuinfo_2"),
              (std::vector<SnapshotNode>{{"proc/gpuinfo_2", {false, 0444}, "Device ID : 1\n"}}));
    EXPECT_EQ(take_snapshot(driver, "proc/gpuinfo_3"), std::vector<SnapshotNode>{});
}

}  // namespace
}  // namespace nimba::sim::test
