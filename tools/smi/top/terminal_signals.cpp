// SPDX-License-Identifier: MIT
#include "tools/smi/top/terminal_signals.hpp"

#include "tools/smi/process/held_signal.hpp"

#include <unistd.h>

#include <sys/signalfd.h>

#include <cerrno>
#include <system_error>

namespace nimba::smi::top {
namespace {

constexpr int kSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP, SIGCONT, SIGWINCH};

}  // namespace

TerminalSignals::TerminalSignals()
{
    sigset_t watched;
    ::sigemptyset(&watched);
    for (const int signal : kSignals) {
        if (!is_ignored(signal)) {
            ::sigaddset(&watched, signal);
        }
    }
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
    // What came is done with: it ended the view.
    while (next()) {
    }
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

std::optional<int> TerminalSignals::next() const
{
    signalfd_siginfo info{};
    return ::read(signals_.get(), &info, sizeof info) == sizeof info
               ? std::optional(static_cast<int>(info.ssi_signo))
               : std::nullopt;
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
