// SPDX-License-Identifier: MIT
#include "tools/smi/leaks/command_options.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/memory/command_options.hpp"
#include "tools/smi/option_value.hpp"

#include <cstdint>

namespace nimba::smi {
namespace {

std::optional<uint64_t> parse_count(const std::string& text)
{
    return parse_number<uint64_t>(text, 1, INT64_MAX);
}

}  // namespace

void add_leaks_options(CLI::App& command, Options& options)
{
    LeaksOptions& leaks = options.leaks;
    add_seconds(command, "--interval", "Take a snapshot this often (default: 1)",
                [&leaks](std::chrono::milliseconds interval) { leaks.interval = interval; });
    add_value(command, "--count", "N", "a number of snapshots from 1 on",
              "End after this many snapshots, instead of when interrupted", parse_count,
              [&leaks](uint64_t count) { leaks.count = count; });
    add_value(command, "--fail-on-growth", "N", "a number of allocations from 1 on",
              "End with status 8 when a group grew by N allocations or more", parse_count,
              [&leaks](uint64_t growth) { leaks.fail_on_growth = growth; });
    add_memory_options(command, options);
}

const char* leaks_options_fault(const Options& options)
{
    if (options.leaks.fail_on_growth && options.leaks.count == 1U) {
        return "--fail-on-growth needs two snapshots at least: --count 2 or more";
    }
    return memory_options_fault(options);
}

}  // namespace nimba::smi
