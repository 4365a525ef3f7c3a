// SPDX-License-Identifier: MIT
#include "leftovers.hpp"

#include <signal.h>
#include <unistd.h>

#include <sys/wait.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>

namespace nimba::sim {
namespace {

namespace fs = std::filesystem;

// Reads the parent's process id, the second word behind the name in parentheses.
std::optional<pid_t> parent_of(const fs::path& process)
{
    std::ifstream stream{process / "stat"};
    std::string text;
    std::getline(stream, text);
    const auto name_end = text.rfind(") ");
    if (name_end == std::string::npos || name_end + 4 > text.size()) {
        return std::nullopt;
    }
    const char* const first = text.data() + name_end + 4;
    pid_t parent = 0;
    const auto [end, error] = std::from_chars(first, text.data() + text.size(), parent);
    return error == std::errc{} ? std::optional{parent} : std::nullopt;
}

void kill_children()
{
    const pid_t self = getpid();
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator{"/proc", ignored}) {
        const std::string name = entry.path().filename();
        pid_t pid = 0;
        const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
        if (error == std::errc{} && parent_of(entry.path()) == self) {
            kill(pid, SIGKILL);
        }
    }
}

}  // namespace

void kill_leftovers()
{
    do {
        kill_children();
    } while (waitpid(-1, nullptr, 0) > 0);
}

}  // namespace nimba::sim
