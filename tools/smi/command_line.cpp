// SPDX-License-Identifier: MIT
#include "tools/smi/command_line.hpp"

#include "tools/smi/option_value.hpp"
#include "tools/smi/seconds.hpp"
#include "tools/smi/tool_version.hpp"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <chrono>

namespace nimba::smi {
namespace {

constexpr const char* kFooter =
    "Exit status:\n"
    "  0  all right\n"
    "  1  output could not be written, leaks --fail-on-growth was cut short, or an\n"
    "     internal error\n"
    "  2  the command line makes no sense, or does not fit the machine\n"
    "  3  no Nimba or QV adapter was found, or one does not answer or went away\n"
    "  4  the management library cannot be loaded or does not fit\n"
    "  5  libdrm is missing or unusable\n"
    "  6  something could not be read or written for want of permission\n"
    "  7  a worker process died or gave no answer in time\n"
    "  8  leaks --fail-on-growth: a group grew by that much\n"
    "  9  the driver did not take a setting, or does not have it\n"
    "See nimba-smi(1) for more.\n";

constexpr const char* kCommandFooter =
    "--json, --verbose, --timeout and --library may stand here too; see nimba-smi --help.\n";

constexpr double kShortestTimeout = 0.001;
constexpr double kLongestTimeout = 86400;

// The library tells what is wrong in one line or several; users get one.
std::string one_line(std::string text)
{
    std::ranges::replace(text, '\n', ' ');
    return text;
}

void add_common_options(CLI::App& app, Options& options)
{
    app.set_version_flag("--version", fmt::format("nimba-smi {}", kToolVersion));
    app.add_flag("--json", options.json, "Print a JSON document instead of text");
    app.add_flag("-v,--verbose", options.verbose, "Show the library's messages on standard error");
    add_value(
        app, "--timeout", "SECONDS",
        fmt::format("seconds from {} to {}", kShortestTimeout, kLongestTimeout),
        "Give up a call that takes longer than this (default: 10)",
        [](const std::string& text) {
            return parse_seconds(text, kShortestTimeout, kLongestTimeout);
        },
        [&options](std::chrono::milliseconds timeout) { options.timeout = timeout; });
    app.add_option("--library", options.library,
                   "The management library to load, instead of the installed one")
        ->type_name("PATH")
        ->check(CLI::Validator{
            [](const std::string& path) { return path.empty() ? "expected a path" : ""; }, ""});
}

void add_command(CLI::App& app, const Command& command, Options& options)
{
    CLI::App* const subcommand = app.add_subcommand(command.name, command.summary);
    subcommand->footer(kCommandFooter);
    if (command.add_options != nullptr) {
        command.add_options(*subcommand, options);
    }
}

UsageError usage_error(const std::string& fault)
{
    return {one_line(fault) + "; see nimba-smi --help"};
}

}  // namespace

ParsedCommandLine parse_command_line(int count, const char* const* arguments,
                                     std::span<const Command> commands)
{
    Options options;
    CLI::App app{
        "Shows the adapters of the Nimba and QV chips, their memory, page tables, clocks,\n"
        "sensors and use, and changes their settings.\n",
        "nimba-smi"};
    add_common_options(app, options);
    app.require_subcommand(0, 1);
    app.fallthrough();
    app.footer(kFooter);
    for (const Command& command : commands) {
        add_command(app, command, options);
    }
    try {
        app.parse(count, arguments);
    } catch (const CLI::CallForHelp&) {
        return PrintText{app.help()};
    } catch (const CLI::CallForVersion& version) {
        return PrintText{std::string{version.what()} + '\n'};
    } catch (const CLI::ParseError& error) {
        return usage_error(error.what());
    }
    const auto command = std::ranges::find_if(
        commands, [&](const Command& known) { return app.got_subcommand(known.name); });
    if (command == commands.end()) {
        return usage_error("a command is required");
    }
    const std::string fault =
        command->options_fault == nullptr ? "" : command->options_fault(options);
    if (!fault.empty()) {
        return usage_error(fault);
    }
    return Invocation{&*command, options};
}

}  // namespace nimba::smi
