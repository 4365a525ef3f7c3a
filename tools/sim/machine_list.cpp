// SPDX-License-Identifier: MIT
#include "machine_list.hpp"

#include "machine_file.hpp"
#include "machine_file_error.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <system_error>

namespace nimba::sim {

namespace fs = std::filesystem;

MachineList list_machines(const fs::path& directory)
{
    std::vector<fs::path> files;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator{directory, error}) {
        if (entry.path().extension() == ".toml") {
            files.push_back(entry.path());
        }
    }
    if (error) {
        throw MachineFileError{
            fmt::format("{}: cannot be listed: {}", directory.native(), error.message())};
    }
    std::ranges::sort(files, {}, [](const fs::path& file) { return file.stem(); });
    MachineList list;
    for (const fs::path& file : files) {
        try {
            list.machines.push_back({file.stem(), read_machine(file).description, file});
        } catch (const MachineFileError& problem) {
            list.problems.emplace_back(problem.what());
        }
    }
    return list;
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
