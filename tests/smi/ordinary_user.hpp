// SPDX-License-Identifier: MIT
#pragma once

#include <grp.h>
#include <unistd.h>

#include <sys/wait.h>

#include <cstdlib>

namespace nimba::smi {

// Whether `check` is true for a user without privileges: it runs in a child process, as nobody when
// the tests run as root.
template <typename Check>
bool holds_for_ordinary_user(Check check)
{
    constexpr uid_t kNobody = 65534;
    const pid_t child = ::fork();
    if (child == 0) {
        const bool root = ::getuid() == 0;
        const bool dropped = !root || (::setgroups(0, nullptr) == 0 && ::setgid(kNobody) == 0 &&
                                       ::setuid(kNobody) == 0);
        ::_exit(dropped && check() ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = -1;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == EXIT_SUCCESS;
}

}  // namespace nimba::smi
