// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/command_options.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/option_value.hpp"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <limits>
#include <string>

namespace nimba::smi {
namespace {

void add_application(CLI::App& app, const char* help, PreferOptions& prefer)
{
    app.add_option("APPLICATION", prefer.application, help)->required();
}

void add_set(CLI::App& command, PreferOptions& prefer)
{
    CLI::App& app = add_action(command, "set", "Set the GPU that an application should use",
                               prefer.action, PreferAction::kSet);
    add_application(app, "The application: its path, or a command that is in PATH", prefer);
    add_value(app, "--gpu", "SLOT|BUS_ID", "a slot from 0 to 2 or a bus id such as 0000:01:00.0",
              "The GPU, as nimba-smi list shows it; needed", parse_adapter_choice,
              [&prefer](const AdapterChoice& choice) { prefer.gpu = choice; });
    using Limits = std::numeric_limits<int32_t>;
    add_value(
        app, "--value", "N", fmt::format("a number from {} to {}", Limits::min(), Limits::max()),
        "The preference value (default: 1)",
        [](const std::string& text) {
            return parse_number<int32_t>(text, Limits::min(), Limits::max());
        },
        [&prefer](int32_t value) { prefer.value = value; });
}

}  // namespace

void add_prefer_options(CLI::App& command, Options& options)
{
    PreferOptions& prefer = options.prefer;
    add_action(command, "list", "Show the preferences of all applications", prefer.action,
               PreferAction::kList)
        .add_flag("--csv", options.csv, "Print comma-separated values instead of text");
    add_set(command, prefer);
    add_application(add_action(command, "remove", "Remove the preference of an application",
                               prefer.action, PreferAction::kRemove),
                    "The application: its path or its file name alone", prefer);
}

const char* prefer_options_fault(const Options& options)
{
    const PreferOptions& prefer = options.prefer;
    if (prefer.action == PreferAction::kNone) {
        return "prefer needs list, set or remove";
    }
    if (options.csv && options.json) {
        return "--csv and --json exclude each other";
    }
    return prefer.action == PreferAction::kSet && !prefer.gpu
               ? "prefer set needs --gpu; nimba-smi list shows the GPUs"
               : "";
}

}  // namespace nimba::smi
