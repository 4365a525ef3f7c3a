// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/command_options.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/option_value.hpp"
#include "tools/smi/pagetable/number.hpp"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string>

namespace nimba::smi {
namespace {

std::optional<int64_t> parse_pid(std::string_view text)
{
    return parse_number<int64_t>(text, 0, std::numeric_limits<int64_t>::max());
}

std::string pid_fault(const std::string& text)
{
    return parse_pid(text) ? std::string{} : fmt::format("expected a process id, got \"{}\"", text);
}

// A forgotten value makes the next option look like one: that is no name of a file.
std::optional<std::string> parse_file(const std::string& text)
{
    const bool is_option = text.starts_with('-') && text != "-";
    return text.empty() || is_option ? std::nullopt : std::optional(text);
}

void add_pids(CLI::App& command, PageTableOptions& tables)
{
    command
        .add_option_function<std::vector<std::string>>(
            "--pid",
            [&tables](const std::vector<std::string>& texts) {
                for (const std::string& text : texts) {
                    const int64_t pid = *parse_pid(text);
                    if (std::ranges::find(tables.pids, pid) == tables.pids.end()) {
                        tables.pids.push_back(pid);
                    }
                }
            },
            "Show this process alone; may stand several times")
        ->allow_extra_args(false)
        ->type_name("PID")
        ->check(CLI::Validator{pid_fault, ""});
}

}  // namespace

std::optional<uint64_t> parse_address(std::string_view text)
{
    return text.starts_with("0x")
               ? hexadecimal_in(text)
               : parse_number<uint64_t>(text, 0, std::numeric_limits<uint64_t>::max());
}

void add_page_table_options(CLI::App& command, Options& options)
{
    PageTableOptions& tables = options.page_tables;
    add_pids(command, tables);
    command.add_flag("--tree", tables.tree, "Show the tables and pages as a tree");
    add_value(
        command, "--depth", "N", "a depth from 0 to 3",
        "Show the tree down to this level: 0, 1, 2, or 3 for pages (default: 3)",
        [](const std::string& text) { return parse_number<int>(text, 0, kDepthOfPages); },
        [&tables](int depth) { tables.depth = depth; });
    add_value(command, "--va", "ADDRESS", "an address such as 0x100000000",
              "Show what maps this virtual address", parse_address,
              [&tables](uint64_t address) { tables.address = address; });
    command.add_flag("--map", tables.map, "Draw the address space on the terminal");
    add_value(command, "--svg", "FILE", "a file (./-x for one that begins with \"-\")",
              "Draw the address space into this SVG file; - is standard output", parse_file,
              [&tables](const std::string& file) { tables.svg = file; });
    add_value(command, "--split", "BITS", "five numbers such as 9,9,9,9,12, together at most 63",
              "Address bits of the levels 0, 1 and 2, of sub-table and page (default: 9,9,9,9,12)",
              parse_split, [&tables](const AddressSplit& split) { tables.split = split; });
    command.add_flag("--csv", options.csv, "Print all entries as comma-separated values");
}

const char* page_table_options_fault(const Options& options)
{
    const PageTableOptions& tables = options.page_tables;
    const std::array views{tables.tree, tables.address.has_value(), tables.map,
                           tables.svg.has_value()};
    if (std::ranges::count(views, true) > 1) {
        return "--tree, --va, --map and --svg exclude each other";
    }
    if (options.csv && options.json) {
        return "--csv and --json exclude each other";
    }
    if (options.csv && tables.has_view()) {
        return "--csv lists all entries, and excludes --tree, --va, --map and --svg";
    }
    if (options.json && tables.svg) {
        return "--svg and --json exclude each other";
    }
    return tables.depth && !tables.tree ? "--depth needs --tree" : "";
}

}  // namespace nimba::smi
