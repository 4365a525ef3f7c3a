// SPDX-License-Identifier: MIT
#include "tools/smi/process/worker_process.hpp"

#include "tools/smi/process/ask.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>

namespace nimba::smi {
namespace {

TEST(WorkerEnd, IsTheStatusOrTheSignal)
{
    EXPECT_EQ(describe_end(CLD_EXITED, 0), "exit status 0");
    EXPECT_EQ(describe_end(CLD_EXITED, 99), "exit status 99");
    EXPECT_EQ(describe_end(CLD_KILLED, SIGKILL), "killed by SIGKILL");
    EXPECT_EQ(describe_end(CLD_DUMPED, SIGSEGV), "killed by SIGSEGV");
    EXPECT_EQ(describe_end(CLD_KILLED, 63), "killed by signal 63");
}

TEST(WorkerSilence, IsToldInSeconds)
{
    using namespace std::chrono_literals;
    EXPECT_EQ(no_answer_within(10s), "no answer within 10 s");
    EXPECT_EQ(no_answer_within(2500ms), "no answer within 2.5 s");
    EXPECT_EQ(no_answer_within(1ms), "no answer within 0.001 s");
}

}  // namespace
}  // namespace nimba::smi
