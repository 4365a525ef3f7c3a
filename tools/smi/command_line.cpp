// SPDX-License-Identifier: MIT
#include "tools/smi/command_line.hpp"

#include "tools/completion/completion_command.hpp"
#include "tools/parse_fault.hpp"
#include "tools/smi/command_line_help.hpp"
#include "tools/smi/completion_hints.hpp"
#include "tools/smi/option_value.hpp"
#include "tools/smi/tool_version.hpp"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <utility>

namespace nimba::smi {
namespace {

constexpr const char* kDescription =
    "Shows the adapters of the Nimba and QV chips, their memory, page tables, clocks,\n"
    "sensors and use, and changes their settings. Without a command it shows an\n"
    "overview.";

constexpr const char* kFooter =
    "Exit status:\n"
    "  0  all right\n"
    "  1  output could not be written, leaks --fail-on-growth was cut short, prefer\n"
    "     cannot use the preference file, or an internal error\n"
    "  2  the command line makes no sense, or does not fit the machine or a file\n"
    "  3  no Nimba or QV adapter was found, or one does not answer or went away\n"
    "  4  the management library cannot be loaded or does not fit\n"
    "  5  libdrm is missing or unusable\n"
    "  6  something could not be read or written for want of permission\n"
    "  7  a worker process died or gave no answer in time\n"
    "  8  leaks --fail-on-growth: a group grew by that much\n"
    "  9  the driver did not take a setting, or does not have it; or prefer had no\n"
    "     preference to remove, or the library did not write what it was told to\n"
    "When several apply, it is the first of 1, 2, 4, 7, 5, 6, 3, 9, 8. That of doctor\n"
    "is the gravest of the checks that failed.\n"
    "\n"
    "Examples:\n"
    "  nimba-smi                        the overview\n"
    "  nimba-smi --watch 2 -i 0         the overview of adapter 0, every two seconds\n"
    "  nimba-smi ps --top 10            who uses the most video memory\n"
    "  nimba-smi usage --json | jq .    what the engines do, for a script\n"
    "  nimba-smi doctor                 what to do when something does not work\n"
    "\n"
    "nimba-smi COMMAND --help has the options of a command, nimba-smi(1) has more.";

constexpr const char* kCommandFooter =
    "--json, --units, --verbose, --timeout and --library may stand here too;\n"
    "see nimba-smi --help.";

constexpr SecondsRange kTimeouts{.shortest = 0.001};

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
    add_seconds(
        app, "--timeout", "Give up a call that takes longer than this (default: 10)",
        [&options](std::chrono::milliseconds timeout) { options.timeout = timeout; }, kTimeouts);
    add_value(app, "--units", "UNIT", "auto, B, KiB, MiB, GiB, kB, MB or GB",
              "Show sizes in tables in this unit (default: auto)", parse_size_unit,
              [&options](SizeUnit unit) { options.units = unit; });
    app.add_option("--library", options.library,
                   "The management library to load, instead of the installed one")
        ->type_name("PATH")
        ->check(CLI::Validator{
            [](const std::string& path) { return path.empty() ? "expected a path" : ""; }, ""});
}

// The options of what is run without a command.
void add_nameless(CLI::App& app, const Command& command, Options& options)
{
    const auto common = app.get_options();
    command.add_options(app, options);
    for (CLI::Option* const option : app.get_options()) {
        if (std::ranges::find(common, option) == common.end()) {
            option->group(kOverviewGroup);
        }
    }
}

void add_command(CLI::App& app, const Command& command, Options& options)
{
    CLI::App* const subcommand = app.add_subcommand(command.name, command.summary);
    subcommand->footer(kCommandFooter);
    if (command.add_options != nullptr) {
        command.add_options(*subcommand, options);
    }
    // Behind its actions, which would inherit it.
    subcommand->group(command.group);
}

bool is_nameless(const Command& command)
{
    return *command.name == '\0';
}

UsageError usage_error(const std::string& fault)
{
    return {one_line(fault) + "; see nimba-smi --help"};
}

// Whether the word is in front of the command.
bool is_in_front(const std::string& word, const std::string& command,
                 std::span<const char* const> arguments)
{
    return std::ranges::find(arguments, word) < std::ranges::find(arguments, command);
}

// Of the arguments that nothing is made of, the first tells best what is wrong.
UsageError unexpected(const CLI::App& app, std::span<const char* const> arguments)
{
    const std::string word = app.remaining(true).front();
    const bool is_option = word.starts_with('-');
    if (app.get_subcommands().empty()) {
        return usage_error(is_option ? fmt::format("there is no option {}", word)
                                     : fmt::format("there is no command \"{}\"", word));
    }
    const std::string command = app.get_subcommands().front()->get_name();
    if (is_in_front(word, command, arguments)) {
        return usage_error(
            is_option ? fmt::format("{} is in front of {}: a command's options are behind it", word,
                                    command)
                      : fmt::format("there is no command \"{}\"", word));
    }
    const std::string fault = is_option ? fmt::format("{} has no option {}", command, word)
                                        : fmt::format("{} takes no \"{}\"", command, word);
    return {fmt::format("{}; see nimba-smi {} --help", fault, command)};
}

// What the arguments ask for, and whether they name a command.
struct Attempt {
    ParsedCommandLine parsed;
    bool names_command = false;
};

ParsedCommandLine invocation_of(const Command& command, const Options& options)
{
    const std::string fault =
        command.options_fault == nullptr ? "" : command.options_fault(options);
    if (!fault.empty()) {
        return usage_error(fault);
    }
    return Invocation{&command, options};
}

// With the options of the command without a name, or without them.
Attempt attempt(int count, const char* const* arguments, std::span<const Command> commands,
                bool with_nameless)
{
    Options options;
    CLI::App app{kDescription, "nimba-smi"};
    app.option_defaults()->disable_flag_override();  // no --json=3
    add_common_options(app, options);
    app.require_subcommand(0, 1);
    app.fallthrough();
    app.formatter(std::make_shared<HelpFormatter>());
    for (const Command& command : commands) {
        if (!is_nameless(command)) {
            add_command(app, command, options);
        } else if (with_nameless) {
            add_nameless(app, command, options);
        }
    }
    const completion::CompletionCommand completion{app};
    app.get_subcommand("completion")->group(kHelpGroup);
    // Behind the commands, which would inherit it.
    app.footer(kFooter);
    const auto names_command = [&app] { return !app.get_subcommands().empty(); };
    try {
        app.parse(count, arguments);
    } catch (const CLI::CallForHelp&) {
        return {PrintText{app.help()}, names_command()};
    } catch (const CLI::CallForVersion& version) {
        return {PrintText{std::string{version.what()} + '\n'}, names_command()};
    } catch (const CLI::ExtrasError&) {
        return {unexpected(app, {arguments, static_cast<std::size_t>(count)}), names_command()};
    } catch (const CLI::ParseError& error) {
        return {usage_error(tools::parse_fault(error)), names_command()};
    }
    if (completion.parsed()) {
        return {PrintText{completion.script(completion_hints())}, false};
    }
    const auto command = std::ranges::find_if(commands, [&](const Command& known) {
        return is_nameless(known) ? !names_command() : app.got_subcommand(known.name);
    });
    return {command == commands.end() ? usage_error("a command is required")
                                      : invocation_of(*command, options),
            names_command()};
}

}  // namespace

ParsedCommandLine parse_command_line(int count, const char* const* arguments,
                                     std::span<const Command> commands)
{
    Attempt first = attempt(count, arguments, commands, true);
    return first.names_command ? attempt(count, arguments, commands, false).parsed
                               : std::move(first.parsed);
}

}  // namespace nimba::smi
