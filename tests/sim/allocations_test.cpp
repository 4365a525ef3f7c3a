// SPDX-License-Identifier: MIT
// How the allocations that the simulation makes come and go.
#include "driver/allocations.hpp"

#include "driver/live_driver.hpp"
#include "machine_of.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace nimba::sim::test {
namespace {

using Names = std::vector<std::string>;

Machine machine_with(const std::string& tables)
{
    return machine_of(R"(
[[adapter]]
chip = "nimba-k3"
bus_id = "0000:01:00.0"
card = 0

[[adapter.context]]
pid = 1
handle = 21

[[adapter.context]]
pid = 2
handle = 22

[[adapter.shape]]
name = "wide"
weight = 3
width = 1000

[[adapter.shape]]
name = "narrow"
width = 10
segmentid = 9
)" + tables);
}

VideoMemory memory_with(const std::string& tables)
{
    return machine_with(tables).adapters.at(0).video_memory;
}

// The value behind a key in an allocation's node.
std::string value_of(const Allocations& allocations, const std::string& entry,
                     const std::string& key)
{
    const std::string text = fmt::format("\n{}", allocations.info(entry).value());
    const std::size_t start = text.find(fmt::format("\n{}=", key)) + key.size() + 2;
    return text.substr(start, text.find('\n', start) - start);
}

// How often each value is behind a key.
std::map<std::string, int> values_of(const Allocations& allocations, const std::string& key)
{
    std::map<std::string, int> counts;
    for (const std::string& entry : allocations.list()) {
        ++counts[value_of(allocations, entry, key)];
    }
    return counts;
}

// All that there is, in listing order.
std::string everything(const Allocations& allocations)
{
    std::string text;
    for (const std::string& entry : allocations.list()) {
        text += entry + ":\n" + allocations.info(entry).value();
    }
    return text;
}

constexpr const char* kChange = R"(
[adapter.generated]
allocations = 50

[adapter.change]
appear = 70
vanish = 60
live = 100
segments = [0, 1]
)";

TEST(Allocations, AreDrawnFromTheShapesDevicesAndSegmentsOfTheirTable)
{
    const VideoMemory memory = memory_with(R"(
[adapter.generated]
allocations = 1000
devices = [22]
segments = [4, -1]
)");
    const Allocations allocations{memory, true};
    EXPECT_EQ(allocations.list().size(), 1000U);
    const auto widths = values_of(allocations, "width");
    ASSERT_EQ(widths.size(), 2U);
    EXPECT_NEAR(widths.at("1000"), 750, 60);
    EXPECT_EQ(values_of(allocations, "device"), (std::map<std::string, int>{{"22", 1000}}));
    const auto segments = values_of(allocations, "segmentid");
    ASSERT_EQ(segments.size(), 3U);
    EXPECT_EQ(segments.at("9"), widths.at("10"));
    EXPECT_NEAR(segments.at("4"), segments.at("-1"), 120);
}

TEST(Allocations, AreOfNamedShapesOnly)
{
    const VideoMemory memory =
        memory_with("[adapter.generated]\nallocations = 100\nshapes = [\"narrow\"]\n");
    EXPECT_EQ(values_of(Allocations{memory, true}, "width"),
              (std::map<std::string, int>{{"10", 100}}));
}

TEST(Allocations, AreTheSameForTheSameSeedOnEveryMachine)
{
    const VideoMemory memory = memory_with("[adapter.generated]\nallocations = 8\nseed = 4\n");
    const Allocations allocations{memory, true};
    std::string draws;
    for (const std::string& entry : allocations.list()) {
        draws += value_of(allocations, entry, "width") + "/" +
                 value_of(allocations, entry, "device") + " ";
    }
    EXPECT_EQ(draws, "10/21 1000/22 1000/21 1000/21 10/22 10/21 10/21 1000/21 ");
}

TEST(Allocations, DifferWithTheSeed)
{
    const VideoMemory one = memory_with("[adapter.generated]\nallocations = 100\nseed = 1\n");
    const VideoMemory two = memory_with("[adapter.generated]\nallocations = 100\nseed = 2\n");
    EXPECT_NE(everything(Allocations{one, true}), everything(Allocations{two, true}));
}

TEST(Allocations, ChangeAlikeHoweverOftenSomebodyLooks)
{
    const VideoMemory memory = memory_with(kChange);
    Allocations often{memory, true};
    Allocations once{memory, true};
    for (uint64_t tick = 1; tick <= 1000; ++tick) {
        often.advance_to(tick);
    }
    once.advance_to(1000);
    EXPECT_EQ(everything(often), everything(once));
    EXPECT_NE(everything(once), everything(Allocations{memory, true}));
}

TEST(Allocations, DoNotGoBackInTime)
{
    const VideoMemory memory = memory_with(kChange);
    Allocations allocations{memory, true};
    allocations.advance_to(100);
    const std::string then = everything(allocations);
    allocations.advance_to(99);
    EXPECT_EQ(everything(allocations), then);
}

TEST(Allocations, AppearAndVanishAtTheirRates)
{
    const VideoMemory memory = memory_with(kChange);
    Allocations allocations{memory, true};
    const Names before = allocations.list();
    allocations.advance_to(100);  // one second
    const Names after = allocations.list();
    EXPECT_EQ(after.size(), 60U);
    EXPECT_EQ(after.back(), "120");
    EXPECT_NE(Names(after.begin(), after.begin() + 10), Names(before.begin(), before.begin() + 10));
}

TEST(Allocations, AreNeverMoreThanMayLive)
{
    const VideoMemory memory = memory_with(kChange);
    Allocations allocations{memory, true};
    std::size_t most = 0;
    for (uint64_t tick = 0; tick <= 3000; ++tick) {
        allocations.advance_to(tick);
        most = std::max(most, allocations.list().size());
    }
    EXPECT_EQ(most, 100U);
}

TEST(Allocations, VanishUntilNoneIsLeft)
{
    const VideoMemory memory =
        memory_with("[adapter.generated]\nallocations = 30\n[adapter.change]\nvanish = 20\n");
    Allocations allocations{memory, true};
    allocations.advance_to(100);
    EXPECT_EQ(allocations.list().size(), 10U);
    allocations.advance_to(1000);
    EXPECT_EQ(allocations.list(), Names{});
}

TEST(Allocations, KeepTheirNodesForLifeAndNoNameComesAgain)
{
    const VideoMemory memory = memory_with(kChange);
    Allocations allocations{memory, true};
    std::map<std::string, std::string> alive;
    std::set<std::string> gone;
    for (uint64_t tick = 0; tick <= 500; ++tick) {
        allocations.advance_to(tick);
        std::map<std::string, std::string> now;
        for (const std::string& entry : allocations.list()) {
            now.emplace(entry, allocations.info(entry).value());
        }
        for (const auto& [entry, text] : alive) {
            const auto still = now.find(entry);
            if (still == now.end()) {
                gone.insert(entry);
                EXPECT_FALSE(allocations.contains(entry));
                EXPECT_EQ(allocations.info(entry), std::nullopt);
            } else {
                EXPECT_EQ(still->second, text);
            }
        }
        for (const auto& [entry, text] : now) {
            EXPECT_FALSE(gone.contains(entry)) << entry;
        }
        alive = std::move(now);
    }
    EXPECT_GT(gone.size(), 200U);
}

TEST(Allocations, HandlesAreGivenOutAgainButNeverTwiceAtATime)
{
    const VideoMemory memory = memory_with(kChange);
    Allocations allocations{memory, true};
    for (uint64_t tick = 0; tick <= 500; tick += 10) {
        allocations.advance_to(tick);
        for (const auto& [handle, count] : values_of(allocations, "handle")) {
            EXPECT_EQ(count, 1) << handle;
            EXPECT_LE(std::stoi(handle, nullptr, 16), 100);
        }
    }
    EXPECT_GT(std::stoi(allocations.list().back()), 300);
}

TEST(Allocations, LeaksGrowWithoutEndAndNeverShrink)
{
    const VideoMemory memory = memory_with(R"(
[adapter.generated]
allocations = 10

[adapter.change]
appear = 50
vanish = 50
live = 10
devices = [21]
shapes = ["wide"]

[[adapter.leak]]
shape = "narrow"
device = 22
per_second = 20

[[adapter.leak]]
shape = "narrow"
device = 21
segment = 5
per_second = 1
)");
    Allocations allocations{memory, true};
    allocations.advance_to(20);
    EXPECT_EQ(allocations.list().size(), 14U);
    allocations.advance_to(100000);  // 1000 seconds
    EXPECT_EQ(values_of(allocations, "device").at("22"), 20000);
    EXPECT_EQ(allocations.list().size(), 21010U);
}

TEST(Allocations, LeakIsInTheSegmentOfItsTableOrOfItsShape)
{
    const std::string leak = "[[adapter.leak]]\ndevice = 22\nsegment = 5\nper_second = 10\n";
    const VideoMemory wide = memory_with(leak + "shape = \"wide\"\n");
    Allocations of_table{wide, true};
    of_table.advance_to(100);
    EXPECT_EQ(values_of(of_table, "segmentid"), (std::map<std::string, int>{{"5", 10}}));
    const VideoMemory narrow = memory_with(leak + "shape = \"narrow\"\n");
    Allocations of_shape{narrow, true};
    of_shape.advance_to(100);
    EXPECT_EQ(values_of(of_shape, "segmentid"), (std::map<std::string, int>{{"9", 10}}));
}

TEST(Allocations, AddressesBeginAgainBehindTheAddressSpace)
{
    const VideoMemory memory = memory_with(R"(
[[adapter.shape]]
name = "vast"
size = 140737488355328

[adapter.generated]
allocations = 3
shapes = ["vast"]
)");
    const Allocations allocations{memory, true};
    EXPECT_EQ(value_of(allocations, "1", "gpu_virt_addr"), "1099511627776");
    EXPECT_EQ(value_of(allocations, "2", "gpu_virt_addr"), "141836999987200");
    EXPECT_EQ(value_of(allocations, "3", "gpu_virt_addr"), "1099511627776");
}

TEST(Allocations, EachOfTwoHundredThousandIsFoundByItsName)
{
    const VideoMemory memory = memory_with("[adapter.generated]\nallocations = 200000\n");
    const Allocations allocations{memory, true};
    const Names entries = allocations.list();
    ASSERT_EQ(entries.size(), 200000U);
    std::size_t found = 0;
    for (const std::string& entry : entries) {
        found += allocations.contains(entry) && allocations.info(entry) ? 1 : 0;
    }
    EXPECT_EQ(found, 200000U);
    EXPECT_EQ(value_of(allocations, "200000", "handle"), "30d40");
    EXPECT_FALSE(allocations.contains("200001"));
}

TEST(Allocations, AreSeenWholeFromSeveralThreadsAtOnce)
{
    std::atomic<std::chrono::nanoseconds> now{std::chrono::nanoseconds{0}};
    LiveDriver driver{machine_with(kChange),
                      [&] { return now = now.load() + std::chrono::milliseconds{1}; }};
    const std::string directory = "dri/0/jw/allocations";
    std::atomic<int> complete{0};
    std::atomic<int> partial{0};
    const auto look = [&] {
        for (int pass = 0; pass < 20; ++pass) {
            for (const std::string& entry : driver.list(directory)) {
                const auto text = driver.read(fmt::format("{}/{}/info", directory, entry));
                const bool is_whole =
                    text && text->starts_with("handle=") && text->ends_with("share=0\n");
                complete += is_whole ? 1 : 0;
                partial += text && !is_whole ? 1 : 0;
            }
        }
    };
    std::array<std::thread, 4> threads;
    for (std::thread& thread : threads) {
        thread = std::thread{look};
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_GT(complete.load(), 1000);
    EXPECT_EQ(partial.load(), 0);
}

}  // namespace
}  // namespace nimba::sim::test
