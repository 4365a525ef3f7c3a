// SPDX-License-Identifier: MIT
#include "tools/smi/command_line.hpp"

#include "tools/smi/tool_version.hpp"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace nimba::smi {
namespace {

constexpr const char* kFooter =
    "Exit status:\n"
    "  0  all right\n"
    "  1  output could not be written, or an internal error\n"
    "  2  the command line makes no sense\n"
    "  3  no Nimba or QV adapter was found, or one does not answer or went away\n"
    "  4  the management library cannot be loaded or does not fit\n"
    "  5  libdrm is missing or unusable\n"
    "  6  something could not be read for want of permission\n"
    "  7  a worker process died or gave no answer in time\n"
    "See nimba-smi(1) for more.\n";

constexpr const char* kCommandFooter =
    "--json, --verbose, --timeout and --library may stand here too; see nimba-smi --help.\n";

constexpr double kLongestTimeout = 86400;

// What is wrong with a timeout, or nothing. "nan" and the like are numbers to the parser.
std::string timeout_fault(const std::string& text)
{
    double seconds = 0;
    const bool number = CLI::detail::lexical_cast(text, seconds);
    if (number && std::isfinite(seconds) && seconds >= 0.001 && seconds <= kLongestTimeout) {
        return {};
    }
    return fmt::format("expected seconds from 0.001 to {}, got \"{}\"", kLongestTimeout, text);
}

// The library tells what is wrong in one line or several; users get one.
std::string one_line(std::string text)
{
    std::ranges::replace(text, '\n', ' ');
    return text;
}

}  // namespace

ParsedCommandLine parse_command_line(int count, const char* const* arguments,
                                     std::span<const Command> commands)
{
    Options options;
    double timeout = std::chrono::duration<double>(options.timeout).count();
    CLI::App app{"Shows the adapters of the Nimba and QV chips.\n", "nimba-smi"};
    app.set_version_flag("--version", fmt::format("nimba-smi {}", kToolVersion));
    app.add_flag("--json", options.json, "Print a JSON document instead of text");
    app.add_flag("-v,--verbose", options.verbose, "Show the library's messages on standard error");
    app.add_option("--timeout", timeout, "Give up a call that takes longer than this (default: 10)")
        ->type_name("SECONDS")
        ->check(CLI::Validator{timeout_fault, ""});
    app.add_option("--library", options.library,
                   "The management library to load, instead of the installed one")
        ->type_name("PATH")
        ->check(CLI::Validator{
            [](const std::string& path) { return path.empty() ? "expected a path" : ""; }, ""});
    app.require_subcommand(0, 1);
    app.fallthrough();
    app.footer(kFooter);
    for (const Command& command : commands) {
        app.add_subcommand(command.name, command.summary)->footer(kCommandFooter);
    }
    try {
        app.parse(count, arguments);
    } catch (const CLI::CallForHelp&) {
        return PrintText{app.help()};
    } catch (const CLI::CallForVersion& version) {
        return PrintText{std::string{version.what()} + '\n'};
    } catch (const CLI::ParseError& error) {
        return UsageError{one_line(error.what()) + "; see nimba-smi --help"};
    }
    const auto command = std::ranges::find_if(
        commands, [&](const Command& known) { return app.got_subcommand(known.name); });
    if (command == commands.end()) {
        return UsageError{"a command is required; see nimba-smi --help"};
    }
    options.timeout =
        std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(timeout));
    return Invocation{&*command, options};
}

}  // namespace nimba::smi
