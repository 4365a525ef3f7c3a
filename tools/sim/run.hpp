// SPDX-License-Identifier: MIT
#pragma once

#include "driver/machine_driver.hpp"
#include "environment.hpp"
#include "machine.hpp"
#include "simulation.hpp"

#include <filesystem>
#include <functional>
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

// A machine and what makes it come alive.
struct Scene {
    const Machine& machine;
    MakeDriver make_driver;
    // Makes in the run's directory what else the command is to find, and says so in its
    // environment; may be empty.
    std::function<void(const std::filesystem::path& directory, Environment& environment)> furnish;
};

// Runs the command on the machine and returns its exit status as run_command does. Nothing that was
// made for it is left afterwards. Throws TestBedError.
int run_on_machine(const Scene& scene, const std::vector<std::string>& command,
                   const Installation& installation, Drivers drivers);

}  // namespace nimba::sim
