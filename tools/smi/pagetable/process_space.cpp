// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/process_space.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>

namespace nimba::smi {

std::string process_title(const VmDevice& device, std::span<const VmDevice> all)
{
    std::string title = "process " + device.pid;
    if (!device.name.empty()) {
        title += fmt::format(" ({})", device.name);
    }
    const auto same_pid = [&](const VmDevice& other) { return other.pid == device.pid; };
    if (const auto count = std::ranges::count_if(all, same_pid); count > 1) {
        const auto itself = std::ranges::find(all, device.number, &VmDevice::number);
        title += fmt::format(", address space {} of {}",
                             std::count_if(all.begin(), itself, same_pid) + 1, count);
    }
    return title;
}

std::vector<Problem> oddity_problems(const std::string& title, const Oddities& odd)
{
    struct Row {
        uint64_t count;
        const char* one;
        const char* several;
    };
    const std::array rows{
        Row{odd.outside, "entry lies outside the address space",
            "entries lie outside the address space"},
        Row{odd.orphans, "entry belongs to a page-table entry that is not there",
            "entries belong to page-table entries that are not there"},
        Row{odd.repeated, "entry is for addresses that another entry is for",
            "entries are for addresses that other entries are for"},
    };
    std::vector<Problem> problems;
    for (const Row& row : rows) {
        if (row.count > 0) {
            problems.push_back({ExitStatus::kOk, std::nullopt, std::nullopt,
                                fmt::format("{}: {} {} (see --split)", title, row.count,
                                            row.count == 1 ? row.one : row.several)});
        }
    }
    return problems;
}

}  // namespace nimba::smi
