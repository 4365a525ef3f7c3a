// SPDX-License-Identifier: MIT
// What the drivers of a machine show: where, with which permissions, and when.
#include "driver/live_driver.hpp"

#include "driver/snapshot.hpp"
#include "memory_tables.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace nimba::sim::test {
namespace {

using Names = std::vector<std::string>;

// A clock that stands until it is set.
class SetClock {
  public:
    LiveDriver::Clock clock() const
    {
        return [this] { return now_.load(); };
    }
    void set(std::chrono::nanoseconds now) { now_ = now; }

  private:
    std::atomic<std::chrono::nanoseconds> now_{std::chrono::hours{5}};
};

TEST(LiveDriver, EveryAdapterHasItsOwnDirectory)
{
    LiveDriver driver{machine_of(R"(
[[adapter]]
chip = "qv-m20"
bus_id = "0000:02:00.0"
card = 10

[[adapter.context]]
pid = 1
handle = 1

[[adapter]]
chip = "nimba-k1"
bus_id = "0000:01:00.0"
card = 1
driver = "none"

[[adapter]]
chip = "nimba-k2"
bus_id = "0000:03:00.0"
card = 3
driver = "none"
context = []
)")};
    EXPECT_EQ(driver.list(""), (Names{"dri", "info", "hwmon", "proc"}));
    EXPECT_EQ(driver.list("dri"), (Names{"10", "3"}));
    EXPECT_EQ(driver.list("dri/10"), Names{"qv"});
    EXPECT_EQ(driver.list("dri/10/qv"), (Names{"info", "heaps", "allocations", "devices"}));
    EXPECT_EQ(driver.list("dri/3/jw"), (Names{"allocations", "devices"}));
    EXPECT_EQ(driver.list("dri/3/jw/allocations"), Names{});
    EXPECT_EQ(driver.list("dri/3/jw/devices"), Names{});
    EXPECT_EQ(driver.list("info"), (Names{"10", "1", "3"}));
    EXPECT_EQ(driver.list("hwmon"), (Names{"10", "1", "3"}));
    EXPECT_EQ(driver.list("hwmon/10"), Names{"hwmon10"});
    EXPECT_EQ(driver.list("proc"), (Names{"gpuinfo_10", "gpuinfo_1", "gpuinfo_3"}));
}

TEST(LiveDriver, NothingIsShownWithoutADirectory)
{
    LiveDriver driver{
        machine_of(adapter("debug = false\ninfo = false\nhwmon = false\nproc = false", ""))};
    EXPECT_EQ(driver.list(""), Names{});
    EXPECT_EQ(driver.look_up("dri"), std::nullopt);
    EXPECT_EQ(driver.look_up(""), (NodeAttributes{true, 0755}));
}

TEST(LiveDriver, NodesHaveThePermissionsOfTheirKind)
{
    LiveDriver driver{machine_of(adapter("unreadable = [\"debug/gc/state\"]", R"(
[adapter.debug]
"gc/state" = "1"
"gc/mode" = "2"

[[adapter.context]]
pid = 1
handle = 1

[[adapter.allocation]]

[[adapter.shape]]
name = "any"

[adapter.generated]
allocations = 1
)"))};
    const NodeAttributes directory{true, 0755};
    const NodeAttributes state{false, 0444};
    for (const char* path :
         {"dri", "dri/2", "dri/2/jw", "dri/2/jw/gc", "dri/2/jw/allocations", "dri/2/jw/devices",
          "dri/2/jw/allocations/1", "dri/2/jw/allocations/2", "dri/2/jw/devices/1"}) {
        EXPECT_EQ(driver.look_up(path), directory) << path;
        EXPECT_EQ(driver.read(path), std::nullopt) << path;
        EXPECT_EQ(driver.write(path, "1"), EISDIR) << path;
    }
    for (const char* path : {"dri/2/jw/allocations/1/info", "dri/2/jw/allocations/2/info",
                             "dri/2/jw/devices/1/info"}) {
        EXPECT_EQ(driver.look_up(path), state) << path;
        EXPECT_EQ(driver.list(path), Names{}) << path;
        EXPECT_EQ(driver.write(path, "size=0\n"), EACCES) << path;
    }
    EXPECT_EQ(driver.look_up("dri/2/jw/gc/mode"), (NodeAttributes{false, 0644}));
    EXPECT_EQ(driver.look_up("dri/2/jw/gc/state"), (NodeAttributes{false, 0}));
}

TEST(LiveDriver, UnreadableDebugDirectoryHasNoPermissions)
{
    LiveDriver driver{machine_of(adapter("unreadable = [\"debug\"]", ""))};
    EXPECT_EQ(driver.look_up("dri/2/jw"), (NodeAttributes{true, 0}));
    EXPECT_EQ(driver.look_up("dri/2"), (NodeAttributes{true, 0755}));
}

TEST(LiveDriver, WhatIsNotThereIsNotFound)
{
    LiveDriver driver{machine_of(adapter("", std::string{kTwoContexts} + R"(
[[adapter.shape]]
name = "any"

[adapter.generated]
allocations = 1
)"))};
    ASSERT_EQ(driver.list("dri/2/jw/allocations"), Names{"1"});
    for (const char* path :
         {"dri/1", "dri/2/jw/allocations/2", "dri/2/jw/allocations/01", "dri/2/jw/allocations/+1",
          "dri/2/jw/allocations/1x", "dri/2/jw/allocations/18446744073709551617",
          "dri/2/jw/allocations/1/size", "dri/2/jw/allocations/1/info/x", "dri/2/jw/allocations2/1",
          "dri/2/jw/devices/2", "dri/2/jw/devices/1/1", "dri/2/jw/none"}) {
        EXPECT_EQ(driver.look_up(path), std::nullopt) << path;
        EXPECT_EQ(driver.list(path), Names{}) << path;
        EXPECT_EQ(driver.read(path), std::nullopt) << path;
    }
    EXPECT_EQ(driver.write("dri/2/jw/none", "1"), ENOENT);
    EXPECT_EQ(driver.write("dri/2/jw/allocations/2/info", "1"), ENOENT);
    EXPECT_EQ(driver.write("dri/2/jw/allocations/1/size", "1"), ENOENT);
}

TEST(LiveDriver, WriteToANodeOfTheMachineFileReplacesItsText)
{
    LiveDriver driver{machine_of(adapter("", "[adapter.debug]\n\"gc/mode\" = \"long text\\n\"\n"))};
    EXPECT_EQ(driver.write("dri/2/jw/gc/mode", "1\n"), 0);
    EXPECT_EQ(driver.read("dri/2/jw/gc/mode"), "1\n");
    EXPECT_EQ(driver.write("dri/2/jw/gc/mode", ""), 0);
    EXPECT_EQ(driver.read("dri/2/jw/gc/mode"), "");
}

TEST(LiveDriver, NodesOfTheMachineFileMayBeAllocationsToo)
{
    LiveDriver driver{machine_of(
        adapter("", "[adapter.debug]\n\"allocations/x/info\" = \"size=1\\n\"\ndevices = \"\"\n"))};
    EXPECT_EQ(driver.list("dri/2/jw"), (Names{"allocations", "devices", "info"}));
    EXPECT_EQ(driver.list("dri/2/jw/allocations"), Names{"x"});
    EXPECT_EQ(driver.read("dri/2/jw/allocations/x/info"), "size=1\n");
    EXPECT_EQ(driver.look_up("dri/2/jw/devices"), (NodeAttributes{false, 0644}));
}

constexpr const char* kLeak = R"(
[[adapter.context]]
pid = 1
handle = 1

[[adapter.shape]]
name = "lost"

[[adapter.leak]]
shape = "lost"
device = 1
per_second = 20
)";

TEST(LiveDriver, TimeBeginsWithTheDriverAndGoesByBetweenCalls)
{
    SetClock clock;
    LiveDriver driver{machine_of(adapter("", kLeak)), clock.clock()};
    const std::chrono::nanoseconds start = std::chrono::hours{5};
    EXPECT_EQ(driver.list("dri/2/jw/allocations"), Names{});
    clock.set(start + std::chrono::milliseconds{49});
    EXPECT_EQ(driver.look_up("dri/2/jw/allocations/1"), std::nullopt);
    clock.set(start + std::chrono::milliseconds{50});
    EXPECT_EQ(driver.look_up("dri/2/jw/allocations/1"), (NodeAttributes{true, 0755}));
    clock.set(start + std::chrono::milliseconds{149});
    EXPECT_EQ(driver.list("dri/2/jw/allocations"), (Names{"1", "2"}));
    clock.set(start + std::chrono::milliseconds{150});
    EXPECT_NE(driver.read("dri/2/jw/allocations/3/info"), std::nullopt);
    clock.set(start + std::chrono::milliseconds{200});
    EXPECT_EQ(driver.write("dri/2/jw/allocations/4/info", ""), EACCES);
}

TEST(LiveDriver, TimeGoesByOnItsOwn)
{
    LiveDriver driver{machine_of(adapter("", kLeak))};
    const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds{60};
    while (driver.list("dri/2/jw/allocations").size() < 3 &&
           std::chrono::steady_clock::now() < give_up) {
        std::this_thread::sleep_for(std::chrono::milliseconds{1});
    }
    EXPECT_GE(driver.list("dri/2/jw/allocations").size(), 3U);
}

TEST(Snapshot, HasEveryNodeInListingOrderEachDirectoryBeforeItsNodes)
{
    LiveDriver driver{machine_of(
        adapter("", "[adapter.debug]\nb = \"2\"\na = \"1\"\n" + std::string{kTwoContexts}))};
    const NodeAttributes directory{true, 0755};
    const NodeAttributes setting{false, 0644};
    const NodeAttributes state{false, 0444};
    EXPECT_EQ(take_snapshot(driver, "dri"),
              (std::vector<SnapshotNode>{
                  {"dri", directory, ""},
                  {"dri/2", directory, ""},
                  {"dri/2/jw", directory, ""},
                  {"dri/2/jw/a", setting, "1"},
                  {"dri/2/jw/b", setting, "2"},
                  {"dri/2/jw/info", setting, "VA=1\n"},
                  {"dri/2/jw/allocations", directory, ""},
                  {"dri/2/jw/devices", directory, ""},
                  {"dri/2/jw/devices/1", directory, ""},
                  {"dri/2/jw/devices/1/info", state, "pid = 4100001\nhandle = 1f\n"},
                  {"dri/2/jw/devices/12", directory, ""},
                  {"dri/2/jw/devices/12/info", state,
                   "pid = 4100002\nhandle = 20\nflags = 0x3\nprocess = a b\n"},
                  {"dri/2/qv", directory, ""},
                  {"dri/2/qv/allocations", directory, ""},
                  {"dri/2/qv/devices", directory, ""},
                  {"dri/2/qv/devices/0000001f", directory, ""},
                  {"dri/2/qv/devices/0000001f/info", state, "pid = 4100001\nhandle = 1f\n"},
                  {"dri/2/qv/devices/0000001f/vm_info", state, ""},
                  {"dri/2/qv/devices/00000020", directory, ""},
                  {"dri/2/qv/devices/00000020/info", state,
                   "pid = 4100002\nhandle = 20\nflags = 0x3\nprocess = a b\n"},
                  {"dri/2/qv/devices/00000020/vm_info", state, ""},
              }));
}

TEST(Snapshot, HasTheNodesOfEachDirectoryInReverseIfWanted)
{
    LiveDriver driver{machine_of(adapter("", "[adapter.debug]\nb = \"2\"\n\"a/c\" = \"3\"\n"))};
    std::vector<std::string> paths;
    for (const SnapshotNode& node : take_snapshot(driver, "dri", SnapshotOrder::kReverseListing)) {
        paths.push_back(node.path);
    }
    EXPECT_EQ(paths, (std::vector<std::string>{
                         "dri", "dri/2", "dri/2/qv", "dri/2/qv/devices", "dri/2/qv/allocations",
                         "dri/2/jw", "dri/2/jw/devices", "dri/2/jw/allocations", "dri/2/jw/info",
                         "dri/2/jw/b", "dri/2/jw/a", "dri/2/jw/a/c"}));
}

}  // namespace
}  // namespace nimba::sim::test
