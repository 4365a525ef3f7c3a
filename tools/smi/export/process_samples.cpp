// SPDX-License-Identifier: MIT
#include "tools/smi/export/process_samples.hpp"

#include "tools/smi/text/printable.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <utility>

namespace nimba::smi::exporting {
namespace {

void add_usage(const Labels& labels, const Usage& usage, Samples& samples)
{
    samples.add(Metric::kProcessMemory, labels, static_cast<double>(usage.bytes));
    samples.add(Metric::kProcessAllocations, labels, static_cast<double>(usage.allocations));
}

// "maze, -", but no text for one process alone that has no name.
std::string names_of(std::span<const Process> processes)
{
    return names_text(processes, processes.size() > 1 ? "-" : "");
}

// The entries of the page tables of one process.
struct TableCounts {
    LevelCounts tables{};
    LevelCounts pages{};

    void add(const LevelCounts& more_tables, const LevelCounts& more_pages)
    {
        std::ranges::transform(tables, more_tables, tables.begin(), std::plus{});
        std::ranges::transform(pages, more_pages, pages.begin(), std::plus{});
    }

    [[nodiscard]] uint64_t sum() const
    {
        uint64_t sum = 0;
        for (std::size_t level = 0; level < tables.size(); ++level) {
            sum += tables.at(level) + pages.at(level);
        }
        return sum;
    }
};

struct ProcessTables {
    Labels process;
    TableCounts counts;
};

// Those with the most entries first. A process may have several address spaces. The library names
// the processes of page tables in another way than those of devices, which all series follow.
std::vector<ProcessTables> tables_by_process(const AdapterFigures& adapter)
{
    std::map<std::pair<std::string, std::string>, TableCounts> by_process;
    for (const VmDevice& device : adapter.page_tables->devices) {
        const auto known = adapter.process_names.find(device.pid);
        const std::string& name =
            known == adapter.process_names.end() ? device.name : known->second;
        // As they are shown: names that only then are the same would be the same series twice.
        by_process[{printable(device.pid), printable(name)}].add(device.tables, device.pages);
    }
    std::vector<ProcessTables> processes;
    processes.reserve(by_process.size());
    for (const auto& [process, counts] : by_process) {
        processes.push_back({{{"pid", process.first}, {"process", process.second}}, counts});
    }
    std::ranges::stable_sort(processes, std::greater{},
                             [](const ProcessTables& process) { return process.counts.sum(); });
    return processes;
}

// Makes one of those from the `most`-th on.
void sum_up(std::vector<ProcessTables>& processes, std::size_t most, const Labels& as)
{
    if (processes.size() <= most) {
        return;
    }
    ProcessTables rest{as, {}};
    for (std::size_t i = most; i < processes.size(); ++i) {
        rest.counts.add(processes[i].counts.tables, processes[i].counts.pages);
    }
    processes.resize(most);
    processes.push_back(std::move(rest));
}

void add_tables(const ProcessTables& process, const Labels& labels, Samples& samples)
{
    const auto add = [&](const char* kind, const LevelCounts& counts) {
        for (std::size_t level = 0; level < counts.size(); ++level) {
            samples.add(Metric::kPageTableEntries,
                        joined(joined(labels, process.process),
                               {{"level", std::to_string(level)}, {"kind", kind}}),
                        static_cast<double>(counts.at(level)));
        }
    };
    add("table", process.counts.tables);
    add("page", process.counts.pages);
}

}  // namespace

void add_processes(const AdapterFigures& adapter, const ProcessCap& cap, const Labels& labels,
                   Samples& samples)
{
    if (cap.none) {
        return;
    }
    const auto& devices = adapter.state.processes.devices;  // largest first
    Usage rest;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const DeviceUsage& device = devices[i];
        if (i >= cap.most) {
            rest.add(device.usage);
            continue;
        }
        add_usage(joined(labels, {{"pid", pids_text(device.processes, "")},
                                  {"process", names_of(device.processes)},
                                  {"device", fmt::format("{:#x}", device.device)}}),
                  device.usage, samples);
    }
    if (devices.size() > cap.most) {
        add_usage(joined(labels, {{"process", kOtherProcesses}}), rest, samples);
    }
}

void add_page_tables(const AdapterFigures& adapter, const ProcessCap& cap, const Labels& labels,
                     Samples& samples)
{
    const auto& contents = adapter.page_tables;
    if (!contents) {
        return;
    }
    samples.add(Metric::kAddressSpaces, labels, static_cast<double>(contents->devices.size()));
    samples.add(Metric::kPageTableAllocations, labels, static_cast<double>(contents->allocations));
    auto processes = tables_by_process(adapter);
    if (cap.none) {
        sum_up(processes, 0, {});
    } else {
        sum_up(processes, cap.most, {{"process", kOtherProcesses}});
    }
    for (const ProcessTables& process : processes) {
        add_tables(process, labels, samples);
    }
}

}  // namespace nimba::smi::exporting
