// SPDX-License-Identifier: MIT
#include "tools/smi/monitor/command_options.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/memory/command_options.hpp"
#include "tools/smi/option_value.hpp"

#include <cstdint>
#include <string>

namespace nimba::smi {
namespace {

// An option with a time between samples.
void add_time(CLI::App& command, const char* name, const char* help,
              std::optional<std::chrono::milliseconds>& time)
{
    add_seconds(command, name, help, [&time](std::chrono::milliseconds value) { time = value; });
}

}  // namespace

void add_monitor_options(CLI::App& command, Options& options)
{
    MonitorOptions& monitor = options.monitor;
    add_time(command, "--watch", "Show a sample this often, until interrupted", monitor.watch);
    add_value(
        command, "--count", "N", "a number of samples from 1 on", "End after this many samples",
        [](const std::string& text) { return parse_number<uint64_t>(text, 1, INT64_MAX); },
        [&monitor](uint64_t count) { monitor.count = count; });
    add_adapter_options(command, options);
}

void add_usage_options(CLI::App& command, Options& options)
{
    add_monitor_options(command, options);
    add_time(command, "--interval", "The time that a single sample covers (default: 1)",
             options.monitor.interval);
}

const char* monitor_options_fault(const Options& options)
{
    const MonitorOptions& monitor = options.monitor;
    if (monitor.count && !monitor.watch) {
        return "--count needs --watch";
    }
    if (monitor.interval && monitor.watch) {
        return "--interval and --watch exclude each other";
    }
    return memory_options_fault(options);
}

}  // namespace nimba::smi
