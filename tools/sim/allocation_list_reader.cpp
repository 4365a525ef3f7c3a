// SPDX-License-Identifier: MIT
#include "allocation_list_reader.hpp"

#include "allocation_values_reader.hpp"
#include "claims.hpp"
#include "driver/address_space.hpp"
#include "entry_numbers.hpp"
#include "handle_name.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>

namespace nimba::sim {
namespace {

constexpr int64_t kFirstAddress = int64_t{1} << 32U;
constexpr int64_t kPage = 4096;

NodeValue read_device(const TableReader& table, const AllocationParts& parts,
                      const NodeValue& value)
{
    if (!table.has("device") && !parts.devices.empty()) {
        return parts.devices.front();
    }
    const auto* handle = std::get_if<int64_t>(&value);
    if (!table.has("device") || (handle != nullptr && !parts.has_device(*handle))) {
        table.reject("device", fmt::format("{}, or a text", kContextExpected));
    }
    return value;
}

void fill(NodeValue& value, int64_t number)
{
    if (std::holds_alternative<std::monostate>(value)) {
        value = number;
    }
}

// A driver that names directories by handles can have no two of a name, and none without one.
void check_name(const TableReader& table, const NodeValue& handle, Claims& claims)
{
    if (table.has("entry")) {
        table.reject("entry", "no such key on a QV chip, which names allocations by their handles");
    }
    if (!table.has("handle")) {
        return;
    }
    const auto name = handle_name(handle, 1);
    if (!name) {
        table.reject("handle", "a number, or a text that can be the name of a directory");
    }
    claims.take("allocation directory", *name, table, "handle");
}

// Gives each allocation the lowest handle that no other one has, unless the file gave it one.
void complete_handles(std::vector<Allocation>& allocations, const std::set<int64_t>& taken)
{
    int64_t handle = 1;
    for (Allocation& allocation : allocations) {
        NodeValue& value = allocation.values[AllocationKey::kHandle];
        if (std::holds_alternative<std::monostate>(value)) {
            while (taken.contains(handle)) {
                ++handle;
            }
            value = handle++;
        }
    }
}

}  // namespace

std::vector<Allocation> read_allocations(const TableReader& adapter, const AllocationParts& parts,
                                         AllocationNames names)
{
    std::vector<Allocation> allocations;
    EntryNumbers entries{"allocation entry"};
    Claims claims;
    std::set<int64_t> handles;
    int64_t address = kFirstAddress;
    for (const TableReader& table : adapter.tables("allocation", kAllocationKeys)) {
        const int64_t entry = entries.read(table);
        AllocationValues values = read_allocation_values(table);
        const NodeValue& handle = values[AllocationKey::kHandle];
        if (const auto* number = std::get_if<int64_t>(&handle)) {
            claims.take("allocation handle", std::to_string(*number), table, "handle");
        }
        if (const auto number = shown_handle(handle)) {
            handles.insert(*number);
        }
        if (names == AllocationNames::kHandles) {
            check_name(table, handle, claims);
        }
        NodeValue& device = values[AllocationKey::kDevice];
        device = read_device(table, parts, device);
        fill(values[AllocationKey::kSegmentid], 0);
        fill(values[AllocationKey::kGpuVirtAddr], address);
        address += std::max(values.number(AllocationKey::kSize), kPage);
        if (address >= kAddressEnd) {
            address = kFirstAddress;
        }
        allocations.push_back({entry, std::move(values), table.any_text("vm_info")});
    }
    complete_handles(allocations, handles);
    return allocations;
}

}  // namespace nimba::sim
