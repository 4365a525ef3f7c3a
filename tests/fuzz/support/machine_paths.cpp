// SPDX-License-Identifier: MIT
#include "fuzz/support/machine_paths.hpp"

#include <dirent.h>

#include <sys/types.h>

#include <cerrno>
#include <cstdio>
#include <map>
#include <string_view>

namespace nimba::fuzz {
namespace {

std::map<std::string, std::string>& places()
{
    static std::map<std::string, std::string> places;
    return places;
}

std::string& command_line_file()
{
    static std::string file;
    return file;
}

std::string& command_file()
{
    static std::string file;
    return file;
}

bool is_command_line(std::string_view path)
{
    return !command_line_file().empty() && path.starts_with("/proc/") && path.ends_with("/cmdline");
}

std::string redirected(std::string_view path)
{
    if (is_command_line(path)) {
        const char last_digit = path[path.size() - sizeof "/cmdline"];
        return last_digit % 2 == 0 ? command_line_file() : "";
    }
    for (const auto& [place, instead] : places()) {
        if (path.starts_with(place) && (path.size() == place.size() || path[place.size()] == '/')) {
            return instead + std::string{path.substr(place.size())};
        }
    }
    return std::string{path};
}

}  // namespace

void redirect(const std::string& path, const std::string& instead)
{
    places()[path] = instead;
}

void redirect_command_lines(const std::string& file)
{
    command_line_file() = file;
}

void redirect_commands(const std::string& file)
{
    command_file() = file;
}

}  // namespace nimba::fuzz

// The linker puts these in the place of the C library's functions, and those behind __real_. A mode
// that a caller did not pass is what its register held; the C library ignores it as well.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the linker's names
int __real_open(const char* path, int flags, ...);
int __real_openat(int directory, const char* path, int flags, ...);
DIR* __real_opendir(const char* path);
std::FILE* __real_fopen(const char* path, const char* mode);

int __wrap_open(const char* path, int flags, mode_t mode)
{
    return __real_open(nimba::fuzz::redirected(path).c_str(), flags, mode);
}

int __wrap_openat(int directory, const char* path, int flags, mode_t mode)
{
    return __real_openat(directory, nimba::fuzz::redirected(path).c_str(), flags, mode);
}

DIR* __wrap_opendir(const char* path)
{
    return __real_opendir(nimba::fuzz::redirected(path).c_str());
}

std::FILE* __wrap_fopen(const char* path, const char* mode)
{
    return __real_fopen(nimba::fuzz::redirected(path).c_str(), mode);
}

std::FILE* __wrap_popen(const char* /*command*/, const char* mode)
{
    if (nimba::fuzz::command_file().empty()) {
        errno = EAGAIN;
        return nullptr;
    }
    return __real_fopen(nimba::fuzz::command_file().c_str(), mode);
}

int __wrap_pclose(std::FILE* stream)
{
    return std::fclose(stream);
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
}
