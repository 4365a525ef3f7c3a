// SPDX-License-Identifier: MIT
#include "commands_command.hpp"

#include "control_node.hpp"
#include "driver/command_control.hpp"
#include "test_bed_error.hpp"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <sstream>

namespace nimba::sim {
namespace {

// The lines of CommandLog::text() as a list of objects.
std::string to_json(const std::string& log)
{
    auto list = nlohmann::ordered_json::array();
    std::istringstream lines{log};
    std::string node;
    std::string result;
    std::string text;
    while (lines >> node >> result && std::getline(lines >> std::ws, text)) {
        list.push_back(
            {{"node", node},
             {"error", result == "ok" ? nlohmann::ordered_json{} : nlohmann::ordered_json(result)},
             {"text", nlohmann::ordered_json::parse(text)}});
    }
    return list.dump(2) + "\n";
}

}  // namespace

CommandsCommand::CommandsCommand(CLI::App& app)
    : subcommand_{app.add_subcommand(
          "commands", "List the commands that drivers of the machine got, from inside a run")}
{
    CLI::Option* const json = subcommand_->add_flag("--json", json_, "Print JSON");
    subcommand_->add_flag("--clear", clear_, "Forget them all")->excludes(json);
}

std::string CommandsCommand::run() const
{
    if (!clear_) {
        const std::string log = read_control_node(kCommandNode);
        return json_ ? to_json(log) : log;
    }
    if (const int error = write_control_node(kCommandNode, kClearCommands); error != 0) {
        throw TestBedError{fmt::format("the log cannot be emptied: {}", std::strerror(error))};
    }
    return "";
}

}  // namespace nimba::sim
