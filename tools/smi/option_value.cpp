// SPDX-License-Identifier: MIT
#include "tools/smi/option_value.hpp"

#include "tools/smi/seconds.hpp"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <utility>

namespace nimba::smi {

void add_flag(CLI::App& app, const char* name, bool& value, const char* help)
{
    app.add_flag(name, value, help);
}

CLI::App& add_subcommand(CLI::App& command, const char* name, const char* summary,
                         std::function<void()> choose)
{
    CLI::App& app = *command.add_subcommand(name, summary);
    app.parse_complete_callback(std::move(choose));
    return app;
}

void add_text(CLI::App& app, const char* name, const char* type, std::optional<std::string>& value,
              const char* help)
{
    app.add_option(name, value, help)->type_name(type);
}

void add_checked(CLI::App& app, const char* name, const char* type, const std::string& expected,
                 const char* help, std::function<bool(const std::string&)> accepts,
                 const std::function<void(const std::string&)>& store)
{
    const auto fault = [accepts = std::move(accepts), expected](const std::string& text) {
        return accepts(text) ? std::string{}
                             : fmt::format("expected {}, got \"{}\"", expected, text);
    };
    app.add_option_function<std::string>(name, store, help)
        ->type_name(type)
        ->check(CLI::Validator{fault, ""});
}

void add_seconds(CLI::App& app, const char* name, const char* help,
                 const std::function<void(std::chrono::milliseconds)>& store, SecondsRange range)
{
    add_value(
        app, name, "SECONDS", fmt::format("seconds from {} to {}", range.shortest, range.longest),
        help,
        [range](const std::string& text) {
            return parse_seconds(text, range.shortest, range.longest);
        },
        store);
}

}  // namespace nimba::smi
