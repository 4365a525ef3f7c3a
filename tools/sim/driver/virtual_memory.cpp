// SPDX-License-Identifier: MIT
#include "driver/virtual_memory.hpp"

#include "driver/mapped_tables.hpp"
#include "driver/page_table_text.hpp"
#include "driver/synthetic_tables.hpp"

#include <algorithm>
#include <optional>
#include <variant>

namespace nimba::sim {
namespace {

// Places in video memory for allocations that have none: one each 2 MiB, given by their handles.
// The place in these 2 MiB is that of the address.
constexpr uint64_t kPlaces = 1024;
constexpr uint64_t kPlaceSize = uint64_t{2} << 20U;
constexpr uint64_t kPlaceStep = 389;  // neighbours in number lie apart

constexpr uint64_t kSyntheticSpan = uint64_t{1} << 27U;  // pages of an entry of level 0

std::optional<int64_t> number_of(const NodeValue& value)
{
    const auto* number = std::get_if<int64_t>(&value);
    return number == nullptr ? std::nullopt : std::optional{*number};
}

uint64_t place_of(int64_t handle, uint64_t address)
{
    return static_cast<uint64_t>(handle) * kPlaceStep % kPlaces * kPlaceSize + address % kPlaceSize;
}

// Nothing: a text takes the place of a number that is needed.
std::optional<Mapping> mapping_of(const AllocationValues& values, const OwnValues& own)
{
    const auto number = [&](AllocationKey key) { return number_of(value_of(values, key, own)); };
    const auto address = number(AllocationKey::kGpuVirtAddr);
    const auto size = number(AllocationKey::kSize);
    if (!address || !size) {
        return std::nullopt;
    }
    Mapping mapping;
    mapping.address = static_cast<uint64_t>(*address);
    mapping.size = static_cast<uint64_t>(*size);
    const int64_t offset = number(AllocationKey::kFbOffset).value_or(0);
    mapping.physical = offset != 0
                           ? static_cast<uint64_t>(offset)
                           : place_of(number(AllocationKey::kHandle).value_or(0), mapping.address);
    mapping.segment = std::max<int64_t>(number(AllocationKey::kSegmentid).value_or(0), 0);
    mapping.snoop = number(AllocationKey::kCpuVisible).value_or(0) != 0;
    return mapping;
}

}  // namespace

VirtualMemory::VirtualMemory(const VideoMemory& description, const std::vector<Process>& processes)
    : description_{description}
{
    for (const DeviceContext& context : description_.contexts) {
        if (const auto handle = number_of(context.handle)) {
            contexts_.emplace(*handle, &context);
        }
    }
    for (const Process& process : processes) {
        names_.emplace(process.pid, process.comm);
    }
}

std::string VirtualMemory::node(const AllocationValues& values, const OwnValues& own) const
{
    const auto device = number_of(value_of(values, AllocationKey::kDevice, own));
    const auto context = device ? contexts_.find(*device) : contexts_.end();
    if (context == contexts_.end()) {
        return "";
    }
    const auto pid = number_of(context->second->pid);
    const auto name = pid ? names_.find(*pid) : names_.end();
    return vm_node_text(values, own, *context->second, name == names_.end() ? "" : name->second);
}

AddressSpace VirtualMemory::address_space(const DeviceContext& context,
                                          const Allocations& allocations) const
{
    AddressSpace space;
    if (context.page_tables) {
        space.reserve(kFirstSyntheticLevel0 * kSyntheticSpan,
                      (kFirstSyntheticLevel0 + context.page_tables->level0) * kSyntheticSpan);
    }
    const auto handle = number_of(context.handle);
    if (!handle) {
        return space;
    }
    const auto map = [&](const AllocationValues& values, const OwnValues& own) {
        if (const auto mapping = mapping_of(values, own)) {
            space.map(*mapping);
        }
    };
    for (const Allocation& allocation : description_.allocations) {
        if (number_of(allocation.values[AllocationKey::kDevice]) == handle) {
            map(allocation.values, {});
        }
    }
    allocations.for_each_of(*handle,
                            [&](const AllocationView& view) { map(*view.values, view.own); });
    return space;
}

std::string VirtualMemory::dump(const DeviceContext& context, const AddressSpace& space)
{
    PageTableText text;
    add_mapped_tables(space.runs(), text);
    if (context.page_tables) {
        add_synthetic_tables(*context.page_tables, text);
    }
    return text.take();
}

}  // namespace nimba::sim
