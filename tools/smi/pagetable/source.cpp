// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/source.hpp"

#include "tools/smi/pagetable/number.hpp"
#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/worker/requests.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>

namespace nimba::smi {
namespace {

using std::chrono::milliseconds;

const Subject kSubject{"page tables", std::nullopt};

// The answer to one request; nothing, and a problem, when there is none.
template <typename Payload>
std::optional<Payload> answer_to(WorkerProcess& worker, milliseconds timeout,
                                 std::string_view request, std::vector<Problem>& problems)
{
    const Reply reply = ask_all({&worker, 1}, request, {timeout}).front();
    return accept<Payload>(kSubject, reply, problems);
}

// Hands over `count` records, asked for with `request` and the number of the first.
template <typename Record>
bool hand_over_blocks(WorkerProcess& worker, milliseconds timeout, const std::string& request,
                      uint64_t count, const TakeRecords<Record>& take,
                      std::vector<Problem>& problems)
{
    uint64_t first = 0;
    while (first < count) {
        const auto block = answer_to<Block<Record>>(worker, timeout,
                                                    fmt::format("{} {}", request, first), problems);
        if (!block) {
            return false;
        }
        if (block->records.empty()) {
            problems.push_back(*diagnose(kSubject, Lost{"answer", "it has nothing in it"}));
            return false;
        }
        if (!take(block->records)) {
            return false;
        }
        first += block->records.size();
    }
    return true;
}

template <typename Record>
bool hand_over_levels(WorkerProcess& worker, milliseconds timeout, std::string_view request,
                      std::size_t device, const LevelCounts& counts,
                      const TakeRecords<Record>& take, std::vector<Problem>& problems)
{
    for (std::size_t level = 0; level < counts.size(); ++level) {
        if (!hand_over_blocks(worker, timeout, fmt::format("{} {} {}", request, device, level),
                              counts.at(level), take, problems)) {
            return false;
        }
    }
    return true;
}

}  // namespace

PageTableSource::PageTableSource(const Options& options)
    : worker_{{options.library, options.verbose, std::nullopt}}, timeout_{options.timeout}
{
}

std::optional<PageTableContents> PageTableSource::read(std::vector<Problem>& problems)
{
    return answer_to<PageTableContents>(worker_, timeout_, kPageTablesRequest, problems);
}

bool PageTableSource::hand_over(const VmDevice& device, const TakeRecords<TableRecord>& take,
                                std::vector<Problem>& problems)
{
    return hand_over_levels(worker_, timeout_, kTableEntriesRequest, device.number, device.tables,
                            take, problems);
}

bool PageTableSource::hand_over(const VmDevice& device, const TakeRecords<PageRecord>& take,
                                std::vector<Problem>& problems)
{
    return hand_over_levels(worker_, timeout_, kPagesRequest, device.number, device.pages, take,
                            problems);
}

bool PageTableSource::hand_over(const PageTableContents& contents,
                                const TakeRecords<VmAllocationRecord>& take,
                                std::vector<Problem>& problems)
{
    return hand_over_blocks(worker_, timeout_, std::string{kVmAllocationsRequest},
                            contents.allocations, take, problems);
}

bool is_asked_for(std::string_view pid, std::span<const int64_t> pids)
{
    return pids.empty() || std::ranges::find(pids, decimal_in(pid)) != pids.end();
}

std::vector<VmDevice> chosen_devices(const PageTableContents& contents,
                                     std::span<const int64_t> pids, std::vector<Problem>& problems)
{
    std::vector<VmDevice> chosen;
    std::ranges::copy_if(contents.devices, std::back_inserter(chosen),
                         [&](const auto& device) { return is_asked_for(device.pid, pids); });
    for (const int64_t pid : pids) {
        if (std::ranges::find(chosen, pid, [](const VmDevice& device) {
                return decimal_in(device.pid);
            }) == chosen.end()) {
            problems.push_back(
                {ExitStatus::kNoAdapter, std::nullopt, std::nullopt,
                 fmt::format("process {} has no GPU page tables; nimba-smi pagetable "
                             "shows those that have",
                             pid)});
        }
    }
    return chosen;
}

}  // namespace nimba::smi
