// SPDX-License-Identifier: MIT
#include "tools/smi/top/events.hpp"
#include "top_snapshots.hpp"

#include <gtest/gtest.h>

namespace nimba::smi::top {
namespace {

Problem lost_worker()
{
    return {ExitStatus::kWorkerLost, "0000:01:00.0", "get_clocks",
            "adapter 0000:01:00.0 (Gpu0:Nimba-K1): worker lost in get_clocks: killed by SIGKILL; "
            "run with --verbose to see the library's last messages"};
}

MachineSnapshot with_problem(const Problem& problem, int second)
{
    MachineSnapshot snapshot = snapshot_of({first_adapter()}, second);
    snapshot.problems = {problem};
    return snapshot;
}

std::vector<std::string> texts(const EventLog& log)
{
    std::vector<std::string> texts;
    for (const Event& event : log.events()) {
        texts.push_back(event.text);
    }
    return texts;
}

TEST(TopEvents, AreNoneOnAHealthyMachine)
{
    EventLog log;
    log.take(snapshot_of({first_adapter(), second_adapter()}));
    log.take(snapshot_of({first_adapter(), second_adapter()}));
    EXPECT_TRUE(log.events().empty());
}

TEST(TopEvents, TellThatAWorkerWasReplaced)
{
    EventLog log;
    log.take(with_problem(lost_worker(), 5));
    ASSERT_EQ(log.events().size(), 1U);
    EXPECT_EQ(log.events()[0],
              (Event{std::chrono::system_clock::time_point{std::chrono::seconds{5}},
                     "adapter 0000:01:00.0 (Gpu0:Nimba-K1): worker lost in get_clocks: killed by "
                     "SIGKILL; a new worker was started",
                     false, 1}));
}

TEST(TopEvents, CountWhatHappensAgain)
{
    EventLog log;
    log.take(with_problem(lost_worker(), 5));
    log.take(with_problem(lost_worker(), 6));
    ASSERT_EQ(log.events().size(), 1U);
    EXPECT_EQ(log.events()[0].times, 2U);
    EXPECT_EQ(log.events()[0].time, std::chrono::system_clock::time_point{std::chrono::seconds{6}});
}

TEST(TopEvents, TellThatAnAdapterWentAndCameBackOnceEach)
{
    EventLog log;
    log.take(snapshot_of({first_adapter(), second_adapter()}));
    MachineSnapshot gone = snapshot_of({first_adapter(), absent(second_adapter())});
    gone.problems = {{ExitStatus::kNoAdapter, "0000:02:00.0", "gfx_find_adapter",
                      "adapter 0000:02:00.0 (Gpu1:QV-M40): gone since discovery; run the command "
                      "again"}};
    log.take(gone);
    log.take(gone);
    log.take(snapshot_of({first_adapter(), second_adapter()}));
    EXPECT_EQ(texts(log), (std::vector<std::string>{
                              "the driver of adapter 0000:02:00.0 (Gpu1:QV-M40) is gone or "
                              "does not answer; it is asked again with every sample",
                              "the driver of adapter 0000:02:00.0 (Gpu1:QV-M40) is back"}));
    EXPECT_FALSE(log.events()[0].good);
    EXPECT_TRUE(log.events()[1].good);
}

TEST(TopEvents, TellOtherProblemsWhenTheyComeUp)
{
    const Problem denied{ExitStatus::kNoPermission, "0000:01:00.0", "open",
                         "adapter 0000:01:00.0: no permission to read node 17"};
    Problem alike = denied;
    alike.message = "adapter 0000:01:00.0: no permission to read node 18";
    EventLog log;
    log.take(with_problem(denied, 1));
    log.take(with_problem(alike, 2));
    EXPECT_EQ(texts(log), (std::vector<std::string>{denied.message}));
    log.take(snapshot_of({first_adapter()}, 3));
    log.take(with_problem(alike, 4));
    EXPECT_EQ(texts(log), (std::vector<std::string>{denied.message, alike.message}));
}

TEST(TopEvents, ArePrintable)
{
    EventLog log;
    log.take(with_problem({ExitStatus::kFailed, std::nullopt, std::nullopt, "a\x1b[31mb"}, 1));
    EXPECT_EQ(texts(log), (std::vector<std::string>{"a\\x1b[31mb"}));
}

TEST(TopEvents, AreForgottenWhenThereAreVeryMany)
{
    EventLog log;
    for (int i = 0; i < 150; ++i) {
        log.take(snapshot_of({absent(first_adapter())}));
        log.take(snapshot_of({first_adapter()}));
    }
    EXPECT_EQ(log.events().size(), 200U);
}

}  // namespace
}  // namespace nimba::smi::top
