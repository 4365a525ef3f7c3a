// SPDX-License-Identifier: MIT
#include "environment.hpp"

#include <unistd.h>

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>

namespace nimba::sim {

Environment::Environment(const char* const* variables)
{
    for (; *variables != nullptr; ++variables) {
        variables_.emplace_back(*variables);
    }
}

std::vector<std::string>::iterator Environment::find(std::string_view name)
{
    return std::ranges::find_if(variables_, [=](std::string_view variable) {
        return variable.starts_with(name) && variable.substr(name.size()).starts_with('=');
    });
}

std::string Environment::get(std::string_view name)
{
    const auto variable = find(name);
    return variable == variables_.end() ? "" : variable->substr(name.size() + 1);
}

void Environment::set(std::string_view name, std::string_view value)
{
    const auto variable = find(name);
    if (variable == variables_.end()) {
        variables_.push_back(fmt::format("{}={}", name, value));
    } else {
        *variable = fmt::format("{}={}", name, value);
    }
}

void Environment::prepend(std::string_view name, std::string_view item, char separator)
{
    const std::string list = get(name);
    set(name, list.empty() ? std::string{item} : fmt::format("{}{}{}", item, separator, list));
}

void Environment::append(std::string_view name, std::string_view item, char separator)
{
    const std::string list = get(name);
    set(name, list.empty() ? std::string{item} : fmt::format("{}{}{}", list, separator, item));
}

std::vector<char*> Environment::variables()
{
    std::vector<char*> list;
    for (std::string& variable : variables_) {
        list.push_back(variable.data());
    }
    list.push_back(nullptr);
    return list;
}

std::string default_path()
{
    std::string path(confstr(_CS_PATH, nullptr, 0), '\0');
    confstr(_CS_PATH, path.data(), path.size());
    path.pop_back();  // the terminating null
    return path;
}

std::string find_program(const std::string& command, std::string_view path)
{
    if (command.find('/') != std::string::npos) {
        return command;
    }
    std::string found;
    while (!path.empty()) {
        const std::size_t length = std::min(path.find(':'), path.size());
        // An empty entry stands for the working directory.
        const auto file =
            std::filesystem::path{length == 0 ? "." : path.substr(0, length)} / command;
        std::error_code ignored;
        if (std::filesystem::is_regular_file(file, ignored)) {
            if (access(file.c_str(), X_OK) == 0) {
                return file;
            }
            found = file;
        }
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    return found;
}

}  // namespace nimba::sim
