// SPDX-License-Identifier: MIT
#include "tools/smi/report/command_options.hpp"

#include "tools/smi/option_value.hpp"
#include "tools/smi/sample_options.hpp"

#include <CLI/CLI.hpp>

#include <chrono>
#include <cstdint>

namespace nimba::smi {

void add_report_options(CLI::App& command, Options& options)
{
    ReportOptions& report = options.report;
    command
        .add_option("FILE", report.file, "The page to write, such as report.html; \"-\" prints it")
        ->required();
    add_text(command, "--capture", "FILE", report.capture,
             "Tell of a captured machine instead of this one");
    add_sample_options(
        command, "Plot so many samples of this machine (default: 1, without plots)",
        [&report](uint64_t samples) { report.samples = samples; },
        [&report](std::chrono::milliseconds interval) { report.interval = interval; });
}

const char* report_options_fault(const Options& options)
{
    const ReportOptions& report = options.report;
    if (report.capture && (report.samples || report.interval)) {
        return "--samples and --interval are of this machine: a capture has samples of its own";
    }
    if (options.json && report.file == "-") {
        return "--json needs standard output for itself: write the page to a file";
    }
    return "";
}

}  // namespace nimba::smi
