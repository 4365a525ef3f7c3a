// SPDX-License-Identifier: MIT
#pragma once

#include "support/live_drivers.hpp"

#include <fmt/format.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace nimba::sim::test {

struct Result {
    int status;
    std::string output;  // standard output and standard error
};

inline Result run_shell(const std::string& command_line)
{
    std::FILE* pipe = popen((command_line + " 2>&1").c_str(), "r");
    if (pipe == nullptr) {
        throw std::runtime_error{"cannot run " + command_line};
    }
    std::string output;
    std::array<char, 4096> part{};
    while (const std::size_t length = std::fread(part.data(), 1, part.size(), pipe)) {
        output.append(part.data(), length);
    }
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

// Runs a command line of the shell's kind on a simulated machine.
// Nothing is said where drivers cannot be live.
inline Result run_on(const std::string& machine, const std::string& command_line)
{
    const char* const drivers =
        nimba::test::live_drivers_work(NIMBA_SIM) ? "" : "NIMBA_SIM_DRIVERS=plain ";
    return run_shell(
        fmt::format("{}{} run --machine '{}' -- {}", drivers, NIMBA_SIM, machine, command_line));
}

}  // namespace nimba::sim::test
