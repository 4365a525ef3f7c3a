// SPDX-License-Identifier: MIT
#pragma once

#include "machine.hpp"
#include "simulation.hpp"

#include <filesystem>
#include <string>
#include <vector>

namespace nimba::sim {

// Where nimba-sim finds its own parts.
struct Installation {
    std::filesystem::path programs;   // directory of nimba-sim and its sister programs
    std::filesystem::path machines;   // directory of the machine files
    std::filesystem::path stand_ins;  // directory of the kernel-interface stand-ins
};

// Finds them from the running program's own place.
Installation find_installation();

// Runs the command on the machine and returns its exit status as run_command does. Nothing that was
// made for it is left afterwards. Throws TestBedError.
int run_on_machine(const Machine& machine, const std::vector<std::string>& command,
                   const Installation& installation, Drivers drivers);

}  // namespace nimba::sim
