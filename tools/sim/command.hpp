// SPDX-License-Identifier: MIT
#pragma once

#include "environment.hpp"
#include "inheritance.hpp"

#include <string>
#include <vector>

namespace nimba::sim {

// Runs a command and returns its exit status, or kSignalled plus the signal that ended it, or
// kNotFound or kNotExecutable after a line on standard error. Signals that this process holds back
// are passed on to the command; one that came before the command could start keeps it from
// starting. It is killed when `starter`, the parent of this process, ends. Processes that it leaves
// behind are killed before the return, and so is every other child of this process. Call
// prepare_for_run before. Throws TestBedError when no process can be made.
int run_command(const std::vector<std::string>& command, Environment& environment,
                const Inheritance& inheritance, pid_t starter);

}  // namespace nimba::sim
