// SPDX-License-Identifier: MIT
#include "fault_command.hpp"

#include "control_node.hpp"
#include "driver/fault_control.hpp"
#include "fault_reader.hpp"
#include "machine_file_error.hpp"
#include "test_bed_error.hpp"

#include <fmt/core.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace nimba::sim {
namespace {

struct NumberOption {
    const char* option;
    const char* key;
    const char* help;
};

constexpr std::array kNumberOptions{
    NumberOption{"--adapter", "adapter", "Card of the one adapter that it befalls"},
    NumberOption{"--bytes", "bytes",
                 "read: what can be read before it fails; short: the most that a read gives; "
                 "garbage: how long the text is"},
    NumberOption{"--entries", "entries", "list: the entries before it fails; else half of them"},
    NumberOption{"--ms", "ms", "block: how long"},
    NumberOption{"--seed", "seed", "garbage: another number gives other bytes"},
    NumberOption{"--first", "first", "The first N openings, or commands, only"},
    NumberOption{"--every", "every", "Each Nth opening, or command, only"},
    NumberOption{"--after-ms", "after_ms", "Begins N ms from now"},
    NumberOption{"--for-ms", "for_ms", "Ends N ms after it has begun"},
};

void command(std::string_view text)
{
    if (const int error = write_control_node(kFaultNode, text); error != 0) {
        throw TestBedError{error == ENODEV
                               ? "the simulated machine has no such adapter"
                               : fmt::format("the fault is refused: {}", std::strerror(error))};
    }
}

}  // namespace

FaultCommand::FaultCommand(CLI::App& app)
    : subcommand_{
          app.add_subcommand("fault",
                             "Let drivers of the machine fail, from inside a run:\n"
                             "nimba-sim fault KIND [PATH] [OPTIONS], or --list, or --clear")}
{
    subcommand_->add_option("KIND", texts_["kind"],
                            "open, read, short, block, garbage, write, vanish, list or gone");
    subcommand_->add_option("PATH", texts_["path"],
                            "Node in the directory of an adapter's driver; \"*\" is any name");
    subcommand_->add_option("--directory", texts_["directory"],
                            "debug, info, hwmon or proc, which is one file; else debug");
    subcommand_->add_option("--error", texts_["error"], "open, read, write, list: such as ENOENT");
    for (const auto& [option, key, help] : kNumberOptions) {
        subcommand_->add_option(option, numbers_[key], help)->option_text("N");
    }
    subcommand_->add_flag("--list", list_, "Print the faults that are switched on, as TOML");
    subcommand_->add_flag("--clear", clear_, "Switch all faults off");
    subcommand_->final_callback([this] { check(); });
}

// One thing at a time, and a fault as a machine file could have it.
void FaultCommand::check()
{
    toml::table table;
    for (const auto& [key, text] : texts_) {
        if (!text.empty()) {
            table.insert(key, text);
        }
    }
    for (const auto& [key, number] : numbers_) {
        if (number) {
            table.insert(key, *number);
        }
    }
    if (list_ || clear_) {
        if ((list_ && clear_) || !table.empty()) {
            throw CLI::ValidationError{"fault", "--list and --clear stand alone"};
        }
        return;
    }
    try {
        fault_ = to_text(read_fault(TableReader{table, "", "fault", kFaultKeys}));
    } catch (const MachineFileError& error) {
        throw CLI::ValidationError{error.what()};
    }
}

std::string FaultCommand::run() const
{
    if (list_) {
        return read_control_node(kFaultNode);
    }
    command(clear_ ? kClearFaults : std::string_view{fault_});
    return "";
}

}  // namespace nimba::sim
