// SPDX-License-Identifier: MIT
#include "tools/smi/process/stop_signals.hpp"

#include "tools/smi/process/held_signal.hpp"

#include <poll.h>
#include <unistd.h>

#include <sys/signalfd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace nimba::smi {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

}  // namespace

StopSignals::StopSignals(SignalEffect effect) : effect_{effect}
{
    sigset_t watched;
    ::sigemptyset(&watched);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        if (!is_ignored(signal)) {
            ::sigaddset(&watched, signal);
        }
    }
    ::sigprocmask(SIG_BLOCK, &watched, &before_);
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
    signalfd_siginfo info{};
    while (effect_ == SignalEffect::kEndOfRun &&
           ::read(signals_.get(), &info, sizeof info) == sizeof info) {
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
