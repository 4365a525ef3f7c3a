// SPDX-License-Identifier: MIT
#include "tools/smi/top/terminal_signals.hpp"

#include <poll.h>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace nimba::smi::top {
namespace {

bool is_readable(const TerminalSignals& signals)
{
    pollfd descriptor{signals.descriptor(), POLLIN, 0};
    return ::poll(&descriptor, 1, 0) == 1;
}

// Ends with status 0 unless the signal ends it. Says what is told of the signal.
[[noreturn]] void be_signalled(int signal)
{
    const rlimit no_core{};
    ::setrlimit(RLIMIT_CORE, &no_core);
    std::signal(signal, SIG_DFL);
    {
        const TerminalSignals signals;
        std::raise(signal);
        std::fputs(is_readable(signals) && signals.next() == signal ? "told" : "not told", stderr);
        std::fputs(signals.next() == signal ? " and stays" : " once", stderr);
    }
    std::fputs(" and left alone", stderr);
    std::_Exit(0);
}

TEST(TerminalSignals, OfTheTerminalAreTakenOnce)
{
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP, SIGCONT, SIGWINCH}) {
        EXPECT_EXIT(be_signalled(signal), testing::ExitedWithCode(0), "^told once and left alone$");
    }
}

TEST(TerminalSignals, OfOtherKindsEndTheProcessBehindTheView)
{
    for (const int signal : {SIGUSR1, SIGUSR2, SIGPIPE, SIGALRM, SIGSTKFLT, SIGXCPU, SIGXFSZ,
                             SIGVTALRM, SIGPROF, SIGIO, SIGPWR, SIGRTMIN, SIGRTMAX}) {
        EXPECT_EXIT(be_signalled(signal), testing::KilledBySignal(signal), "^told and stays$");
    }
}

TEST(TerminalSignals, ThatComeTogetherEndTheProcessWhenOneOfThemDoes)
{
    const auto be_signalled_twice = [] {
        const TerminalSignals signals;
        std::raise(SIGUSR1);
        std::raise(SIGINT);
        std::fputs(signals.next() == SIGINT && signals.next() == SIGUSR1 ? "told" : "?", stderr);
    };
    EXPECT_EXIT(be_signalled_twice(), testing::KilledBySignal(SIGUSR1), "^told$");
}

TEST(TerminalSignals, StayIgnoredWhenTheyAre)
{
    for (const int signal : {SIGHUP, SIGQUIT, SIGUSR1, SIGTSTP}) {
        auto* const before = std::signal(signal, SIG_IGN);
        {
            const TerminalSignals signals;
            std::raise(signal);
            EXPECT_FALSE(is_readable(signals)) << signal;
            EXPECT_EQ(signals.next(), std::nullopt) << signal;
        }
        std::signal(signal, before);
    }
}

}  // namespace
}  // namespace nimba::smi::top
