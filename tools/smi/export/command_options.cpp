// SPDX-License-Identifier: MIT
#include "tools/smi/export/command_options.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/memory/adapter_choice.hpp"
#include "tools/smi/option_value.hpp"

#include <fmt/core.h>
#include <fmt/ranges.h>

#include <cstdint>

namespace nimba::smi {
namespace {

using namespace exporting;

constexpr SecondsRange kDeadlines{.shortest = 0.1, .longest = 600};

void add_faces(CLI::App& command, ExportOptions& exporting)
{
    add_value(command, "--listen", "ADDRESS:PORT",
              "a numeric address and a port, such as 127.0.0.1:9835 or [::1]:9835",
              "Serve http://ADDRESS:PORT/metrics (default: 127.0.0.1:9835)", parse_listen_address,
              [&exporting](const ListenAddress& address) { exporting.listen = address; });
    add_flag(command, "--once", exporting.once, "Print the metrics once");
    add_text(command, "--textfile", "FILE", exporting.textfile, "Write the metrics to this file");
    add_seconds(
        command, "--interval", "Write the file this often, until interrupted",
        [&exporting](std::chrono::milliseconds interval) { exporting.interval = interval; });
}

}  // namespace

void add_export_options(CLI::App& command, Options& options)
{
    ExportOptions& exporting = options.exporting;
    add_faces(command, exporting);
    add_seconds(
        command, "--deadline", "Give up a collector that takes longer than this (default: 2)",
        [&exporting](std::chrono::milliseconds deadline) { exporting.deadline = deadline; },
        kDeadlines);
    add_value(command, "--without", "COLLECTOR[,COLLECTOR...]",
              fmt::format("collectors of {}", fmt::join(kCollectorNames, ", ")),
              "Do not run these collectors", parse_collectors,
              [&exporting](const CollectorSet& without) { exporting.without = without; });
    add_flag(command, "--skip-denied", exporting.skip_denied,
             "Leave out the collectors that this user may not run");
    add_flag(command, "--no-processes", exporting.no_processes, "Name no processes");
    add_value(
        command, "--max-processes", "N", "a number of processes from 0 on",
        "Name so many of each adapter, and sum the rest up (default: 50)",
        [](const std::string& text) { return parse_number<std::size_t>(text, 0, INT32_MAX); },
        [&exporting](std::size_t most) { exporting.max_processes = most; });
    add_value(command, "-i,--adapter", "SLOT|BUS_ID",
              "a slot from 0 to 2 or a bus id such as 0000:01:00.0", "Ask this adapter alone",
              parse_adapter_choice,
              [&options](const AdapterChoice& choice) { options.adapter = choice; });
}

const char* export_options_fault(const Options& options)
{
    const ExportOptions& exporting = options.exporting;
    const int faces =
        (exporting.listen ? 1 : 0) + (exporting.once ? 1 : 0) + (exporting.textfile ? 1 : 0);
    if (faces > 1) {
        return "--listen, --once and --textfile exclude each other";
    }
    if (exporting.interval && !exporting.textfile) {
        return "--interval goes with --textfile";
    }
    if (options.json && !exporting.once) {
        return "--json goes with --once";
    }
    return "";
}

}  // namespace nimba::smi
