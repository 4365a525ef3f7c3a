// SPDX-License-Identifier: MIT
// What most commands' options are made of, for files that do not need all of the parser.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds a flag that sets `value`.
void add_flag(CLI::App& app, const char* name, bool& value, const char* help);

// Adds a command of the command, which calls `choose` when it is given.
CLI::App& add_subcommand(CLI::App& command, const char* name, const char* summary,
                         std::function<void()> choose);

// Adds a command that puts `action` into `chosen`.
template <typename Action>
CLI::App& add_action(CLI::App& command, const char* name, const char* summary, Action& chosen,
                     Action action)
{
    return add_subcommand(command, name, summary, [&chosen, action] { chosen = action; });
}

// Adds an option that puts any text into `value`.
void add_text(CLI::App& app, const char* name, const char* type, std::optional<std::string>& value,
              const char* help);

// Adds an option whose value `accepts` tells from others, for `store`. Others are refused with
// "expected <expected>, got ...".
void add_checked(CLI::App& app, const char* name, const char* type, const std::string& expected,
                 const char* help, std::function<bool(const std::string&)> accepts,
                 const std::function<void(const std::string&)>& store);

// Adds an option whose value `parse` reads, a function that gives an optional.
template <typename Parse, typename Store>
void add_value(CLI::App& app, const char* name, const char* type, const std::string& expected,
               const char* help, Parse parse, Store store)
{
    add_checked(
        app, name, type, expected, help,
        [parse](const std::string& text) { return parse(text).has_value(); },
        [parse, store](const std::string& text) { store(*parse(text)); });
}

// As a time between samples is.
struct SecondsRange {
    double shortest = 0.01;
    double longest = 86400;
};

// Adds an option with a time in seconds, for `store` in milliseconds.
void add_seconds(CLI::App& app, const char* name, const char* help,
                 const std::function<void(std::chrono::milliseconds)>& store,
                 SecondsRange range = {});

}  // namespace nimba::smi
