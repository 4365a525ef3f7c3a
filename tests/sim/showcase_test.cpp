// SPDX-License-Identifier: MIT
// The machine for demonstrations: alike in every run, and always within what looks real.
#include "driver/live_driver.hpp"
#include "machine_file.hpp"
#include "machine_list.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace nimba::sim::test {
namespace {

using std::chrono::milliseconds;

Machine showcase()
{
    return read_machine(find_machine("showcase", SHIPPED_MACHINES));
}

class Showcase : public ::testing::Test {
  protected:
    // The number that a node begins with.
    int number(const std::string& node) { return std::stoi(driver_.read(node).value()); }

    std::size_t allocations(const std::string& directory)
    {
        return driver_.list(directory + "/allocations").size();
    }

    void expect_between(int least, int greatest, const std::string& node)
    {
        const int now = number(node);
        EXPECT_GE(now, least) << node;
        EXPECT_LE(now, greatest) << node;
    }

    std::chrono::nanoseconds now_{0};
    LiveDriver driver_{showcase(), [this] { return now_; }};
};

TEST_F(Showcase, HasTwoAdaptersAForeignGpuAndFivePrograms)
{
    const Machine machine = showcase();
    ASSERT_EQ(machine.adapters.size(), 2U);
    EXPECT_EQ(machine.adapters.at(0).driver_dir, "jw");
    EXPECT_EQ(machine.adapters.at(1).driver_dir, "qv");
    EXPECT_EQ(machine.foreign_gpus.size(), 1U);
    std::vector<std::string> names;
    for (const Process& process : machine.processes) {
        names.push_back(process.comm);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"compositor", "browser", "maze", "player", "cad"}));
}

TEST_F(Showcase, GivesEveryProgramMemory)
{
    const Machine machine = showcase();
    std::set<std::string> owners;
    for (const Adapter& adapter : machine.adapters) {
        for (const DeviceContext& context : adapter.video_memory.contexts) {
            owners.insert(std::to_string(std::get<int64_t>(context.pid)));
        }
    }
    EXPECT_EQ(owners,
              (std::set<std::string>{"4100001", "4100002", "4100003", "4100004", "4100005"}));
}

TEST_F(Showcase, StaysWithinPlausibleBounds)
{
    ASSERT_EQ(driver_.write("info/1/enable_usage", "1"), 0);
    ASSERT_EQ(driver_.write("info/2/enable_usage", "1"), 0);
    for (int second = 0; second < 120; ++second) {
        now_ = std::chrono::seconds{second};
        expect_between(29, 80, "info/1/engine_3d_usage");
        expect_between(10, 50, "info/2/engine_3d_usage");
        expect_between(455, 725, "info/1/eclk");
        expect_between(304, 502, "info/2/eclk");
        expect_between(45, 76, "hwmon/1/hwmon1/temp1_input");
        expect_between(32, 56, "hwmon/2/hwmon2/temp1_input");
        expect_between(4500, 5400, "info/1/free_fb_mem");
        expect_between(2400, 2800, "info/2/free_fb_mem");
        EXPECT_LE(allocations("dri/1/jw"), 230U) << second;
        EXPECT_GE(allocations("dri/1/jw"), 150U) << second;
        EXPECT_LE(allocations("dri/2/qv"), 94U) << second;
        EXPECT_GE(allocations("dri/2/qv"), 60U) << second;
    }
}

TEST_F(Showcase, NeverStandsStill)
{
    ASSERT_EQ(driver_.write("info/1/enable_usage", "1"), 0);
    ASSERT_EQ(driver_.write("info/2/enable_usage", "1"), 0);
    const std::vector<std::string> nodes{
        "info/1/engine_3d_usage",     "info/2/engine_3d_usage", "info/1/eclk",     "info/2/eclk",
        "hwmon/1/hwmon1/temp1_input", "info/1/fps_count",       "info/2/fps_count"};
    std::vector<std::set<std::string>> seen(nodes.size());
    for (int step = 0; step < 20; ++step) {
        now_ = milliseconds{1000} * step;
        for (std::size_t node = 0; node < nodes.size(); ++node) {
            seen.at(node).insert(driver_.read(nodes.at(node)).value());
        }
    }
    for (std::size_t node = 0; node < nodes.size(); ++node) {
        EXPECT_GE(seen.at(node).size(), 8U) << nodes.at(node);
    }
}

TEST_F(Showcase, DrawsFewerFramesWhereTheLoadIsHigh)
{
    const auto frames_around = [&](int second) {
        now_ = std::chrono::seconds{second} - milliseconds{500};
        const int before = number("info/1/fps_count");
        now_ = std::chrono::seconds{second} + milliseconds{500};
        return number("info/1/fps_count") - before;
    };
    EXPECT_NEAR(frames_around(6), 61, 2);    // the load is at its top
    EXPECT_NEAR(frames_around(18), 131, 2);  // and at its bottom
}

TEST_F(Showcase, LooksAlikeInEveryRun)
{
    LiveDriver other{showcase(), [this] { return now_; }};
    now_ = milliseconds{12340};
    for (const std::string directory : {"dri/1/jw/allocations", "dri/2/qv/allocations"}) {
        const auto names = driver_.list(directory);
        EXPECT_EQ(names, other.list(directory));
        const std::string last = fmt::format("{}/{}/info", directory, names.back());
        EXPECT_EQ(driver_.read(last), other.read(last));
    }
    EXPECT_EQ(driver_.read("proc/gpuinfo_1"), other.read("proc/gpuinfo_1"));
}

}  // namespace
}  // namespace nimba::sim::test
