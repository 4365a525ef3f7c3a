// SPDX-License-Identifier: MIT
#pragma once

#include <signal.h>

#include <sys/types.h>

#include <optional>

namespace nimba::sim {

// The signals that end a process unless it does something about them, and SIGCHLD. A process of a
// run holds them back, so that it always comes to its end.
sigset_t held_signals();

// Takes a signal that others have sent while it was held back, if there is one.
std::optional<int> take_pending_signal();

// Waits until the child ends; returns its wait status. Kills it if `parent` is given and not this
// process's parent any more. Meanwhile passes the held signals on to it,
// save for those of the terminal, which reach it anyway. Other children that end are collected.
int wait_for_child(pid_t child, std::optional<pid_t> parent = std::nullopt);

// In a new process: has it told by SIGTERM when the process that made it ends.
void signal_end_of_parent();

// In a new process: ends it as soon as the process `parent`, which made it, has ended. Safe after a
// fork of a process with threads.
void end_with_parent(pid_t parent);

}  // namespace nimba::sim
