// SPDX-License-Identifier: MIT
#include "tools/smi/top/command_options.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/memory/adapter_choice.hpp"
#include "tools/smi/option_value.hpp"
#include "tools/smi/top/keys.hpp"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>

namespace nimba::smi {

void add_top_options(CLI::App& command, Options& options)
{
    TopOptions& top = options.top_view;
    add_seconds(command, "--interval", "Take a sample this often (default: 1)",
                [&top](std::chrono::milliseconds interval) { top.interval = interval; });
    add_value(
        command, "--count", "N", "a number of samples from 1 on", "End after this many samples",
        [](const std::string& text) { return parse_number<uint64_t>(text, 1, INT64_MAX); },
        [&top](uint64_t count) { top.count = count; });
    add_flag(command, "--ascii", top.ascii, "Draw with ASCII characters alone");
    add_value(command, "-i,--adapter", "SLOT|BUS_ID",
              "a slot from 0 to 2 or a bus id such as 0000:01:00.0", "Ask this adapter alone",
              parse_adapter_choice,
              [&options](const AdapterChoice& choice) { options.adapter = choice; });
    std::string keys = "Keys:\n";
    for (const std::string& line : top::help_lines()) {
        keys += line + '\n';
    }
    command.footer(keys + '\n' + command.get_footer());
}

}  // namespace nimba::smi
