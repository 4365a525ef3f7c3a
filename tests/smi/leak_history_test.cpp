// SPDX-License-Identifier: MIT
#include "memory_records.hpp"
#include "tools/smi/leaks/growth.hpp"
#include "tools/smi/leaks/history.hpp"
#include "tools/smi/leaks/render.hpp"
#include "tools/smi/watch/problem_log.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

constexpr Shape kSmall{128, 64, 32768, 28, 1};
constexpr Shape kLarge{512, 512, 1048576, 28, 1};

LeakReading reading(std::vector<LeakGroup> groups, std::vector<DeviceContext> contexts = {})
{
    LeakReading result;
    result.bus_id = "0000:01:00.0";
    result.contexts = std::move(contexts);
    result.groups = std::move(groups);
    return result;
}

AdapterHistory grown()
{
    AdapterHistory history{kFirstSlot};
    history.add(reading({{kSmall, 1, {{19, 4}}}, {kLarge, 1, {{17, 2}, {18, 3}}}},
                        {{17, 1, "a"}, {18, 2, "b"}, {19, 3, "maze"}}));
    history.add(reading({{kSmall, 2, {{17, 1}, {19, 9}}}, {kLarge, 2, {{18, 4}}}},
                        {{17, 1, "a"}, {18, 2, "b"}}));
    return history;
}

TEST(LeakHistory, HasNoGrowthAfterOneSnapshot)
{
    AdapterHistory history{kFirstSlot};
    EXPECT_TRUE(history.groups().empty());
    history.add(reading({{kSmall, 1, {{19, 4}}}}));
    ASSERT_EQ(history.groups().size(), 1U);
    EXPECT_EQ(history.groups()[0], (GroupGrowth{kSmall, 4, 0, 1, {{19, 4, 0, {}}}}));
}

TEST(LeakHistory, ComparesWithTheFirstSnapshotByGroupAndOwner)
{
    const auto groups = grown().groups();
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(groups[0],
              (GroupGrowth{kSmall, 10, 6, 2, {{19, 9, 5, {{3, "maze"}}}, {17, 1, 1, {{1, "a"}}}}}));
    EXPECT_EQ(groups[1], (GroupGrowth{kLarge, 4, -1, 2, {{18, 4, 1, {{2, "b"}}}}}));
    EXPECT_EQ(groups[1].bytes(), 4194304U);
}

TEST(LeakHistory, TakesAGroupThatIsNewForAllOfItsGrowth)
{
    AdapterHistory history{kFirstSlot};
    history.add(reading({{kLarge, 1, {{17, 1}}}}));
    history.add(reading({{kSmall, 1, {{17, 3}}}}));
    ASSERT_EQ(history.groups().size(), 1U);
    EXPECT_EQ(history.groups()[0].change, 3);
    EXPECT_EQ(history.snapshots(), 2U);
}

TEST(LeakRows, ComeByGrowthOverAllAdapters)
{
    AdapterHistory other{kSecondSlot};
    other.add(reading({}));
    other.add(reading({{kLarge, 1, {{17, 8}}}}));
    const LeaksResult result{2, {grown(), other}, {}};
    const auto rows = leak_rows(result, 2);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].adapter->slot, 1);
    EXPECT_EQ(rows[1].group.shape, kSmall);
    EXPECT_EQ(
        leaks_text(result, rows),
        "SLOT  COUNT  CHANGE  OLDEST  SHAPE      SIZE  FORMAT  TYPE   MEMORY  HELD BY\n"
        "1         8      +8       1  512x512   1 MiB  28      1       8 MiB  device 0x11\n"
        "0        10      +6       2  128x64   32 KiB  28      1     320 KiB  maze (3), a (1)\n"
        "2 snapshots\n");
    EXPECT_EQ(
        leaks_csv(rows),
        "slot,bus_id,count,change,oldest_hits,width,height,size,hw_format,at_type,bytes,"
        "devices,pids,processes\n"
        "1,0000:02:00.0,8,8,1,512,512,1048576,28,1,8388608,0x11,,\n"
        "0,0000:01:00.0,10,6,2,128,64,32768,28,1,327680,\"0x13, 0x11\",\"3, 1\",\"maze, a\"\n");
}

TEST(LeakProgress, TellsAllAllocationsAndTheGroupThatGrewMost)
{
    AdapterHistory shrunk{kSecondSlot};
    shrunk.add(reading({{kLarge, 1, {{17, 9}}}}));
    shrunk.add(reading({{kLarge, 2, {{17, 1}}}}));
    const std::vector<AdapterHistory> adapters{shrunk, grown()};
    EXPECT_EQ(leaks_progress(2, 10, adapters),
              "snapshot 2 of 10: 15 allocations, 5.3 MiB, +6 of 128x64, 32 KiB, format 28, type 1");
    EXPECT_EQ(leaks_progress(2, std::nullopt, {&shrunk, 1}),
              "snapshot 2: 1 allocation, 1 MiB, no growth");
    EXPECT_EQ(leaks_progress(1, 3, {}), "snapshot 1 of 3: 0 allocations, 0 B, no growth");
}

TEST(LeakText, IsEmptyWhenNoSnapshotCouldBeTaken)
{
    const LeaksResult result{3, {AdapterHistory{kFirstSlot}}, {}};
    EXPECT_EQ(leaks_text(result, {}), "");
}

TEST(Growth, NamesTheGroupThatGrewMostFromTheLimitOn)
{
    const LeaksResult result{2, {grown()}, {}};
    EXPECT_TRUE(growth_problems(result, 7).empty());
    const auto problems = growth_problems(result, 6);
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_EQ(problems[0].status, ExitStatus::kGrowth);
    EXPECT_EQ(problems[0].adapter, "0000:01:00.0");
    EXPECT_EQ(problems[0].message,
              "adapter 0000:01:00.0 (Gpu0:Nimba-K1): 6 more allocations of 128x64, 32 KiB, format "
              "28, type 1 than in the first snapshot, held by maze (3), a (1)");
}

TEST(Growth, TellsHowManyGroupsGrew)
{
    AdapterHistory history{kSecondSlot};
    history.add(reading({}));
    history.add(reading({{kSmall, 1, {{17, 1}}}, {kLarge, 1, {{17, 1}}}}));
    const auto problems = growth_problems({2, {history}, {}}, 1);
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_EQ(
        problems[0].message,
        "adapter 0000:02:00.0: 1 more allocation of 512x512, 1 MiB, format 28, type 1 than in "
        "the first snapshot, held by device 0x11; groups that grew by 1 or more: 2");
}

TEST(Growth, IsNotTakenForNoneWhenThereWasNothingToCompare)
{
    const auto too_short = too_short_problem({1, {AdapterHistory{kFirstSlot}}, {}});
    ASSERT_TRUE(too_short);
    EXPECT_EQ(too_short->status, ExitStatus::kFailed);
    EXPECT_EQ(too_short->message,
              "the run ended before its second snapshot: --fail-on-growth had nothing to compare");
    EXPECT_EQ(too_short_problem({2, {grown()}, {}}), std::nullopt);
    EXPECT_TRUE(too_short_problem({2, {grown(), AdapterHistory{kSecondSlot}}, {}}));
    const Problem lost{ExitStatus::kWorkerLost, std::nullopt, std::nullopt, "lost"};
    EXPECT_EQ(too_short_problem({1, {AdapterHistory{kFirstSlot}}, {lost}}), std::nullopt);
}

TEST(OwnersText, NamesEachProcessOnceAndThreeAtMost)
{
    EXPECT_EQ(owners_text({{1, 1, 0, {{7, "a"}}}, {2, 1, 0, {{7, "a"}}}, {3, 1, 0, {}}}),
              "a (7), device 0x3");
    EXPECT_EQ(owners_text({{1, 1, 0, {{7, "a"}, {8, ""}, {9, "c"}, {10, "d"}}}, {2, 1, 0, {}}}),
              "a (7), process 8, c (9) and 2 more");
}

TEST(ProblemLog, TellsEachProblemOnce)
{
    const Problem remark{ExitStatus::kOk, std::nullopt, std::nullopt, "always"};
    const Problem some{ExitStatus::kNoAdapter, std::nullopt, std::nullopt, "now and then"};
    ProblemLog log;
    EXPECT_TRUE(log.problems(1).empty());
    for (int snapshot = 1; snapshot <= 3; ++snapshot) {
        log.add_to_snapshot(remark);
    }
    log.add_to_snapshot(some);
    log.add_at_snapshot({ExitStatus::kWorkerLost, std::nullopt, std::nullopt, "lost"}, 2);
    const auto problems = log.problems(3);
    ASSERT_EQ(problems.size(), 3U);
    EXPECT_EQ(problems[0].message, "always");
    EXPECT_EQ(problems[1].message, "now and then (in 1 of 3 snapshots)");
    EXPECT_EQ(problems[2].message, "lost (at snapshot 2 of 3)");
    EXPECT_EQ(problems[2].status, ExitStatus::kWorkerLost);
}

TEST(ProblemLog, TakesProblemsThatDifferInNumbersAloneForOne)
{
    const auto entries = [](const char* adapter, const char* message) {
        return Problem{ExitStatus::kOk, adapter, "get_device_pid_maps", message};
    };
    ProblemLog log;
    log.add_to_snapshot(entries("0000:01:00.0", "60 contexts are open"));
    log.add_to_snapshot(entries("0000:02:00.0", "70 contexts are open"));
    log.add_to_snapshot(entries("0000:01:00.0", "61 contexts are open"));
    const auto problems = log.problems(2);
    ASSERT_EQ(problems.size(), 2U);
    EXPECT_EQ(problems[0].message, "60 contexts are open");
    EXPECT_EQ(problems[1].message, "70 contexts are open (in 1 of 2 snapshots)");
}

}  // namespace
}  // namespace nimba::smi
