// SPDX-License-Identifier: MIT
#pragma once

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
inline Result run_on(const std::string& machine, const std::string& command_line)
{
    return run_shell(fmt::format("{} run --machine '{}' -- {}", NIMBA_SIM, machine, command_line));
}

}  // namespace nimba::sim::test
