// SPDX-License-Identifier: MIT
#include "replay/replay_command.hpp"

#include "machine_file_error.hpp"
#include "message.hpp"
#include "replay/captured_machine.hpp"
#include "replay/furnishing.hpp"
#include "replay/recorded_driver.hpp"
#include "tools/archive/archive_error.hpp"
#include "tools/archive/load.hpp"

#include <fmt/core.h>

#include <charconv>
#include <cstddef>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

namespace nimba::sim {
namespace {

constexpr double kSlowest = 0.001;
constexpr double kFastest = 1000;
constexpr std::size_t kMostProcesses = 20'000;  // each has files in the run's directory

// Complains about what is no number of the range; nothing that is no number at all is in one.
std::string speed_problem(const std::string& text)
{
    double speed = 0;
    const char* const text_end = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), text_end, speed);
    return error == std::errc{} && end == text_end && speed >= kSlowest && speed <= kFastest
               ? ""
               : fmt::format("expected a number from {} to {}, got {}", kSlowest, kFastest,
                             without_control_characters(text));
}

archive::Capture load(const std::string& file)
{
    try {
        return archive::load_capture(file);
    } catch (const archive::ArchiveError& error) {
        throw MachineFileError{fmt::format("{}: {}", file, error.what())};
    }
}

}  // namespace

ReplayCommand::ReplayCommand(CLI::App& app)
    : subcommand_{app.add_subcommand("replay",
                                     "Run a command on a machine that nimba-smi captured:\n"
                                     "nimba-sim replay [OPTIONS] CAPTURE -- COMMAND [ARGUMENT...]")}
{
    subcommand_->add_option("CAPTURE", file_, "What nimba-smi capture wrote")->required();
    subcommand_
        ->add_option("--speed", speed_,
                     "How many times as fast as they were taken samples follow each other")
        ->option_text("N")
        ->check(speed_problem);
    subcommand_
        ->add_option("--drivers", drivers_, "As for run; plain files show the first sample alone")
        ->option_text("WHICH");
}

int ReplayCommand::run(const std::vector<std::string>& command, const Installation& installation,
                       Drivers drivers) const
{
    const auto capture = std::make_shared<const archive::Capture>(load(file_));
    const Machine machine = captured_machine(*capture);
    if (machine.processes.size() + machine.absent_processes.size() > kMostProcesses) {
        throw MachineFileError{fmt::format("{}: it names too many processes", file_)};
    }
    const auto make_driver = [&](MachineDriver::Clock clock) {
        return std::make_shared<RecordedDriver>(capture, machine, speed_, std::move(clock));
    };
    const auto furnish_run = [&](const auto& directory, Environment& environment) {
        furnish(*capture, directory, environment);
    };
    return run_on_machine({machine, make_driver, furnish_run}, command, installation, drivers);
}

}  // namespace nimba::sim
