// SPDX-License-Identifier: MIT
#include "tools/smi/process/diagnosis.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace nimba::smi {
namespace {

const Subject kDiscovery{"discovery", std::nullopt};
const Subject kAdapter{"adapter 0000:03:00.0 (Gpu0:Nimba-K1)", "0000:03:00.0"};

TEST(Diagnosis, SubjectNamesTheAdapter)
{
    const Subject named = adapter_subject({0, "0000:03:00.0", "Gpu0:Nimba-K1"});
    EXPECT_EQ(named.name, "adapter 0000:03:00.0 (Gpu0:Nimba-K1)");
    EXPECT_EQ(named.bus_id, "0000:03:00.0");
    EXPECT_EQ(adapter_subject({2, "0000:05:00.0", std::nullopt}).name, "adapter 0000:05:00.0");
}

TEST(Diagnosis, AnswerIsNoProblem)
{
    EXPECT_FALSE(diagnose(kDiscovery, Answer{1}).has_value());
}

TEST(Diagnosis, DeadWorkerIsNamedWithItsCall)
{
    const auto problem = diagnose(kAdapter, Lost{"gfx_find_adapter", "killed by SIGABRT"});
    ASSERT_TRUE(problem.has_value());
    EXPECT_EQ(problem->status, ExitStatus::kWorkerLost);
    EXPECT_EQ(problem->adapter, "0000:03:00.0");
    EXPECT_EQ(problem->call, "gfx_find_adapter");
    EXPECT_EQ(problem->message,
              "adapter 0000:03:00.0 (Gpu0:Nimba-K1): worker lost in gfx_find_adapter: killed by "
              "SIGABRT; run with --verbose to see the library's last messages");
}

TEST(Diagnosis, DeadWorkerHasItsLastWordsRepeated)
{
    const auto problem =
        diagnose(kAdapter, Lost{"get_memleak_info", "killed by SIGABRT", false, "a line"});
    ASSERT_TRUE(problem.has_value());
    EXPECT_EQ(problem->message,
              "adapter 0000:03:00.0 (Gpu0:Nimba-K1): worker lost in get_memleak_info: killed by "
              "SIGABRT; it said \"a line\"");
}

TEST(Diagnosis, SilentWorkerGetsOtherAdvice)
{
    const auto problem = diagnose(kDiscovery, Lost{"dlopen", "no answer within 10 s", true});
    ASSERT_TRUE(problem.has_value());
    EXPECT_EQ(problem->adapter, std::nullopt);
    EXPECT_EQ(problem->message,
              "discovery: worker lost in dlopen: no answer within 10 s; the driver may be blocked: "
              "see dmesg, or allow more with --timeout");
}

TEST(Diagnosis, LossAtAnAdapterNamesIt)
{
    const auto problem = diagnose({"discovery", std::nullopt, "0000:04:00.0"},
                                  Lost{"gfx_find_adapter", "no answer within 1 s", true});
    ASSERT_TRUE(problem.has_value());
    EXPECT_EQ(problem->adapter, "0000:04:00.0");
    EXPECT_EQ(
        problem->message,
        "discovery: worker lost in gfx_find_adapter at adapter 0000:04:00.0: no answer within "
        "1 s; the driver may be blocked: see dmesg, or allow more with --timeout");
}

TEST(Diagnosis, LossBeforeTheFirstCallBlamesNoDriver)
{
    EXPECT_EQ(diagnose(kDiscovery, Lost{"start", "no answer within 1 s", true})->message,
              "discovery: worker lost in start: no answer within 1 s; the machine may be "
              "overloaded: allow more with --timeout");
    EXPECT_EQ(diagnose(kDiscovery, Lost{"start", "exit status 1"})->message,
              "discovery: worker lost in start: exit status 1; nimba-smi could not run itself: "
              "check the limits of this session (ulimit -a)");
}

TEST(Diagnosis, ExceptionIsALostWorker)
{
    const auto problem =
        diagnose(kDiscovery, Failure{ExitStatus::kWorkerLost, "gfx_find_adapter", "it threw int"});
    ASSERT_TRUE(problem.has_value());
    EXPECT_EQ(problem->message,
              "discovery: worker lost in gfx_find_adapter: it threw int; run with --verbose to see "
              "the library's last messages");
}

TEST(Diagnosis, FailureSpeaksForItselfAndNamesAnAdapterOnly)
{
    const Failure failure{ExitStatus::kNoLibrary, "dlopen", "cannot load it"};
    EXPECT_EQ(diagnose(kDiscovery, failure)->message, "cannot load it");
    EXPECT_EQ(diagnose(kDiscovery, failure)->status, ExitStatus::kNoLibrary);
    EXPECT_EQ(diagnose(kAdapter, failure)->message,
              "adapter 0000:03:00.0 (Gpu0:Nimba-K1): cannot load it");
}

TEST(Diagnosis, AnswerOfAnotherShapeIsALostWorker)
{
    std::vector<Problem> problems;
    EXPECT_EQ(accept<Discovery>(kDiscovery, Answer{7}, problems), std::nullopt);
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_EQ(problems[0].status, ExitStatus::kWorkerLost);
    EXPECT_EQ(problems[0].message,
              "discovery: worker lost in answer: it cannot be understood; run with --verbose to "
              "see the library's last messages");
}

}  // namespace
}  // namespace nimba::smi
