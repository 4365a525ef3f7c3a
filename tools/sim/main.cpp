// SPDX-License-Identifier: MIT
#include "commands_command.hpp"
#include "completion_hints.hpp"
#include "driver/live_driver.hpp"
#include "exit_status.hpp"
#include "fault_command.hpp"
#include "machine_file.hpp"
#include "machine_file_error.hpp"
#include "machine_list.hpp"
#include "message.hpp"
#include "replay/replay_command.hpp"
#include "run.hpp"
#include "test_bed_error.hpp"
#include "tools/completion/completion_command.hpp"
#include "tools/parse_fault.hpp"

#include <CLI/CLI.hpp>
#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace nimba::sim {
namespace {

constexpr const char* kFooter = R"(Exit status:
  run and replay: that of the command, or
    128+N  signal N ended the command
    127    the command was not found
    126    the command could not be executed
  and for every subcommand
    0      done
    1      the output could not be written
    2      bad usage
    3      no such machine, or a bad machine file or capture
    4      the simulated machine could not be made, or is not there
)";

const std::map<std::string, Drivers> kDrivers{
    {"auto", Drivers::kLiveIfPossible}, {"live", Drivers::kLive}, {"plain", Drivers::kPlain}};

struct Options {
    std::string machine = "default";
    std::string drivers;
    std::vector<std::string> command;
    std::string file;
    bool json = false;
};

void print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

// Standard output may be a full disk or closed, which shows when it is flushed.
int flush_output()
{
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return 0;
    }
    complain(fmt::format("cannot write to standard output: {}", std::strerror(errno)));
    return kNoOutput;
}

void print_json(const std::vector<ListedMachine>& machines)
{
    auto list = nlohmann::ordered_json::array();
    for (const ListedMachine& machine : machines) {
        list.push_back(
            {{"name", machine.name}, {"description", machine.description}, {"file", machine.file}});
    }
    // A file name may be no UTF-8.
    print(list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
}

void print_table(const std::vector<ListedMachine>& machines)
{
    std::size_t width = 0;
    for (const ListedMachine& machine : machines) {
        width = std::max(width, machine.name.size());
    }
    for (const ListedMachine& machine : machines) {
        print(without_control_characters(machine.name) +
              std::string(width - machine.name.size() + 2, ' ') + machine.description + "\n");
    }
}

int print_machines(const Installation& installation, bool json)
{
    const auto [machines, problems] = list_machines(installation.machines);
    for (const std::string& problem : problems) {
        complain(problem);
    }
    if (json) {
        print_json(machines);
    } else {
        print_table(machines);
    }
    const int status = flush_output();
    return status == 0 && !problems.empty() ? kBadMachine : status;
}

// What the option says, or else the environment.
Drivers choose_drivers(const std::string& option)
{
    const char* const variable = option.empty() ? std::getenv("NIMBA_SIM_DRIVERS") : nullptr;
    const std::string name = variable == nullptr ? option : variable;
    const auto found = kDrivers.find(name.empty() ? "auto" : name);
    if (found == kDrivers.end()) {
        throw CLI::ValidationError{
            variable == nullptr ? "--drivers" : "NIMBA_SIM_DRIVERS",
            fmt::format("expected auto, live or plain, got {}", without_control_characters(name))};
    }
    return found->second;
}

// Takes the command of `run` or `replay` off the words, with the "--" before it. It is not for the
// parser, which would find lists and options in it.
std::vector<std::string> cut_command(std::vector<std::string>& words)
{
    const auto subcommand =
        std::ranges::find_if(words, [](const auto& word) { return !word.starts_with('-'); });
    if (subcommand == words.end() || (*subcommand != "run" && *subcommand != "replay")) {
        return {};
    }
    const auto mark = std::find(subcommand, words.end(), "--");
    if (mark == words.end()) {
        return {};
    }
    std::vector<std::string> command{mark + 1, words.end()};
    words.erase(mark, words.end());
    return command;
}

int main_with_arguments(int argument_count, char** arguments)
{
    Options options;
    CLI::App app{"Run programs on a simulated machine with Nimba and QV adapters.", "nimba-sim"};
    app.option_defaults()->disable_flag_override();  // no --json=3
    app.set_version_flag("--version", "nimba-sim " NIMBA_VERSION);
    app.require_subcommand(1);
    app.footer(kFooter);

    auto* run = app.add_subcommand("run",
                                   "Run a command on a simulated machine:\n"
                                   "nimba-sim run [OPTIONS] -- COMMAND [ARGUMENT...]");
    run->add_option("-m,--machine", options.machine,
                    "Name of a machine (see `nimba-sim machines`), or a machine file: a text with "
                    "a \"/\" or that ends in \".toml\"")
        ->option_text("MACHINE")
        ->capture_default_str();
    run->add_option("--drivers", options.drivers,
                    "Whether the drivers live, or leave plain files as their nodes: auto, live "
                    "or plain; without it what NIMBA_SIM_DRIVERS says, or auto")
        ->option_text("WHICH");

    const ReplayCommand replay{app};

    app.failure_message([run, &replay](const CLI::App*, const CLI::Error& error) {
        const bool is_command =
            (run->parsed() || replay.parsed()) &&
            error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError);
        return fmt::format("nimba-sim: {}{}; see nimba-sim --help\n", tools::parse_fault(error),
                           is_command ? " (a command stands behind \"--\")" : "");
    });

    auto* machines = app.add_subcommand("machines", "List the machines that there are");
    machines->add_flag("--json", options.json, "Print JSON");

    auto* check = app.add_subcommand("check", "Check a machine file");
    check->add_option("FILE", options.file, "Machine file, or name of a machine")->required();

    const FaultCommand fault{app};
    const CommandsCommand commands{app};
    const completion::CompletionCommand completion{app};

    std::vector<std::string> words(arguments + 1, arguments + argument_count);
    options.command = cut_command(words);
    Drivers drivers = Drivers::kLiveIfPossible;
    std::ranges::reverse(words);  // the order in which the parser takes them
    try {
        app.parse(words);
        const bool runs = run->parsed() || replay.parsed();
        if (runs && options.command.empty()) {
            throw CLI::RequiredError{"COMMAND behind \"--\""};
        }
        drivers =
            runs ? choose_drivers(replay.parsed() ? replay.drivers() : options.drivers) : drivers;
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? flush_output() : kBadUsage;
    }

    if (completion.parsed()) {
        print(completion.script(completion_hints()));
        return flush_output();
    }
    if (fault.parsed() || commands.parsed()) {
        print(fault.parsed() ? fault.run() : commands.run());
        return flush_output();
    }
    const Installation installation = find_installation();
    if (machines->parsed()) {
        return print_machines(installation, options.json);
    }
    if (check->parsed()) {
        const std::string file = find_machine(options.file, installation.machines);
        print(fmt::format("{}: {}\n", without_control_characters(file),
                          read_machine(file).description));
        return flush_output();
    }
    if (replay.parsed()) {
        return replay.run(options.command, installation, drivers);
    }
    const Machine machine = read_machine(find_machine(options.machine, installation.machines));
    const auto make_driver = [&](MachineDriver::Clock clock) {
        return std::make_shared<LiveDriver>(machine, std::move(clock));
    };
    return run_on_machine({machine, make_driver, {}}, options.command, installation, drivers);
}

int fail(int status, const std::exception& error)
{
    complain(error.what());
    return status;
}

}  // namespace
}  // namespace nimba::sim

int main(int argument_count, char** arguments)
{
    using namespace nimba::sim;
    try {
        return main_with_arguments(argument_count, arguments);
    } catch (const MachineFileError& error) {
        return fail(kBadMachine, error);
    } catch (const std::exception& error) {
        return fail(kNoTestBed, error);
    }
}
