// SPDX-License-Identifier: MIT
#pragma once

#include <signal.h>

#include <sys/types.h>

namespace nimba::sim {

// What nimba-sim was started with and what its command gets unchanged.
struct Inheritance {
    sigset_t blocked;
    sigset_t ignored;
    mode_t file_mode_mask;
};

// Makes this process fit for a run: holds signals back (now and in every thread that starts later),
// makes files that their owner can use, and keeps standard descriptors that are closed from being
// given to a file of the run. Returns how things were.
Inheritance prepare_for_run();

// In the command's process, before it is executed: makes things as they were. Standard descriptors
// that were closed stay open on /dev/null. Safe after a fork of a process with threads.
void restore(const Inheritance& inheritance);

}  // namespace nimba::sim
