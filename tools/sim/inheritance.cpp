// SPDX-License-Identifier: MIT
#include "inheritance.hpp"

#include "signals.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <sys/stat.h>

namespace nimba::sim {
namespace {

sigset_t ignored_signals()
{
    sigset_t ignored;
    sigemptyset(&ignored);
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) {
            sigaddset(&ignored, signal);
        }
    }
    return ignored;
}

// The command gets them open, too, as its preload library would else put a socket there.
// A new descriptor gets the least free number, which is that of the closed one.
void open_closed_standard_descriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            open("/dev/null", O_RDWR);
        }
    }
}

}  // namespace

Inheritance prepare_for_run()
{
    open_closed_standard_descriptors();
    Inheritance before{};
    before.ignored = ignored_signals();
    before.file_mode_mask = umask(S_IWGRP | S_IWOTH);
    // Ended children are not reported to a process that ignores SIGCHLD.
    signal(SIGCHLD, SIG_DFL);
    const sigset_t held = held_signals();
    sigprocmask(SIG_BLOCK, &held, &before.blocked);
    return before;
}

void restore(const Inheritance& inheritance)
{
    for (int number = 1; number <= SIGRTMAX; ++number) {
        signal(number, sigismember(&inheritance.ignored, number) == 1 ? SIG_IGN : SIG_DFL);
    }
    umask(inheritance.file_mode_mask);
    sigprocmask(SIG_SETMASK, &inheritance.blocked, nullptr);
}

}  // namespace nimba::sim
