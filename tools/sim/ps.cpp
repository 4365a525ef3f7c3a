// SPDX-License-Identifier: MIT
// The ps of a run: it knows the machine's processes by name, and leaves everything else to the
// system's.
#include "environment.hpp"
#include "exit_status.hpp"
#include "message.hpp"

#include <unistd.h>

#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace nimba::sim {
namespace {

namespace fs = std::filesystem;

constexpr int kNoSuchProcess = 1;  // as the system's ps ends

// The processes whose names alone are asked for, "-p PROCESSES -o comm=" in either order. Anything
// else is not for this program.
std::optional<std::string> asked_processes(std::vector<std::string_view> words)
{
    if (words.size() != 4) {
        return std::nullopt;
    }
    if (words[0] == "-o") {
        std::rotate(words.begin(), words.begin() + 2, words.end());
    }
    if (words[0] != "-p" || words[2] != "-o" || words[3] != "comm=") {
        return std::nullopt;
    }
    return std::string{words[1]};
}

bool is_digit(unsigned char c)
{
    return std::isdigit(c) != 0;
}

fs::path name_file(std::string_view pid)
{
    const char* const machine = std::getenv("UMOCKDEV_DIR");
    return fmt::format("{}/proc/{}/comm", machine == nullptr ? "/nonexistent" : machine, pid);
}

// The name that the machine's process has; nothing if the machine has no such process.
std::optional<std::string> simulated_name(const std::string& processes)
{
    if (!std::ranges::all_of(processes, is_digit)) {
        return std::nullopt;
    }
    std::ifstream file{name_file(processes)};
    std::string name;
    if (!std::getline(file, name, '\0')) {
        return std::nullopt;
    }
    name.pop_back();  // the newline
    return name;
}

// Whether a process of them is known not to be there: its name can be looked at, but not opened.
bool has_absent_process(std::string_view processes)
{
    while (true) {
        processes.remove_prefix(std::min(processes.find_first_of("123456789"), processes.size()));
        if (processes.empty()) {
            return false;
        }
        const auto end = std::min(processes.find_first_not_of("0123456789"), processes.size());
        const fs::path file = name_file(processes.substr(0, end));
        std::error_code ignored;
        if (fs::exists(fs::symlink_status(file, ignored)) && !std::ifstream{file}) {
            return true;
        }
        processes.remove_prefix(end);
    }
}

std::string path_variable()
{
    const char* path = std::getenv("PATH");
    return path == nullptr ? default_path() : path;
}

// PATH without the directory of this program.
std::string path_without_this()
{
    const fs::path here = fs::read_symlink("/proc/self/exe").parent_path();
    const std::string path = path_variable();
    std::string rest;
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find(':', start), path.size());
        const std::string directory = path.substr(start, end - start);
        std::error_code ignored;
        if (!fs::equivalent(directory.empty() ? "." : directory, here, ignored)) {
            rest += (rest.empty() ? "" : ":") + (directory.empty() ? "." : directory);
        }
        start = end + 1;
    }
    return rest;
}

int run_next(char** arguments)
{
    const std::string program = find_program("ps", path_without_this());
    if (program.empty()) {
        complain("there is no ps on PATH behind that of the simulated machine");
        return kNotFound;
    }
    execv(program.c_str(), arguments);
    complain(fmt::format("cannot execute {}: {}", program, std::strerror(errno)));
    return kNotExecutable;
}

int main_with_arguments(int argument_count, char** arguments)
{
    const auto processes = asked_processes({arguments + 1, arguments + argument_count});
    const auto name = processes ? simulated_name(*processes) : std::nullopt;
    if (!name && processes && has_absent_process(*processes)) {
        return kNoSuchProcess;
    }
    if (!name) {
        return run_next(arguments);
    }
    std::string line = *name;
    // What would move the cursor of a terminal shows as ps shows it.
    std::ranges::replace_if(
        line, [](unsigned char c) { return std::iscntrl(c) != 0; }, '?');
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stdout);
    return std::fflush(stdout) == 0 ? 0 : kNoOutput;
}

}  // namespace
}  // namespace nimba::sim

int main(int argument_count, char** arguments)
{
    try {
        return nimba::sim::main_with_arguments(argument_count, arguments);
    } catch (const std::exception& error) {
        nimba::sim::complain(error.what());
        return nimba::sim::kNotExecutable;
    }
}
