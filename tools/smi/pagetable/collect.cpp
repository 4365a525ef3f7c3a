// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/collect.hpp"

#include "tools/smi/pagetable/source.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>
#include <utility>

namespace nimba::smi {
namespace {

// The address space of a device; nothing, and a problem, when not all of it could be had.
std::optional<AddressSpace> space_of(PageTableSource& source, const VmDevice& device,
                                     const AddressSplit& split, std::vector<Problem>& problems)
{
    AddressSpaceBuilder builder{split};
    const auto take = [&](const auto& records) {
        for (const auto& record : records) {
            builder.add(record);
        }
        return true;
    };
    const bool whole = source.hand_over(device, TakeRecords<TableRecord>{take}, problems) &&
                       source.hand_over(device, TakeRecords<PageRecord>{take}, problems);
    return whole ? std::optional(builder.finish()) : std::nullopt;
}

// Hands over the address spaces of the chosen devices one by one. Returns what the driver shows,
// when it could be read.
std::optional<PageTableContents> for_each_space(
    PageTableSource& source, const PageTableOptions& options, std::vector<Problem>& problems,
    const std::function<void(const VmDevice&, const std::string& title, AddressSpace)>& take)
{
    auto contents = source.read(problems);
    if (!contents) {
        return std::nullopt;
    }
    for (const VmDevice& device : chosen_devices(*contents, options.pids, problems)) {
        auto space = space_of(source, device, options.split, problems);
        if (!space) {
            return std::nullopt;
        }
        const std::string title = process_title(device, contents->devices);
        std::ranges::move(oddity_problems(title, space->odd), std::back_inserter(problems));
        take(device, title, *std::move(space));
    }
    return contents;
}

// Gives the address spaces the allocations that are in them, by process id.
void add_allocations(PageTableSource& source, const PageTableContents& contents,
                     std::span<const int64_t> pids, std::vector<ProcessSpace>& spaces,
                     std::vector<Problem>& problems)
{
    uint64_t unreadable = 0;
    const TakeRecords<VmAllocationRecord> take = [&](std::span<const VmAllocationRecord> records) {
        for (const VmAllocationRecord& record : records) {
            const auto allocation = allocation_of(record);
            unreadable += !allocation && is_asked_for(record.pid, pids) ? 1 : 0;
            for (ProcessSpace& space : spaces) {
                if (allocation && space.device.pid == record.pid) {
                    space.allocations.push_back(*allocation);
                }
            }
        }
        return true;
    };
    static_cast<void>(source.hand_over(contents, take, problems));
    if (unreadable > 0) {
        problems.push_back({ExitStatus::kOk, std::nullopt, std::nullopt,
                            fmt::format("{} allocation{} an address or a size that makes no sense",
                                        unreadable, unreadable == 1 ? " has" : "s have")});
    }
}

}  // namespace

std::vector<ProcessSpace> collect_spaces(const Options& options, std::vector<Problem>& problems)
{
    PageTableSource source{options};
    std::vector<ProcessSpace> spaces;
    const auto take = [&](const VmDevice& device, const std::string& title, AddressSpace space) {
        spaces.push_back({device, title, std::move(space), {}});
    };
    if (const auto contents = for_each_space(source, options.page_tables, problems, take)) {
        add_allocations(source, *contents, options.page_tables.pids, spaces, problems);
    }
    return spaces;
}

std::optional<std::vector<ProcessSums>> collect_sums(const Options& options,
                                                     std::vector<Problem>& problems)
{
    PageTableSource source{options};
    std::vector<ProcessSums> sums;
    const auto take = [&](const VmDevice& device, const std::string& /*title*/,
                          const AddressSpace& space) {
        sums.push_back({device, sums_of(device, space)});
    };
    const auto contents = for_each_space(source, options.page_tables, problems, take);
    return contents || !sums.empty() ? std::optional(std::move(sums)) : std::nullopt;
}

}  // namespace nimba::smi
