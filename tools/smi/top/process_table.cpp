// SPDX-License-Identifier: MIT
#include "tools/smi/top/process_table.hpp"

#include "tools/smi/snapshot/derived.hpp"
#include "tools/smi/text/printable.hpp"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <tuple>
#include <utility>

namespace nimba::smi::top {
namespace {

constexpr const char* kNone = "-";

std::string in_small_letters(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

bool contains(const std::string& text, const std::string& part)
{
    return in_small_letters(text).find(in_small_letters(part)) != std::string::npos;
}

bool is_let_through(const ProcessRow& row, const std::string& filter)
{
    return filter.empty() || contains(row.names, filter) || contains(row.pids, filter);
}

// Devices without a known process come before all pids.
int first_pid(const ProcessRow& row)
{
    return row.processes.empty() ? -1 : row.processes.front().pid;
}

bool is_before(const ProcessRow& a, const ProcessRow& b, SortKey key)
{
    switch (key) {
        case SortKey::kPid:
            return first_pid(a) < first_pid(b);
        case SortKey::kGpu:
            return a.slot < b.slot;
        case SortKey::kDevice:
            return a.device < b.device;
        case SortKey::kAllocations:
            return a.allocations < b.allocations;
        case SortKey::kMemory:
            return a.bytes < b.bytes;
        case SortKey::kProcess:
            break;
    }
    return a.names < b.names;
}

// What tells a row from all others of a sample.
auto identity(const ProcessRow& row)
{
    return std::tuple(row.slot, row.device);
}

std::optional<double> share_of(uint64_t bytes, const MemoryUse& use)
{
    return use.total && *use.total != 0
               ? std::optional(static_cast<double>(bytes) / static_cast<double>(*use.total))
               : std::nullopt;
}

}  // namespace

SortOrder natural_order(SortKey key)
{
    return {key, key == SortKey::kMemory || key == SortKey::kAllocations};
}

std::vector<SortKey> sort_keys(bool all_adapters)
{
    std::vector<SortKey> keys{SortKey::kPid};
    if (all_adapters) {
        keys.push_back(SortKey::kGpu);
    }
    keys.insert(keys.end(),
                {SortKey::kDevice, SortKey::kAllocations, SortKey::kMemory, SortKey::kProcess});
    return keys;
}

std::vector<ProcessRow> process_rows(std::span<const AdapterState> adapters)
{
    std::vector<ProcessRow> rows;
    for (const AdapterState& adapter : adapters) {
        const MemoryUse use = memory_use(adapter);
        for (const DeviceUsage& device : adapter.processes.devices) {
            rows.push_back(
                {device.slot, device.device, device.processes, pids_text(device.processes, kNone),
                 printable(names_text(device.processes, kNone)), device.usage.allocations,
                 device.usage.bytes, share_of(device.usage.bytes, use)});
        }
    }
    return rows;
}

void ProcessTable::show(std::vector<ProcessRow> rows)
{
    all_ = std::move(rows);
    arrange();
}

void ProcessTable::sort(SortOrder order)
{
    order_ = order;
    arrange();
}

void ProcessTable::filter(std::string text)
{
    filter_ = std::move(text);
    arrange();
}

void ProcessTable::move(std::ptrdiff_t rows)
{
    const auto last = static_cast<std::ptrdiff_t>(visible_.size()) - 1;
    // A step to either end may be larger than any table.
    const auto here = static_cast<std::ptrdiff_t>(chosen_);
    const std::ptrdiff_t step = std::clamp(rows, -here, std::max<std::ptrdiff_t>(last - here, 0));
    chosen_ = static_cast<std::size_t>(here + step);
}

std::size_t ProcessTable::first(std::size_t height)
{
    const std::size_t most = visible_.size() > height ? visible_.size() - height : 0;
    first_ = std::min({first_, most, chosen_});
    if (height > 0 && chosen_ >= first_ + height) {
        first_ = chosen_ - height + 1;
    }
    return first_;
}

void ProcessTable::arrange()
{
    const auto before =
        chosen_ < visible_.size() ? std::optional(identity(visible_[chosen_])) : std::nullopt;
    visible_.clear();
    std::ranges::copy_if(all_, std::back_inserter(visible_),
                         [this](const ProcessRow& row) { return is_let_through(row, filter_); });
    std::ranges::stable_sort(visible_, [this](const ProcessRow& a, const ProcessRow& b) {
        return order_.descending ? is_before(b, a, order_.key) : is_before(a, b, order_.key);
    });
    const auto same = std::ranges::find_if(
        visible_, [&](const ProcessRow& row) { return identity(row) == before; });
    chosen_ = same != visible_.end()
                  ? static_cast<std::size_t>(same - visible_.begin())
                  : std::min(chosen_, visible_.empty() ? 0 : visible_.size() - 1);
}

}  // namespace nimba::smi::top
