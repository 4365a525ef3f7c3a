// SPDX-License-Identifier: MIT
#include "tools/smi/top/gauges.hpp"
#include "top_snapshots.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>
#include <vector>

namespace nimba::smi::top {
namespace {

std::vector<std::string> texts(const AdapterState& adapter)
{
    std::vector<std::string> texts;
    for (const Gauge& gauge : gauges()) {
        const auto value = gauge.value(adapter);
        texts.push_back(value ? gauge.text(*value) : "-");
    }
    return texts;
}

TEST(TopGauges, TellTheFiguresOfAnAdapter)
{
    EXPECT_EQ(texts(first_adapter()),
              (std::vector<std::string>{"58 %", "22 %", "-", "96.2/s", "2.8 GiB", "64 °C", "1450",
                                        "2000"}));
}

TEST(TopGauges, HaveNoValueForWhatIsNotAvailable)
{
    EXPECT_EQ(texts(absent(first_adapter())),
              (std::vector<std::string>{"-", "-", "-", "-", "-", "-", "-", "-"}));
}

TEST(TopGauges, TellFlipsWhereBlitsAreNotCounted)
{
    AdapterState state = first_adapter();
    state.rates.both = std::nullopt;
    EXPECT_EQ(texts(state)[3], "90/s");
    state.rates.flips = std::numeric_limits<double>::infinity();
    EXPECT_EQ(texts(state)[3], "-");
}

TEST(TopGauges, TakeTheTemperatureOfTheSummaryWithoutASensor)
{
    AdapterState state = first_adapter();
    state.sensors.temperature = std::nullopt;
    state.summary.temperature = 51;
    EXPECT_EQ(texts(state)[5], "51 °C");
}

TEST(TopGauges, KnowHowMuchMemoryThereIs)
{
    EXPECT_EQ(gauges()[4].total(first_adapter()), 8e9);
    EXPECT_EQ(gauges()[4].total(second_adapter()), std::nullopt);
}

TEST(TopGauges, HaveARankEach)
{
    std::set<int> ranks;
    for (const Gauge& gauge : gauges()) {
        ranks.insert(gauge.rank);
    }
    EXPECT_EQ(ranks, (std::set<int>{0, 1, 2, 3, 4, 5, 6, 7}));
}

}  // namespace
}  // namespace nimba::smi::top
