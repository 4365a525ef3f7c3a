// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace nimba::sim {

struct ListedMachine {
    std::string name;
    std::string description;
    std::string file;
};

struct MachineList {
    std::vector<ListedMachine> machines;
    std::vector<std::string> problems;  // a line about each file that is not a machine
};

// The machines of `directory` by name. Throws MachineFileError when it cannot be listed.
MachineList list_machines(const std::filesystem::path& directory);

// The file that a user means: `machine` itself if it holds a slash or ends in ".toml", else the
// machine of that name in `directory`. Throws MachineFileError when there is no such machine.
std::string find_machine(const std::string& machine, const std::filesystem::path& directory);

}  // namespace nimba::sim
