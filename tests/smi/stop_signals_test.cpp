// SPDX-License-Identifier: MIT
#include "tools/smi/process/stop_signals.hpp"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace nimba::smi {
namespace {

using std::chrono::steady_clock;

bool is_told(const StopSignals& stop)
{
    return stop.wait_until(steady_clock::now());
}

// Ends with status 0 unless the signal ends it. Says "told" or "not told" if it is there to.
[[noreturn]] void be_signalled(SignalEffect effect, int signal)
{
    const rlimit no_core{};
    ::setrlimit(RLIMIT_CORE, &no_core);
    std::signal(signal, SIG_DFL);
    {
        const StopSignals stop{effect};
        std::raise(signal);
        std::fputs(is_told(stop) ? "told" : "not told", stderr);
    }
    std::fputs(" and left alone", stderr);
    std::_Exit(0);
}

TEST(StopSignals, WaitAndEndTheProcessBehindIt)
{
    for (const int signal :
         {SIGHUP, SIGINT, SIGQUIT, SIGUSR1, SIGUSR2, SIGALRM, SIGTERM, SIGSTKFLT, SIGXCPU, SIGXFSZ,
          SIGVTALRM, SIGPROF, SIGIO, SIGPWR, SIGRTMIN, SIGRTMIN + 1, SIGRTMAX}) {
        EXPECT_EXIT(be_signalled(SignalEffect::kEndOfProcess, signal),
                    testing::KilledBySignal(signal), "^told$");
    }
}

TEST(StopSignals, AreDoneWithByTheEndOfARunThatTheUserEnds)
{
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        EXPECT_EXIT(be_signalled(SignalEffect::kEndOfRun, signal), testing::ExitedWithCode(0),
                    "^told and left alone$");
    }
    for (const int signal : {SIGQUIT, SIGUSR1, SIGALRM, SIGRTMIN}) {
        EXPECT_EXIT(be_signalled(SignalEffect::kEndOfRun, signal), testing::KilledBySignal(signal),
                    "^told$");
    }
}

TEST(StopSignals, LetAReaderThatGoesBeLearntOfByWriting)
{
    for (const auto effect : {SignalEffect::kEndOfRun, SignalEffect::kEndOfProcess}) {
        EXPECT_EXIT(be_signalled(effect, SIGPIPE), testing::KilledBySignal(SIGPIPE), "^not told$");
    }
}

TEST(StopSignals, StayIgnoredWhenTheyAre)
{
    for (const int signal : {SIGHUP, SIGTERM, SIGQUIT, SIGUSR1, SIGRTMAX}) {
        auto* const before = std::signal(signal, SIG_IGN);
        {
            const StopSignals stop{SignalEffect::kEndOfProcess};
            std::raise(signal);
            EXPECT_FALSE(is_told(stop)) << signal;
        }
        std::signal(signal, before);
    }
}

TEST(StopSignals, HoldBackNoFaultAndNothingThatDoesNotEndAProcess)
{
    const StopSignals stop{SignalEffect::kEndOfProcess};
    sigset_t held;
    ::sigprocmask(SIG_BLOCK, nullptr, &held);
    for (const int signal : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGSYS, SIGTRAP, SIGTSTP,
                             SIGTTIN, SIGTTOU, SIGCONT, SIGCHLD, SIGURG, SIGWINCH}) {
        EXPECT_EQ(::sigismember(&held, signal), 0) << signal;
    }
}

}  // namespace
}  // namespace nimba::smi
