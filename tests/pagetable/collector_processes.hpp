// SPDX-License-Identifier: MIT
// The processes that the command "ps" knows.
#pragma once

#include "support/environment.hpp"
#include "support/temp_directory.hpp"

#include <cstdlib>
#include <filesystem>
#include <string>

namespace nimba::test {

// In its scope "ps" is a command of the test: process N has the name "process N".
class Processes final {
  public:
    Processes()
    {
        const char* script = R"(#!/bin/sh
directory="${0%/*}"
printf '%s\n' "$*" >> "$directory/calls"
if [ -f "$directory/output-$2" ]; then
    cat "$directory/output-$2"
else
    echo "process $2"
fi
)";
        std::filesystem::permissions(commands_.write("ps", script),
                                     std::filesystem::perms::owner_all);
        commands_.write("calls", "");
    }

    // For this process ps now writes `output`.
    void answer(const std::string& pid, const std::string& output) const
    {
        commands_.write("output-" + pid, output);
    }

    // The arguments of each call since the last time that this was asked, one a line.
    std::string take_calls() const
    {
        std::string calls = commands_.read("calls");
        commands_.write("calls", "");
        return calls;
    }

    // From now on there is no command "ps".
    void remove_command() const { path_.assign(commands_.path().string() + "/empty"); }

  private:
    TempDirectory commands_;
    ScopedVariable path_{"PATH", commands_.path().string() + ":" + std::getenv("PATH")};
};

}  // namespace nimba::test
