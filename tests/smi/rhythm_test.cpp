// SPDX-License-Identifier: MIT
#include "tools/smi/watch/rhythm.hpp"

#include "tools/smi/monitor/run.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <vector>

namespace nimba::smi {
namespace {

using namespace std::chrono_literals;

TEST(Rhythm, RoundsAreNumberedAndCounted)
{
    const StopSignals stop{SignalEffect::kEndOfRun};
    std::vector<uint64_t> numbers;
    keep_rhythm({1ms, 3}, stop, [&](uint64_t number) {
        numbers.push_back(number);
        return true;
    });
    EXPECT_EQ(numbers, (std::vector<uint64_t>{1, 2, 3}));
}

TEST(Rhythm, ARoundCanBeTheLast)
{
    const StopSignals stop{SignalEffect::kEndOfRun};
    uint64_t last = 0;
    keep_rhythm({1ms, std::nullopt}, stop, [&](uint64_t number) {
        last = number;
        return number < 2;
    });
    EXPECT_EQ(last, 2U);
}

TEST(Rhythm, AStopSignalEndsTheWait)
{
    const StopSignals stop{SignalEffect::kEndOfRun};
    uint64_t last = 0;
    keep_rhythm({24h, std::nullopt}, stop, [&](uint64_t number) {
        last = number;
        std::raise(SIGTERM);
        return true;
    });
    EXPECT_EQ(last, 1U);
}

TEST(MonitorRhythm, ASingleSampleThatCoversATimeNeedsOneInFront)
{
    EXPECT_EQ(monitor_rhythm({}, false).count, 1U);
    EXPECT_EQ(monitor_rhythm({}, true).count, 2U);
    EXPECT_EQ(monitor_rhythm({}, true).interval, 1s);
    EXPECT_EQ(monitor_rhythm({std::nullopt, std::nullopt, 250ms}, true).interval, 250ms);
}

TEST(MonitorRhythm, AWatchShowsAsManySamplesAsAskedFor)
{
    EXPECT_EQ(monitor_rhythm({500ms, 4, std::nullopt}, true).count, 5U);
    EXPECT_EQ(monitor_rhythm({500ms, 4, std::nullopt}, false).count, 4U);
    EXPECT_EQ(monitor_rhythm({500ms, std::nullopt, std::nullopt}, true).count, std::nullopt);
    EXPECT_EQ(monitor_rhythm({500ms, 4, std::nullopt}, false).interval, 500ms);
}

}  // namespace
}  // namespace nimba::smi
