// SPDX-License-Identifier: MIT
#include "tools/smi/process/stop_signals.hpp"

#include "tools/smi/process/held_signal.hpp"

#include <poll.h>

#include <sys/signalfd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <system_error>

namespace nimba::smi {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Those with a number of their own.
constexpr int kEnding[] = {SIGHUP,  SIGINT,    SIGQUIT, SIGUSR1,   SIGUSR2,
                           SIGPIPE, SIGALRM,   SIGTERM, SIGSTKFLT, SIGXCPU,
                           SIGXFSZ, SIGVTALRM, SIGPROF, SIGIO,     SIGPWR};

// Those by which a user ends a run.
constexpr int kOfRun[] = {SIGHUP, SIGINT, SIGTERM};

void add_unless_ignored(sigset_t& signals, int signal)
{
    if (!is_ignored(signal)) {
        ::sigaddset(&signals, signal);
    }
}

}  // namespace

sigset_t ending_signals()
{
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : kEnding) {
        add_unless_ignored(signals, signal);
    }
    for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) {
        add_unless_ignored(signals, signal);
    }
    return signals;
}

StopSignals::StopSignals(SignalEffect effect) : effect_{effect}
{
    sigset_t watched = ending_signals();
    ::sigprocmask(SIG_BLOCK, &watched, &before_);
    ::sigdelset(&watched, SIGPIPE);
    signals_ = tools::Descriptor{::signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK)};
    if (!signals_) {
        const int error = errno;
        ::sigprocmask(SIG_SETMASK, &before_, nullptr);
        throw std::system_error{error, std::generic_category(), "cannot wait for signals"};
    }
}

StopSignals::~StopSignals()
{
    // What is not taken here is delivered as soon as the mask lets it through.
    sigset_t taken;
    ::sigemptyset(&taken);
    for (const int signal : kOfRun) {
        ::sigaddset(&taken, signal);
    }
    const timespec at_once{};
    while (effect_ == SignalEffect::kEndOfRun && ::sigtimedwait(&taken, nullptr, &at_once) > 0) {
    }
    ::sigprocmask(SIG_SETMASK, &before_, nullptr);
}

bool StopSignals::wait_until(Clock::time_point end) const
{
    pollfd signals{signals_.get(), POLLIN, 0};
    int ready = 0;
    do {
        const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
        const auto patience = static_cast<int>(std::max(left, milliseconds{0}).count());
        ready = ::poll(&signals, 1, patience);
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

}  // namespace nimba::smi
