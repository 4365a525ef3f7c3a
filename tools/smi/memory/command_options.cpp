// SPDX-License-Identifier: MIT
#include "tools/smi/memory/command_options.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/option_value.hpp"

#include <cstdint>

namespace nimba::smi {

void add_adapter_options(CLI::App& command, Options& options)
{
    add_value(command, "-i,--adapter", "SLOT|BUS_ID",
              "a slot from 0 to 2 or a bus id such as 0000:01:00.0", "Ask this adapter alone",
              parse_adapter_choice,
              [&options](const AdapterChoice& choice) { options.adapter = choice; });
    add_flag(command, "--csv", options.csv, "Print comma-separated values instead of text");
}

void add_top_option(CLI::App& command, Options& options)
{
    add_value(
        command, "--top", "N", "a number of rows from 1 on", "Show the first N rows only",
        [](const std::string& text) { return parse_number<std::size_t>(text, 1, SIZE_MAX); },
        [&options](std::size_t rows) { options.top = rows; });
}

void add_memory_options(CLI::App& command, Options& options)
{
    add_adapter_options(command, options);
    add_top_option(command, options);
}

const char* memory_options_fault(const Options& options)
{
    return options.csv && options.json ? "--csv and --json exclude each other" : "";
}

}  // namespace nimba::smi
