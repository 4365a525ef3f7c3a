// SPDX-License-Identifier: MIT
#include "signals.hpp"

#include "exit_status.hpp"

#include <unistd.h>

#include <sys/prctl.h>
#include <sys/wait.h>

#include <array>
#include <ctime>

namespace nimba::sim {
namespace {

// Those that stop a process, make it go on or mean nothing to most.
constexpr std::array kNotHeld{SIGTSTP, SIGTTIN, SIGTTOU, SIGCONT, SIGWINCH, SIGURG};

// Raised by this process's own doing, such as a write to a closed pipe.
bool is_own(const siginfo_t& info)
{
    return info.si_signo == SIGCHLD || (info.si_code == SI_USER && info.si_pid == getpid());
}

// Sent by the terminal to the whole process group. A hangup is told to the session's leader alone.
bool is_of_terminal(const siginfo_t& info)
{
    if (info.si_code != SI_KERNEL) {
        return false;
    }
    return info.si_signo == SIGINT || info.si_signo == SIGQUIT ||
           (info.si_signo == SIGHUP && getsid(0) != getpid());
}

// Collects the processes that have ended. Returns the child's wait status if it is one of them.
std::optional<int> collect(pid_t child)
{
    std::optional<int> result;
    int status = 0;
    for (pid_t pid = 0; (pid = waitpid(-1, &status, WNOHANG)) > 0;) {
        if (pid == child) {
            result = status;
        }
    }
    return result;
}

}  // namespace

sigset_t held_signals()
{
    sigset_t held;
    sigfillset(&held);
    for (const int signal : kNotHeld) {
        sigdelset(&held, signal);
    }
    return held;
}

std::optional<int> take_pending_signal()
{
    const sigset_t held = held_signals();
    const timespec at_once{};
    siginfo_t info{};
    while (sigtimedwait(&held, &info, &at_once) > 0) {
        if (!is_own(info)) {
            return info.si_signo;
        }
    }
    return std::nullopt;
}

int wait_for_child(pid_t child, std::optional<pid_t> parent)
{
    const sigset_t held = held_signals();
    std::optional<int> status;
    while (!(status = collect(child))) {
        if (parent && getppid() != *parent) {
            kill(child, SIGKILL);
        }
        siginfo_t info{};
        if (sigwaitinfo(&held, &info) > 0 && !is_own(info) && !is_of_terminal(info)) {
            kill(child, info.si_signo);
        }
    }
    return *status;
}

void signal_end_of_parent()
{
    prctl(PR_SET_PDEATHSIG, SIGTERM);
}

void end_with_parent(pid_t parent)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(kSignalled + SIGKILL);
    }
}

}  // namespace nimba::sim
