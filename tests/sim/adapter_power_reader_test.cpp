// SPDX-License-Identifier: MIT
// What a machine file says of an adapter's power, sensors and memory.
#include "machine_of.hpp"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <string>
#include <tuple>
#include <vector>

namespace nimba::sim::test {
namespace {

AdapterPower power_of(const std::string& keys, const std::string& chip = "nimba-k1")
{
    return machine_of("[[adapter]]\nchip = \"" + chip +
                      "\"\nbus_id = \"0000:01:00.0\"\ncard = 0\n" + keys)
        .adapters.at(0)
        .power;
}

using Clocks = std::tuple<int64_t, int64_t, int64_t, int64_t>;

Clocks values(const ClockSet& set)
{
    return {set.engine, set.video, set.memory, set.voltage};
}

using Segments = std::vector<std::tuple<std::size_t, uint64_t, uint64_t>>;

Segments segments_of(const AdapterPower& power)
{
    Segments segments;
    for (const auto& [id, total, used] : power.segments) {
        segments.emplace_back(id, total, used);
    }
    return segments;
}

TEST(AdapterPowerReader, TakesClocks)
{
    const AdapterClocks clocks =
        power_of(
            "[adapter.clocks]\nmode = 2\nlevel = \"performance\"\ncore = 7\n"
            "least_engine = 8\ngreatest_engine = 9\nleast_voltage = 10\n"
            "greatest_voltage = 11\n"
            "idle = { engine = 1, video = 2, memory = 3, voltage = 4 }\n"
            "balance = { engine = 5 }\nlowpower = { video = 6 }\n"
            "performance = { memory = 7, voltage = 8 }\n")
            .clocks;
    EXPECT_EQ(clocks.mode, DvfsMode::kLevel);
    EXPECT_EQ(clocks.level, DvfsLevel::kPerformance);
    EXPECT_EQ(clocks.core, 7);
    EXPECT_EQ(clocks.least_engine, 8);
    EXPECT_EQ(clocks.greatest_engine, 9);
    EXPECT_EQ(clocks.least_voltage, 10);
    EXPECT_EQ(clocks.greatest_voltage, 11);
    EXPECT_EQ(values(clocks.idle), (Clocks{1, 2, 3, 4}));
    EXPECT_EQ(values(clocks.levels.at(0)), (Clocks{5, 500, 1600, 900}));
    EXPECT_EQ(values(clocks.levels.at(1)), (Clocks{500, 6, 800, 800}));
    EXPECT_EQ(values(clocks.levels.at(2)), (Clocks{1200, 700, 7, 8}));
}

TEST(AdapterPowerReader, TakesActivity)
{
    const AdapterActivity activity =
        power_of(
            "[adapter.activity]\nload = 1\nswing = 2\nperiod_ms = 3\nflips = 4\nblits = 5\n"
            "flip_swing = 3\n"
            "engines = [1, 2, 3, 4, 5, 6, 7, 8]\n"
            "bandwidth = [1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12]\n")
            .activity;
    EXPECT_EQ(activity.load, 1);
    EXPECT_EQ(activity.swing, 2);
    EXPECT_EQ(activity.period, std::chrono::milliseconds{3});
    EXPECT_EQ(activity.flips, 4);
    EXPECT_EQ(activity.blits, 5);
    EXPECT_EQ(activity.flip_swing, 3);
    EXPECT_EQ(activity.engines, (std::array<int64_t, 8>{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(activity.bandwidth, (std::array<int64_t, 12>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
}

TEST(AdapterPowerReader, TakesCooling)
{
    const AdapterCooling cooling =
        power_of(
            "[adapter.cooling]\nambient = 1\nrise = 2\nstart = 3\ntime_constant_ms = 4\n"
            "least_fan = 5\ngreatest_fan = 6\n")
            .cooling;
    EXPECT_EQ(cooling.ambient, 1);
    EXPECT_EQ(cooling.rise, 2);
    EXPECT_EQ(cooling.start, 3);
    EXPECT_EQ(cooling.time_constant, std::chrono::milliseconds{4});
    EXPECT_EQ(cooling.least_fan, 5);
    EXPECT_EQ(cooling.greatest_fan, 6);
}

TEST(AdapterPowerReader, TakesTheBoard)
{
    const AdapterBoard board =
        power_of(
            "[adapter.board]\ndriver_version = \"a\"\nfirmware_version = \"b\"\n"
            "firmware_name = \"c\"\nhdmi_resolution = \"d\"\ndp_resolution = \"e\"\n"
            "vga_resolution = \"f\"\ndisplay_types = \"\"\ndisplay_ports = 1\n"
            "pixel_fillrate = 2\ntexture_fillrate = 3\npcie_gen = 4\npcie_lanes = 5\n"
            "pmp_version = 6\nrelease_date = 7\nmiu_channels = 8\nslice_mask = 9\n")
            .board;
    EXPECT_EQ(board.driver_version, "a");
    EXPECT_EQ(board.firmware_version, "b");
    EXPECT_EQ(board.firmware_name, "c");
    EXPECT_EQ(board.hdmi_resolution, "d");
    EXPECT_EQ(board.dp_resolution, "e");
    EXPECT_EQ(board.vga_resolution, "f");
    EXPECT_EQ(board.display_types, "");
    EXPECT_EQ(board.display_ports, 1);
    EXPECT_EQ(board.pixel_fillrate, 2);
    EXPECT_EQ(board.texture_fillrate, 3);
    EXPECT_EQ(board.pcie_gen, 4);
    EXPECT_EQ(board.pcie_lanes, 5);
    EXPECT_EQ(board.pmp_version, 6);
    EXPECT_EQ(board.release_date, 7);
    EXPECT_EQ(board.miu_channels, 8);
    EXPECT_EQ(board.slice_mask, 9);
}

TEST(AdapterPowerReader, OrdersSegmentsByTheirIds)
{
    EXPECT_EQ(segments_of(power_of("[[adapter.segment]]\nid = 3\ntotal = 1099511627776\n"
                                   "[[adapter.segment]]\ntotal = 8\nused = 8\n"
                                   "[[adapter.segment]]\nid = 0\ntotal = 0\n")),
              (Segments{{0, 0, 0}, {3, 1099511627776, 0}, {4, 8, 8}}));
}

TEST(AdapterPowerReader, GivesSegmentsToAnAdapterThatSaysNothing)
{
    EXPECT_EQ(
        segments_of(power_of("")),
        (Segments{{0, 4294967296, 268435456}, {1, 2147483648, 33554432}, {2, 1073741824, 0}}));
    EXPECT_EQ(
        segments_of(power_of("", "qv-m20")),
        (Segments{
            {0, 0, 0}, {1, 2147483648, 67108864}, {2, 1073741824, 16777216}, {3, 1073741824, 0}}));
    EXPECT_EQ(segments_of(power_of("segment = []\n")), Segments{});
}

TEST(AdapterPowerReader, LeavesHeapsAnyLengthThatTheyHave)
{
    std::string keys;
    for (int heap = 0; heap < 4; ++heap) {
        keys += "[[adapter.segment]]\ntotal = 1099511627776\n";
    }
    EXPECT_EQ(segments_of(power_of(keys, "qv-m40")).size(), 4U);
}

}  // namespace
}  // namespace nimba::sim::test
