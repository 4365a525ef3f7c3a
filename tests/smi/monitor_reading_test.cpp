// SPDX-License-Identifier: MIT
#include "tools/smi/monitor/readings.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace nimba::smi {
namespace {

template <typename Reading>
std::optional<Reading> through_the_channel(const Reading& reading)
{
    return payload_from<Reading>(nlohmann::json::parse(to_json_value(reading).dump()));
}

const AdapterReading kBase{"0000:01:00.0", {{ExitStatus::kNoPermission, "open", "no"}}};

TEST(MonitorReading, SegmentsSurviveTheChannel)
{
    SegmentReading reading{kBase, SegmentSource::kHeaps, {{1, 4294967295}, {std::nullopt, 0}}};
    EXPECT_EQ(through_the_channel(reading), reading);
    EXPECT_EQ(through_the_channel(SegmentReading{}), SegmentReading{});
}

TEST(MonitorReading, ClocksSurviveTheChannel)
{
    ClockReading reading{kBase, 1, 2, 3, 4, -5, 6, 2};
    EXPECT_EQ(through_the_channel(reading), reading);
    EXPECT_EQ(through_the_channel(ClockReading{}), ClockReading{});
}

TEST(MonitorReading, SensorsSurviveTheChannel)
{
    SensorReading reading{kBase, 45, 0, std::nullopt, 1200};
    EXPECT_EQ(through_the_channel(reading), reading);
}

TEST(MonitorReading, CountersSurviveTheChannel)
{
    CounterReading reading;
    static_cast<AdapterReading&>(reading) = kBase;
    reading.frames = {4294967295, INT64_MAX, INT64_MIN};
    reading.rates = {0.1, std::nullopt, 1e300, 60};
    reading.engine_vcp = 0;
    reading.bandwidth[11] = 4294967295;
    reading.busy[2] = 0;
    EXPECT_EQ(through_the_channel(reading), reading);
    EXPECT_EQ(through_the_channel(CounterReading{}), CounterReading{});
}

TEST(MonitorReading, OtherShapesAreRefused)
{
    EXPECT_EQ(payload_from<ClockReading>(nlohmann::json::array()), std::nullopt);
    auto value = to_json_value(CounterReading{});
    value["busy"] = "none";
    EXPECT_EQ(payload_from<CounterReading>(value), std::nullopt);
}

}  // namespace
}  // namespace nimba::smi
