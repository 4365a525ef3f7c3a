// SPDX-License-Identifier: MIT
#include "tools/smi/top/terminal_signals.hpp"

#include "tools/smi/process/held_signal.hpp"
#include "tools/smi/process/stop_signals.hpp"

#include <sys/signalfd.h>

#include <cerrno>
#include <ctime>
#include <system_error>

namespace nimba::smi::top {
namespace {

constexpr int kOfTerminal[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP, SIGCONT, SIGWINCH};

}  // namespace

TerminalSignals::TerminalSignals() : ending_{ending_signals()}
{
    ::sigemptyset(&taken_);
    for (const int signal : kOfTerminal) {
        if (!is_ignored(signal)) {
            ::sigaddset(&taken_, signal);
            ::sigdelset(&ending_, signal);
        }
    }
    sigset_t watched;
    ::sigorset(&watched, &taken_, &ending_);
    ::pthread_sigmask(SIG_BLOCK, &watched, &before_);
    signals_ = tools::Descriptor{::signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK)};
    if (!signals_) {
        const int error = errno;
        ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
        throw std::system_error{error, std::generic_category(), "cannot wait for signals"};
    }
}

TerminalSignals::~TerminalSignals()
{
    // What came of the terminal is done with: it ended the view. The others now end the process.
    while (take()) {
    }
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

std::optional<int> TerminalSignals::next() const
{
    const auto taken = take();
    return taken ? taken : ending();
}

std::optional<int> TerminalSignals::take() const
{
    const timespec at_once{};
    const int signal = ::sigtimedwait(&taken_, nullptr, &at_once);
    return signal > 0 ? std::optional(signal) : std::nullopt;
}

std::optional<int> TerminalSignals::ending() const
{
    sigset_t waiting;
    ::sigpending(&waiting);
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
        if (::sigismember(&ending_, signal) == 1 && ::sigismember(&waiting, signal) == 1) {
            return signal;
        }
    }
    return std::nullopt;
}

void TerminalSignals::stop_process()
{
    struct sigaction usual {};
    usual.sa_handler = SIG_DFL;
    struct sigaction before {};
    ::sigaction(SIGTSTP, &usual, &before);
    sigset_t stop;
    ::sigemptyset(&stop);
    ::sigaddset(&stop, SIGTSTP);
    ::raise(SIGTSTP);
    // It is held back until here; the process stops inside the call.
    ::pthread_sigmask(SIG_UNBLOCK, &stop, nullptr);
    ::pthread_sigmask(SIG_BLOCK, &stop, nullptr);
    ::sigaction(SIGTSTP, &before, nullptr);
}

}  // namespace nimba::smi::top
