// SPDX-License-Identifier: MIT
// The table of the processes that use an adapter's memory: what it shows, in which order.
#pragma once

#include "tools/smi/snapshot/adapter_state.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace nimba::smi::top {

// One device of an adapter, with the processes that hold it.
struct ProcessRow {
    int slot = 0;
    uint32_t device = 0;
    std::vector<Process> processes;
    std::string pids;   // "4100001, 4100002"
    std::string names;  // printable
    std::size_t allocations = 0;
    uint64_t bytes = 0;
    std::optional<double> share;  // of the adapter's memory

    bool operator==(const ProcessRow&) const = default;
};

enum class SortKey : uint8_t { kPid, kGpu, kDevice, kAllocations, kMemory, kProcess };
inline constexpr std::size_t kSortKeys = 6;

// In the order of the columns; small ones first unless `descending`.
struct SortOrder {
    SortKey key = SortKey::kMemory;
    bool descending = true;

    bool operator==(const SortOrder&) const = default;
};

// The order by a key in the direction in which people want to see it: numbers of memory from the
// largest, everything else from the smallest.
SortOrder natural_order(SortKey key);

// The columns that a table of one adapter, or of all, can be sorted by, from the left.
std::vector<SortKey> sort_keys(bool all_adapters);

// The rows of adapters, in their order.
std::vector<ProcessRow> process_rows(std::span<const AdapterState> adapters);

class ProcessTable final {
  public:
    // The rows of a new sample. The chosen row stays chosen as long as it is there; then the one
    // in its place is.
    void show(std::vector<ProcessRow> rows);

    void sort(SortOrder order);

    // Shows only rows with a process whose name or pid contains the text, in letters of any case.
    // Shows all rows without one.
    void filter(std::string text);

    // Chooses the row that many below the chosen one, or the nearest there is.
    void move(std::ptrdiff_t rows);

    [[nodiscard]] const SortOrder& order() const { return order_; }
    [[nodiscard]] const std::string& filter() const { return filter_; }
    [[nodiscard]] std::span<const ProcessRow> rows() const { return visible_; }
    [[nodiscard]] std::size_t hidden() const { return all_.size() - visible_.size(); }
    [[nodiscard]] std::size_t chosen() const { return chosen_; }

    // The first row to show where `height` rows have room, so that the chosen one is among them. It
    // changes no more than it must.
    std::size_t first(std::size_t height);

  private:
    void arrange();

    std::vector<ProcessRow> all_;
    std::vector<ProcessRow> visible_;  // those that the filter lets through, in order
    SortOrder order_;
    std::string filter_;
    std::size_t chosen_ = 0;
    std::size_t first_ = 0;
};

}  // namespace nimba::smi::top
