// SPDX-License-Identifier: MIT
// What an adapter does as time goes by: its load, its frames, its counters, its heat.
#include "model_of.hpp"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <string>

namespace nimba::sim::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;

std::string usages(const AdapterModel& model)
{
    return info(model, "engine_3d_usage") + info(model, "engine_vcp_usage") +
           info(model, "engine_vpp_usage");
}

TEST(AdapterModelActivity, GoesUpFirstAndDownThenInEachPeriod)
{
    AdapterModel model = model_of("[adapter.activity]\nload = 50\nswing = 20\nperiod_ms = 800\n");
    ASSERT_EQ(command(model, "enable_usage", "1"), 0);
    EXPECT_EQ(usages(model), "50\n25\n13\n");
    for (const auto& [time, load] : std::map<int, const char*>{{100, "60\n"},
                                                               {200, "70\n"},
                                                               {300, "60\n"},
                                                               {400, "50\n"},
                                                               {500, "40\n"},
                                                               {600, "30\n"},
                                                               {700, "40\n"},
                                                               {800, "50\n"},
                                                               {1000, "70\n"},
                                                               {80000200, "70\n"}}) {
        model.advance_to(milliseconds{time});
        EXPECT_EQ(info(model, "engine_3d_usage"), load) << time;
    }
}

TEST(AdapterModelActivity, StaysBetweenNothingAndFullLoad)
{
    AdapterModel model = model_of("[adapter.activity]\nload = 60\nswing = 100\nperiod_ms = 400\n");
    ASSERT_EQ(command(model, "enable_usage", "1"), 0);
    model.advance_to(milliseconds{100});
    EXPECT_EQ(usages(model), "100\n50\n25\n");
    model.advance_to(milliseconds{300});
    EXPECT_EQ(usages(model), "0\n0\n0\n");
}

TEST(AdapterModelActivity, IsAccountedForWhileUsageIsEnabled)
{
    using Words = std::array<uint32_t, 13>;
    AdapterModel model = model_of("");
    EXPECT_EQ(usages(model), "0\n0\n0\n");
    EXPECT_EQ(model.counters().usage, Words{});
    ASSERT_EQ(command(model, "enable_usage", "1"), 0);
    EXPECT_EQ(usages(model), "40\n20\n10\n");
    EXPECT_EQ(model.counters().usage, (Words{0, 0, 40, 10, 20, 16, 4, 12, 8, 6, 0, 0, 0}));
    ASSERT_EQ(command(model, "enable_usage", "0"), 0);
    EXPECT_EQ(usages(model), "0\n0\n0\n");
    EXPECT_EQ(model.counters().usage, Words{});
}

TEST(AdapterModelActivity, MovesBandwidthWithTheLoad)
{
    using Words = std::array<uint32_t, 12>;
    AdapterModel model = model_of("");
    EXPECT_EQ(model.counters().hardware,
              (Words{3200, 2400, 1600, 1200, 960, 640, 480, 320, 240, 160, 80, 40}));
    model.advance_to(seconds{15});
    EXPECT_EQ(model.counters().hardware,
              (Words{800, 600, 400, 300, 240, 160, 120, 80, 60, 40, 20, 10}));
}

TEST(AdapterModelActivity, HasTheWordsOfTheMachineFile)
{
    AdapterModel model = model_of(
        "[adapter.activity]\nload = 100\nswing = 0\nengines = [1, 2, 3, 4, 5, 6, 7, 8]\n"
        "bandwidth = [12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1]\n");
    ASSERT_EQ(command(model, "enable_usage", "1"), 0);
    EXPECT_EQ(model.counters().hardware,
              (std::array<uint32_t, 12>{12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(model.counters().usage,
              (std::array<uint32_t, 13>{0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 0, 0, 0}));
    EXPECT_EQ(usages(model), "1\n3\n2\n");
}

TEST(AdapterModelFrames, CountFromZeroAtTheirRates)
{
    AdapterModel model = model_of("");
    EXPECT_EQ(info(model, "fps_count"), "0 0\n");
    EXPECT_EQ(info(model, "rxa_blt_scn_cnt"), "0\n");
    model.advance_to(nanoseconds{16666666});
    EXPECT_EQ(info(model, "fps_count"), "0 0\n");
    model.advance_to(nanoseconds{16666667});
    EXPECT_EQ(info(model, "fps_count"), "1 16666667\n");
    model.advance_to(seconds{1});
    EXPECT_EQ(info(model, "fps_count"), "60 1000000000\n");
    EXPECT_EQ(info(model, "rxa_blt_scn_cnt"), "60\n");
    model.advance_to(seconds{3});
    EXPECT_EQ(info(model, "fps_count"), "180 3000000000\n");
    EXPECT_EQ(info(model, "rxa_blt_scn_cnt"), "180\n");
    EXPECT_EQ(model.counters().flips, 180);
    EXPECT_EQ(model.counters().time, 3000000000);
}

TEST(AdapterModelFrames, KeepTheirTimeStampUntilTheNextOne)
{
    AdapterModel model = model_of("[adapter.activity]\nflips = 2\nblits = 1000\n");
    model.advance_to(milliseconds{1400});
    EXPECT_EQ(info(model, "fps_count"), "2 1000000000\n");
    EXPECT_EQ(info(model, "rxa_blt_scn_cnt"), "1000\n");
    EXPECT_EQ(model.counters().time, 1000000000);
    model.advance_to(milliseconds{1500});
    EXPECT_EQ(info(model, "fps_count"), "3 1500000000\n");
    EXPECT_EQ(info(model, "rxa_blt_scn_cnt"), "1500\n");
}

TEST(AdapterModelFrames, NeverComeAtARateOfZero)
{
    AdapterModel model = model_of("[adapter.activity]\nflips = 0\n");
    model.advance_to(seconds{100});
    EXPECT_EQ(info(model, "fps_count"), "0 0\n");
    EXPECT_EQ(info(model, "rxa_blt_scn_cnt"), "0\n");
}

TEST(AdapterModelFrames, BecomeFewerWhileTheLoadIsHigh)
{
    AdapterModel model = model_of(
        "[adapter.activity]\nperiod_ms = 8000\nflips = 100\nflip_swing = 40\nblits = 100\n");
    for (const auto& [time, frames] : std::map<int, const char*>{{1, "90"},
                                                                 {2, "160"},
                                                                 {3, "230"},
                                                                 {4, "320"},
                                                                 {6, "560"},
                                                                 {8, "800"},
                                                                 {10, "960"},
                                                                 {8000006, "800000560"}}) {
        model.advance_to(seconds{time});
        const std::string count = info(model, "fps_count");
        EXPECT_EQ(count.substr(0, count.find(' ')), frames) << time;
        EXPECT_EQ(std::to_string(model.counters().flips), frames) << time;
    }
}

TEST(AdapterModelFrames, HaveTheTimeOfTheirLastOneAtAnyRate)
{
    AdapterModel model = model_of(
        "[adapter.activity]\nperiod_ms = 8000\nflips = 100\nflip_swing = 40\nblits = 1000\n");
    model.advance_to(nanoseconds{999999999});
    EXPECT_EQ(model.counters().flips, 89);
    EXPECT_EQ(info(model, "rxa_blt_scn_cnt"), "987\n");
    model.advance_to(seconds{1});
    EXPECT_EQ(info(model, "fps_count"), "90 1000000000\n");
    model.advance_to(milliseconds{1005});
    EXPECT_EQ(info(model, "fps_count"), "90 1000000000\n");
    EXPECT_EQ(info(model, "rxa_blt_scn_cnt"), "1000\n");
}

TEST(AdapterModelFrames, MayPauseAtTheTopOfTheLoad)
{
    AdapterModel model =
        model_of("[adapter.activity]\nperiod_ms = 8000\nflips = 100\nflip_swing = 100\n");
    for (const auto& [time, frames] : std::map<int, int>{{2000, 100}, {2100, 100}, {6000, 500}}) {
        model.advance_to(milliseconds{time});
        EXPECT_EQ(model.counters().flips, frames) << time;
    }
}

TEST(AdapterModelFrames, AreCountedIn32BitsByTheNodeAndIn64ByTheCounters)
{
    AdapterModel model = model_of("[adapter.activity]\nflips = 100000\n");
    model.advance_to(seconds{50000});
    EXPECT_EQ(info(model, "fps_count"), "705032704 50000000000000\n");
    EXPECT_EQ(model.counters().flips, 5000000000);
    EXPECT_EQ(model.counters().time, 50000000000000);
}

TEST(AdapterModelTime, NeverGoesBack)
{
    AdapterModel model = model_of("");
    model.advance_to(seconds{5});
    model.advance_to(seconds{1});
    EXPECT_EQ(info(model, "fps_count"), "300 5000000000\n");
    EXPECT_EQ(info(model, "eclk"), "650\n");
}

TEST(AdapterModelCooling, ApproachesWhatTheLoadLeadsTo)
{
    AdapterModel model = model_of(
        "[adapter.activity]\nload = 100\nswing = 0\n"
        "[adapter.cooling]\nambient = 20\nrise = 50\nstart = 20\ntime_constant_ms = 10000\n");
    EXPECT_EQ(hwmon(model, "temp1_input"), "20 *C\n");
    model.advance_to(seconds{10});
    EXPECT_EQ(hwmon(model, "temp1_input"), "52 *C\n");
    EXPECT_EQ(hwmon(model, "fan0_input"), "1664\n");
    EXPECT_EQ(hwmon(model, "fan1_input"), "1664\n");
    EXPECT_EQ(info(model, "fan_speed"), "1664\n");
    model.advance_to(seconds{20});
    EXPECT_EQ(hwmon(model, "temp1_input"), "63 *C\n");
    model.advance_to(seconds{200});
    EXPECT_EQ(hwmon(model, "temp1_input"), "70 *C\n");
    EXPECT_EQ(hwmon(model, "fan0_input"), "2400\n");
}

TEST(AdapterModelCooling, BeginsWarmAndFollowsTheLoad)
{
    AdapterModel model = model_of("");
    EXPECT_EQ(hwmon(model, "temp1_input"), "45 *C\n");
    EXPECT_EQ(hwmon(model, "fan0_input"), "1400\n");
    model.advance_to(seconds{5});
    EXPECT_EQ(hwmon(model, "temp1_input"), "48 *C\n");
    model.advance_to(seconds{9});
    EXPECT_EQ(hwmon(model, "temp1_input"), "50 *C\n");
    model.advance_to(seconds{20});
    EXPECT_EQ(hwmon(model, "temp1_input"), "42 *C\n");
}

TEST(AdapterModelCooling, IsTheSameHoweverOftenAnybodyLooks)
{
    AdapterModel once = model_of("");
    once.advance_to(seconds{7});
    AdapterModel often = model_of("");
    for (int time = 0; time <= 7000; time += 7) {
        often.advance_to(milliseconds{time});
    }
    EXPECT_EQ(hwmon(often, "temp1_input"), "50 *C\n");
    EXPECT_EQ(hwmon(often, "fan0_input"), hwmon(once, "fan0_input"));
}

TEST(AdapterModelCooling, HasFansBetweenTheirLimits)
{
    const auto fan_at = [](const char* start) {
        return hwmon(model_of(std::string{"[adapter.cooling]\nleast_fan = 100\n"
                                          "greatest_fan = 700\nstart = "} +
                              start + "\n"),
                     "fan0_input");
    };
    EXPECT_EQ(fan_at("0"), "100\n");
    EXPECT_EQ(fan_at("30"), "100\n");
    EXPECT_EQ(fan_at("60"), "400\n");
    EXPECT_EQ(fan_at("90"), "700\n");
    EXPECT_EQ(fan_at("200"), "700\n");
}

}  // namespace
}  // namespace nimba::sim::test
