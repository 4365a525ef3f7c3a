// SPDX-License-Identifier: MIT
// Every way in which the description of an adapter's power, sensors and memory can be wrong.
#include "bad_file.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

class AdapterPowerError : public ::testing::TestWithParam<BadFile> {};

TEST_P(AdapterPowerError, IsOneLineWithPlaceKeyAndExpectation)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write("bad.toml", GetParam().text);
    EXPECT_EQ(error_of(file), file + GetParam().message);
}

#define CLOCKS(keys) GOOD_ADAPTER "[adapter.clocks]\n" keys  // from line 7
#define ACTIVITY(keys) GOOD_ADAPTER "[adapter.activity]\n" keys
#define COOLING(keys) GOOD_ADAPTER "[adapter.cooling]\n" keys
#define BOARD(keys) GOOD_ADAPTER "[adapter.board]\n" keys
#define SEGMENT(keys) GOOD_ADAPTER "[[adapter.segment]]\n" keys
#define QV_SEGMENT(keys)                                           \
    ADAPTER(                                                       \
        "chip = \"qv-m30\"\nbus_id = \"0000:01:00.0\"\ncard = 0\n" \
        "[[adapter.segment]]\n" keys)
#define FULL_SEGMENT "[[adapter.segment]]\ntotal = 1099511627776\n"

// clang-format off
const std::vector<BadFile> kTables{
    {"UnknownClockKey", CLOCKS("gpu = 1\n"),
     ":7: key 'adapter[0].clocks.gpu': unknown key, expected one of \"core\", \"least_engine\", "
     "\"greatest_engine\", \"least_voltage\", \"greatest_voltage\", \"mode\", \"level\", \"idle\", "
     "\"balance\", \"lowpower\", \"performance\""},
    {"UnknownClock", CLOCKS("idle = { core = 1 }\n"),
     ":7: key 'adapter[0].clocks.idle.core': unknown key, expected one of \"engine\", \"video\", "
     "\"memory\", \"voltage\""},
    {"UnknownActivityKey", ACTIVITY("fps = 1\n"),
     ":7: key 'adapter[0].activity.fps': unknown key, expected one of \"load\", \"swing\", "
     "\"flips\", \"blits\", \"period_ms\", \"flip_swing\", \"engines\", \"bandwidth\""},
    {"UnknownCoolingKey", COOLING("fan = 1\n"),
     ":7: key 'adapter[0].cooling.fan': unknown key, expected one of \"ambient\", \"rise\", "
     "\"least_fan\", \"greatest_fan\", \"start\", \"time_constant_ms\""},
    {"UnknownBoardKey", BOARD("name = 1\n"),
     ":7: key 'adapter[0].board.name': unknown key, expected one of \"display_ports\", "
     "\"pixel_fillrate\", \"texture_fillrate\", \"pcie_gen\", \"pcie_lanes\", \"pmp_version\", "
     "\"release_date\", \"miu_channels\", \"slice_mask\", \"driver_version\", "
     "\"firmware_version\", \"firmware_name\", \"hdmi_resolution\", \"dp_resolution\", "
     "\"vga_resolution\", \"display_types\""},
    {"UnknownSegmentKey", SEGMENT("size = 1\n"),
     ":7: key 'adapter[0].segment[0].size': unknown key, expected one of \"id\", \"total\", "
     "\"used\""},
    {"ClocksAreAList", GOOD_ADAPTER "clocks = []\n",
     ":6: key 'adapter[0].clocks': expected a table, got a list"},
    {"SegmentIsATable", GOOD_ADAPTER "[adapter.segment]\n",
     ":6: key 'adapter[0].segment': expected a list of tables, [[segment]], got a table"},
};

const std::vector<BadFile> kClocks{
    {"ModeThree", CLOCKS("mode = 3\n"),
     ":7: key 'adapter[0].clocks.mode': expected a whole number from 0 to 2, got 3"},
    {"UnknownLevel", CLOCKS("level = \"low\"\n"),
     ":7: key 'adapter[0].clocks.level': expected one of \"balance\", \"lowpower\", "
     "\"performance\", got \"low\""},
    {"ClockTooFast", CLOCKS("performance = { engine = 100001 }\n"),
     ":7: key 'adapter[0].clocks.performance.engine': expected a whole number from 0 to 100000, "
     "got 100001"},
    {"VoltageTooHigh", CLOCKS("balance = { voltage = 10001 }\n"),
     ":7: key 'adapter[0].clocks.balance.voltage': expected a whole number from 0 to 10000, "
     "got 10001"},
    {"ClockRangeUpsideDown", CLOCKS("least_engine = 700\ngreatest_engine = 699\n"),
     ":8: key 'adapter[0].clocks.greatest_engine': expected a whole number from 700 on, the least "
     "one, got 699"},
    {"VoltageRangeUpsideDown", CLOCKS("least_voltage = 1301\n"),
     ":6: key 'adapter[0].clocks.greatest_voltage': expected a whole number from 1301 on, the "
     "least one, got nothing"},
};

const std::vector<BadFile> kActivities{
    {"LoadAboveFull", ACTIVITY("load = 101\n"),
     ":7: key 'adapter[0].activity.load': expected a whole number from 0 to 100, got 101"},
    {"SwingNegative", ACTIVITY("swing = -1\n"),
     ":7: key 'adapter[0].activity.swing': expected a whole number from 0 to 100, got -1"},
    {"PeriodOfNothing", ACTIVITY("period_ms = 0\n"),
     ":7: key 'adapter[0].activity.period_ms': expected a whole number from 1 to 3600000, got 0"},
    {"TooManyFlips", ACTIVITY("flips = 100001\n"),
     ":7: key 'adapter[0].activity.flips': expected a whole number from 0 to 100000, got 100001"},
    {"TooManyBlits", ACTIVITY("blits = 100001\n"),
     ":7: key 'adapter[0].activity.blits': expected a whole number from 0 to 100000, got 100001"},
    {"FlipSwingAboveTheFlips", ACTIVITY("flips = 30\nflip_swing = 31\n"),
     ":8: key 'adapter[0].activity.flip_swing': expected a whole number from 0 to 30, got 31"},
    {"FlipSwingAboveTheDefaultFlips", ACTIVITY("flip_swing = 61\n"),
     ":7: key 'adapter[0].activity.flip_swing': expected a whole number from 0 to 60, got 61"},
    {"TooFewEngines", ACTIVITY("engines = [1, 2, 3, 4, 5, 6, 7]\n"),
     ":7: key 'adapter[0].activity.engines': expected a list of 8 numbers, got a list"},
    {"EngineAboveFull", ACTIVITY("engines = [1, 101]\n"),
     ":7: key 'adapter[0].activity.engines[1]': expected a whole number from 0 to 100, got 101"},
    {"TooManyBandwidths", ACTIVITY("bandwidth = [1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13]\n"),
     ":7: key 'adapter[0].activity.bandwidth': expected a list of 12 numbers, got a list"},
    {"BandwidthTooHigh", ACTIVITY("bandwidth = [1000001]\n"),
     ":7: key 'adapter[0].activity.bandwidth[0]': expected a whole number from 0 to 1000000, "
     "got 1000001"},
};

const std::vector<BadFile> kCooling{
    {"TooHotAround", COOLING("ambient = 201\n"),
     ":7: key 'adapter[0].cooling.ambient': expected a whole number from 0 to 200, got 201"},
    {"RiseNegative", COOLING("rise = -1\n"),
     ":7: key 'adapter[0].cooling.rise': expected a whole number from 0 to 200, got -1"},
    {"StartBelowZero", COOLING("start = -1\n"),
     ":7: key 'adapter[0].cooling.start': expected a whole number from 0 to 200, got -1"},
    {"TimeConstantOfNothing", COOLING("time_constant_ms = 0\n"),
     ":7: key 'adapter[0].cooling.time_constant_ms': expected a whole number from 1 to 3600000, "
     "got 0"},
    {"FanTooFast", COOLING("greatest_fan = 100001\n"),
     ":7: key 'adapter[0].cooling.greatest_fan': expected a whole number from 0 to 100000, "
     "got 100001"},
    {"FanRangeUpsideDown", COOLING("least_fan = 900\ngreatest_fan = 800\n"),
     ":8: key 'adapter[0].cooling.greatest_fan': expected a whole number from 900 on, the least "
     "one, got 800"},
};

const std::vector<BadFile> kBoards{
    {"VersionOfTwoLines", BOARD("driver_version = \"1\\n2\"\n"),
     ":7: key 'adapter[0].board.driver_version': expected a text of one line, without control "
     "characters, of 64 bytes at most, got \"1\\u000a2\""},
    {"NameTooLong",
     BOARD("firmware_name = \"0123456789012345678901234567890123456789012345678901234567890123"
           "4\"\n"),
     ":7: key 'adapter[0].board.firmware_name': expected a text of one line, without control "
     "characters, of 64 bytes at most, got "
     "\"01234567890123456789012345678901234567890123456789012345678901234\""},
    {"ResolutionOfANumber", BOARD("dp_resolution = 4\n"),
     ":7: key 'adapter[0].board.dp_resolution': expected a text, got 4"},
    {"PortsNegative", BOARD("display_ports = -1\n"),
     ":7: key 'adapter[0].board.display_ports': expected a whole number from 0 to 2147483647, "
     "got -1"},
};

const std::vector<BadFile> kSegments{
    {"SegmentWithoutTotal", SEGMENT("used = 0\n"),
     ":6: key 'adapter[0].segment[0].total': expected a whole number from 0 to 1099511627776, "
     "got nothing"},
    {"SegmentTooLarge", SEGMENT("total = 1099511627777\n"),
     ":7: key 'adapter[0].segment[0].total': expected a whole number from 0 to 1099511627776, "
     "got 1099511627777"},
    {"SegmentMoreThanFull", SEGMENT("total = 5\nused = 6\n"),
     ":8: key 'adapter[0].segment[0].used': expected a whole number from 0 to 5, got 6"},
    {"SegmentTwice", SEGMENT("total = 5\n[[adapter.segment]]\nid = 0\ntotal = 5\n"),
     ":9: key 'adapter[0].segment[1].id': expected a free segment id (0 is that of "
     "adapter[0].segment[0]), got 0"},
    {"SeventeenthSegment", SEGMENT("id = 16\ntotal = 5\n"),
     ":7: key 'adapter[0].segment[0].id': expected a whole number from 0 to 15, got 16"},
    {"SegmentBehindTheLast", SEGMENT("id = 15\ntotal = 5\n[[adapter.segment]]\ntotal = 5\n"),
     ":9: key 'adapter[0].segment[1].id': expected a whole number from 0 to 15, got nothing"},
    {"FifthHeap", QV_SEGMENT("id = 4\ntotal = 5\n"),
     ":7: key 'adapter[0].segment[0].id': expected a whole number from 0 to 3, got 4"},
    {"MoreSegmentsThanTheNodeShows",
     GOOD_ADAPTER FULL_SEGMENT FULL_SEGMENT FULL_SEGMENT FULL_SEGMENT FULL_SEGMENT FULL_SEGMENT
     FULL_SEGMENT FULL_SEGMENT FULL_SEGMENT FULL_SEGMENT,
     ":6: key 'adapter[0].segment': expected segments that 'segment_info' can show in 511 bytes, "
     "got a list"},
};
// clang-format on

const auto name_of = [](const auto& file) { return std::string{file.param.name}; };

INSTANTIATE_TEST_SUITE_P(Tables, AdapterPowerError, ::testing::ValuesIn(kTables), name_of);
INSTANTIATE_TEST_SUITE_P(Clocks, AdapterPowerError, ::testing::ValuesIn(kClocks), name_of);
INSTANTIATE_TEST_SUITE_P(Activities, AdapterPowerError, ::testing::ValuesIn(kActivities), name_of);
INSTANTIATE_TEST_SUITE_P(Cooling, AdapterPowerError, ::testing::ValuesIn(kCooling), name_of);
INSTANTIATE_TEST_SUITE_P(Boards, AdapterPowerError, ::testing::ValuesIn(kBoards), name_of);
INSTANTIATE_TEST_SUITE_P(Segments, AdapterPowerError, ::testing::ValuesIn(kSegments), name_of);

}  // namespace
}  // namespace nimba::sim::test
