// SPDX-License-Identifier: MIT
#include "tools/smi/top/samples.hpp"
#include "top_snapshots.hpp"

#include <gtest/gtest.h>

namespace nimba::smi::top {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kEngine3d = 0;
constexpr std::size_t kVpp = 2;

constexpr Clock::time_point kOpened{};

Samples with_two_adapters()
{
    Samples samples{kOpened};
    samples.take(snapshot_of({first_adapter(), second_adapter()}, 10), kOpened + 1s);
    return samples;
}

std::optional<double> value(const Samples& samples, std::size_t adapter, std::size_t gauge,
                            std::size_t age)
{
    return samples.history(samples.newest()->adapters[adapter], gauge).at_age(age);
}

// It answers, but its processes cannot be read.
AdapterState without_processes(AdapterState state)
{
    state.processes = {};
    state.processes_known = false;
    return state;
}

TEST(TopSamples, AreNoneBeforeTheFirst)
{
    const Samples samples{kOpened};
    EXPECT_FALSE(samples.newest());
    EXPECT_EQ(samples.age(kOpened + 3s), 3s);
    EXPECT_EQ(samples.times().size(), 0U);
}

TEST(TopSamples, KeepTheFiguresOfEveryOne)
{
    Samples samples = with_two_adapters();
    AdapterState busier = first_adapter();
    busier.counters.engine_3d = 77;
    samples.take(snapshot_of({busier, second_adapter()}), kOpened + 2s);
    EXPECT_EQ(value(samples, 0, kEngine3d, 0), 77);
    EXPECT_EQ(value(samples, 0, kEngine3d, 1), 58);
    EXPECT_EQ(value(samples, 0, kVpp, 0), std::nullopt);
    EXPECT_EQ(value(samples, 1, kEngine3d, 0), 7);
    EXPECT_EQ(samples.times().at_age(0), 2);
    EXPECT_EQ(samples.age(kOpened + 5s), 3s);
}

TEST(TopSamples, HaveAGapWhereTheDriverWasGone)
{
    Samples samples = with_two_adapters();
    samples.take(snapshot_of({absent(first_adapter()), second_adapter()}), kOpened + 2s);
    samples.take(snapshot_of({first_adapter(), second_adapter()}), kOpened + 3s);
    EXPECT_EQ(value(samples, 0, kEngine3d, 0), 58);
    EXPECT_EQ(value(samples, 0, kEngine3d, 1), std::nullopt);
    EXPECT_EQ(value(samples, 0, kEngine3d, 2), 58);
    EXPECT_EQ(samples.events().events().size(), 2U);
}

TEST(TopSamples, HaveAGapWhereOneWasLeft)
{
    Samples samples = with_two_adapters();
    samples.leave_gap();
    samples.take(snapshot_of({first_adapter(), second_adapter()}), kOpened + 9s);
    EXPECT_EQ(value(samples, 1, kEngine3d, 0), 7);
    EXPECT_EQ(value(samples, 1, kEngine3d, 1), std::nullopt);
    EXPECT_EQ(value(samples, 1, kEngine3d, 2), 7);
    EXPECT_EQ(samples.times().at_age(0), 9);
    EXPECT_EQ(samples.times().at_age(1), std::nullopt);
    EXPECT_EQ(samples.times().at_age(2), 1);
}

TEST(TopSamples, KeepProcessesThatCouldNotBeReadWithTheTimeWhenTheyWere)
{
    Samples samples = with_two_adapters();
    EXPECT_EQ(samples.processes_time(samples.newest()->adapters[0]), std::nullopt);
    samples.take(snapshot_of({without_processes(first_adapter()), second_adapter()}, 11),
                 kOpened + 2s);
    const AdapterState& adapter = samples.newest()->adapters[0];
    EXPECT_EQ(adapter.processes.devices.size(), 3U);
    EXPECT_EQ(samples.processes_time(adapter), std::chrono::system_clock::time_point{10s});
}

TEST(TopSamples, ForgetTheProcessesOfAnAdapterThatWasGone)
{
    Samples samples = with_two_adapters();
    samples.take(snapshot_of({absent(first_adapter()), second_adapter()}, 11), kOpened + 2s);
    samples.take(snapshot_of({without_processes(first_adapter()), second_adapter()}, 12),
                 kOpened + 3s);
    const AdapterState& adapter = samples.newest()->adapters[0];
    EXPECT_TRUE(adapter.processes.devices.empty());
    EXPECT_EQ(samples.processes_time(adapter), std::nullopt);
}

}  // namespace
}  // namespace nimba::smi::top
