// SPDX-License-Identifier: MIT
// nimba-smi: shows the adapters of the Nimba and QV chips, their memory, page tables, clocks, use
// and settings.
#include "tools/smi/alloc/command.hpp"
#include "tools/smi/alloc/command_options.hpp"
#include "tools/smi/capture/command.hpp"
#include "tools/smi/capture/command_options.hpp"
#include "tools/smi/clocks/command.hpp"
#include "tools/smi/command_line.hpp"
#include "tools/smi/doctor/command.hpp"
#include "tools/smi/doctor/command_options.hpp"
#include "tools/smi/dvfs/command.hpp"
#include "tools/smi/dvfs/command_options.hpp"
#include "tools/smi/export/command.hpp"
#include "tools/smi/export/command_options.hpp"
#include "tools/smi/flag/command.hpp"
#include "tools/smi/flag/command_options.hpp"
#include "tools/smi/info/command.hpp"
#include "tools/smi/leaks/command.hpp"
#include "tools/smi/leaks/command_options.hpp"
#include "tools/smi/list/command.hpp"
#include "tools/smi/mem/command.hpp"
#include "tools/smi/memory/command_options.hpp"
#include "tools/smi/monitor/command_options.hpp"
#include "tools/smi/overview/command.hpp"
#include "tools/smi/overview/command_options.hpp"
#include "tools/smi/pagetable/command.hpp"
#include "tools/smi/pagetable/command_options.hpp"
#include "tools/smi/prefer/command.hpp"
#include "tools/smi/prefer/command_options.hpp"
#include "tools/smi/ps/command.hpp"
#include "tools/smi/report/command.hpp"
#include "tools/smi/report/command_options.hpp"
#include "tools/smi/sensors/command.hpp"
#include "tools/smi/text/output.hpp"
#include "tools/smi/text/size.hpp"
#include "tools/smi/top/command.hpp"
#include "tools/smi/top/command_options.hpp"
#include "tools/smi/usage/command.hpp"
#include "tools/smi/version/command.hpp"
#include "tools/smi/worker/worker.hpp"

#include <unistd.h>

#include <fmt/core.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <exception>
#include <iterator>
#include <string_view>
#include <variant>

namespace nimba::smi {
namespace {

// The groups of the help.
constexpr const char* kLook = "Look at the adapters";
constexpr const char* kMemory = "Look into their memory";
constexpr const char* kControl = "Control them";

constexpr Command kCommands[] = {
    {"", "", overview_command, add_overview_options, monitor_options_fault},
    {"list", "List the adapters, and a GPU of another vendor", list_command, add_adapter_options,
     memory_options_fault, kLook},
    {"info", "Show every field of the summaries, with unit and source", info_command,
     add_adapter_options, memory_options_fault, kLook},
    {"top", "Show adapters and processes live on the whole screen", top_command, add_top_options,
     nullptr, kLook},
    {"clocks", "Show the clocks", clocks_command, add_monitor_options, monitor_options_fault,
     kLook},
    {"sensors", "Show temperature and fans", sensors_command, add_monitor_options,
     monitor_options_fault, kLook},
    {"usage", "Show frame rate, engine use and bandwidth", usage_command, add_usage_options,
     monitor_options_fault, kLook},
    {"export", "Give the figures to Prometheus: over HTTP, in a file, or once", export_command,
     add_export_options, export_options_fault, kLook},
    {"mem", "Show use and size of the memory segments", mem_command, add_monitor_options,
     monitor_options_fault, kMemory},
    {"ps", "Show the video memory of each device context and its process", ps_command,
     add_memory_options, memory_options_fault, kMemory},
    {"alloc", "List the allocations of video memory", alloc_command, add_alloc_options,
     memory_options_fault, kMemory},
    {"leaks", "Watch the allocations and show those that pile up", leaks_command, add_leaks_options,
     leaks_options_fault, kMemory},
    {"pagetable", "Show the GPU page tables of the processes on DRM minor 0", pagetable_command,
     add_page_table_options, page_table_options_fault, kMemory},
    {"dvfs", "Show, change, save and restore the power and DVFS settings", dvfs_command,
     add_dvfs_options, dvfs_options_fault, kControl},
    {"flag", "Show and change the driver's control flag", flag_command, add_flag_options,
     flag_options_fault, kControl},
    {"prefer", "Show, set and remove the GPUs that applications should use", prefer_command,
     add_prefer_options, prefer_options_fault, kControl},
    {"doctor", "Say why things do not work, and how to mend them", doctor_command,
     add_doctor_options, nullptr, kHelpGroup},
    {"capture", "Put all that the library reads of the machine into a file", capture_command,
     add_capture_options, nullptr, kHelpGroup},
    {"report", "Write one page about the machine, or a captured one, for a bug ticket",
     report_command, add_report_options, report_options_fault, kHelpGroup},
    {"version", "Show the versions of the tool, the library and its interface", version_command,
     nullptr, nullptr, kHelpGroup},
};

Report report_for(int count, char** arguments)
{
    const ParsedCommandLine parsed = parse_command_line(count, arguments, kCommands);
    if (const auto* const usage = std::get_if<UsageError>(&parsed)) {
        return {"", {{ExitStatus::kUsage, std::nullopt, std::nullopt, usage->message}}};
    }
    if (const auto* const print = std::get_if<PrintText>(&parsed)) {
        return {print->text, {}};
    }
    const auto& invocation = std::get<Invocation>(parsed);
    choose_size_unit(invocation.options.units);
    return invocation.command->run(invocation.options);
}

// Prints the report. Returns the exit status.
ExitStatus publish(Report report)
{
    if (const int error = write_all(STDOUT_FILENO, report.output); error != 0) {
        report.problems.push_back(
            {ExitStatus::kFailed, std::nullopt, std::nullopt,
             fmt::format("cannot write to standard output: {}", std::strerror(error))});
    }
    for (const Problem& problem : report.problems) {
        print_error_line(problem.message);
    }
    std::ranges::move(report.told, std::back_inserter(report.problems));
    return overall_status(report.problems);
}

ExitStatus run(int count, char** arguments)
{
    // Whoever started the tool may ignore the end of children; it could not wait for its workers.
    std::signal(SIGCHLD, SIG_DFL);
    try {
        return publish(report_for(count, arguments));
    } catch (const std::exception& exception) {
        print_error_line(fmt::format("internal error: {}", exception.what()));
        return ExitStatus::kFailed;
    }
}

}  // namespace
}  // namespace nimba::smi

int main(int argc, char** argv)
{
    using namespace nimba::smi;
    keep_standard_descriptors();
    if (argc > 1 && std::string_view{argv[1]} == "--worker") {
        return run_worker(argc, argv);
    }
    return static_cast<int>(run(argc, argv));
}
