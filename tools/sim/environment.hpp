// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nimba::sim {

// The environment of a command that is to be started.
class Environment {
  public:
    // Starts with `variables`, a null-terminated list of NAME=VALUE.
    explicit Environment(const char* const* variables);

    bool has(std::string_view name) { return find(name) != variables_.end(); }

    // The variable's value; empty if there is none.
    std::string get(std::string_view name);

    void set(std::string_view name, std::string_view value);

    // Put `item` before or behind the list that the variable is, with `separator` between them.
    void prepend(std::string_view name, std::string_view item, char separator);
    void append(std::string_view name, std::string_view item, char separator);

    // The null-terminated list that execve takes; valid until this object changes.
    std::vector<char*> variables();

  private:
    std::vector<std::string>::iterator find(std::string_view name);

    std::vector<std::string> variables_;
};

// Where the system looks for programs without PATH.
std::string default_path();

// Returns the file that `command` stands for: itself if it holds a slash, else the first executable
// of that name in the directories of `path`, else a file of that name there, else an empty text.
std::string find_program(const std::string& command, std::string_view path);

}  // namespace nimba::sim
