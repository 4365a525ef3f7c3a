// SPDX-License-Identifier: MIT
#pragma once

#include "environment.hpp"

#include <signal.h>

#include <string>
#include <vector>

namespace nimba::sim {

inline constexpr int kNotExecutable = 126;
inline constexpr int kNotFound = 127;
inline constexpr int kSignalled = 128;  // plus the signal's number

// Holds back, from now on and in every thread that starts later, the signals that would end this
// process, so that a run always comes to its end and removes what it made. Returns the signal mask
// as it was, for the command.
sigset_t hold_signals();

// Runs a command and returns its exit status, or kSignalled plus the signal that ended it, or
// kNotFound or kNotExecutable after a line on standard error. Signals that another process sends to
// this one meanwhile are passed on to the command; those that come from the terminal reach it
// anyway. Processes that the command leaves behind are killed before the return. A signal that was
// held back before the command could start keeps it from starting. `mask` is the command's signal
// mask. Call hold_signals first. Throws TestBedError when no process can be made.
int run_command(const std::vector<std::string>& command, Environment& environment,
                const sigset_t& mask);

}  // namespace nimba::sim
