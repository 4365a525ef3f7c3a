// SPDX-License-Identifier: MIT
// The worker that reads page tables, and what it tells.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/pagetable/record.hpp"
#include "tools/smi/process/worker_process.hpp"

#include <chrono>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::smi {

// Takes one block of records; returns whether it wants the next.
template <typename Record>
using TakeRecords = std::function<bool(std::span<const Record>)>;

class PageTableSource final {
  public:
    explicit PageTableSource(const Options& options);

    // Has the driver read. Nothing, and a problem, when that failed.
    std::optional<PageTableContents> read(std::vector<Problem>& problems);

    // Hand over what was read, block by block, in the driver's order. Return whether all of it was
    // handed over: if not, `take` wanted no more, or a problem was added.
    bool hand_over(const VmDevice& device, const TakeRecords<TableRecord>& take,
                   std::vector<Problem>& problems);
    bool hand_over(const VmDevice& device, const TakeRecords<PageRecord>& take,
                   std::vector<Problem>& problems);
    bool hand_over(const PageTableContents& contents, const TakeRecords<VmAllocationRecord>& take,
                   std::vector<Problem>& problems);

  private:
    WorkerProcess worker_;
    std::chrono::milliseconds timeout_;
};

// Whether a process is asked for, by the driver's text; all are without `pids`.
bool is_asked_for(std::string_view pid, std::span<const int64_t> pids);

// The devices of the processes that are asked for. A process that has none is a
// problem.
std::vector<VmDevice> chosen_devices(const PageTableContents& contents,
                                     std::span<const int64_t> pids, std::vector<Problem>& problems);

}  // namespace nimba::smi
