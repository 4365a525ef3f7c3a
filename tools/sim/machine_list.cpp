// SPDX-License-Identifier: MIT
#include "machine_list.hpp"

#include "machine_file.hpp"
#include "machine_file_error.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <system_error>

namespace nimba::sim {

namespace fs = std::filesystem;

std::vector<ListedMachine> list_machines(const fs::path& directory)
{
    std::vector<ListedMachine> machines;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator{directory, error}) {
        if (entry.path().extension() == ".toml") {
            machines.push_back(
                {entry.path().stem(), read_machine(entry.path()).description, entry.path()});
        }
    }
    if (error) {
        throw MachineFileError{
            fmt::format("{}: cannot be listed: {}", directory.native(), error.message())};
    }
    std::ranges::sort(machines, {}, &ListedMachine::name);
    return machines;
}

std::string find_machine(const std::string& machine, const fs::path& directory)
{
    if (machine.find('/') != std::string::npos || machine.ends_with(".toml")) {
        return machine;
    }
    const fs::path file = directory / (machine + ".toml");
    std::error_code ignored;
    if (!fs::exists(file, ignored)) {
        throw MachineFileError{fmt::format(
            "no machine is called '{}'; `nimba-sim machines` lists those that there are", machine)};
    }
    return file;
}

}  // namespace nimba::sim
