// SPDX-License-Identifier: MIT
// What an adapter's driver knows of video memory: who uses it, and how that changes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace nimba::sim {

// The keys of an allocation's node, in the order of its lines.
enum class AllocationKey : std::size_t {
    kHandle,
    kDevice,
    kWidth,
    kHeight,
    kPitch,
    kBitCnt,
    kSecured,
    kSize,
    kTile,
    kCpuVisible,
    kCacheType,
    kPoolType,
    kAtType,
    kSegmentid,
    kHwFormat,
    kCompressFormat,
    kBlSlotIndex,
    kGpuVirtAddr,
    kImported,
    kFbOffset,
    kShare,
    kCount
};

inline constexpr std::size_t kAllocationKeyCount = static_cast<std::size_t>(AllocationKey::kCount);

inline constexpr std::array<std::string_view, kAllocationKeyCount> kAllocationKeyNames{
    "handle",   "device",    "width",     "height",          "pitch",         "bit_cnt",
    "secured",  "size",      "tile",      "cpu_visible",     "cache_type",    "pool_type",
    "at_type",  "segmentid", "hw_format", "compress_format", "bl_slot_index", "gpu_virt_addr",
    "imported", "fb_offset", "share"};

// A value that a node shows: a number, which the node shows in the base that it uses there, or a
// text that it shows as it is. Nothing: each allocation has its own.
using NodeValue = std::variant<std::monostate, int64_t, std::string>;

class AllocationValues {
  public:
    NodeValue& operator[](AllocationKey key) { return values_[static_cast<std::size_t>(key)]; }
    const NodeValue& operator[](AllocationKey key) const
    {
        return values_[static_cast<std::size_t>(key)];
    }

    // The value's number; 0 if it is none.
    int64_t number(AllocationKey key) const
    {
        const auto* number = std::get_if<int64_t>(&(*this)[key]);
        return number == nullptr ? 0 : *number;
    }

  private:
    std::array<NodeValue, kAllocationKeyCount> values_;
};

// Page tables that no allocation needs, in an area of the address space that is theirs alone.
struct SyntheticTables {
    uint64_t level0 = 0;  // page-table entries of the level, spread evenly over those above
    uint64_t level1 = 0;
    uint64_t level2 = 0;
    uint64_t entries = 0;           // in the sub-tables of level 2
    uint64_t large_pages = 0;       // percent of these sub-tables
    uint64_t snooping = 0;          // percent of the entries
    std::vector<int64_t> segments;  // of the sub-tables in turn; never empty
};

// An open device of a process.
struct DeviceContext {
    int64_t entry = 0;
    NodeValue pid;
    NodeValue handle;
    std::map<std::string, std::string> further;  // lines behind these two
    std::optional<std::string> vm_info;          // instead of the dump of its page tables
    std::optional<SyntheticTables> page_tables;
};

// An allocation that stays as it is.
struct Allocation {
    int64_t entry = 0;
    AllocationValues values;
    std::optional<std::string> vm_info;  // instead of the text of its VM node
};

// What the directories of allocations are called by.
enum class AllocationNames { kEntries, kHandles };

// What allocations that the simulation makes have in common.
struct AllocationShape {
    std::string name;
    uint64_t weight = 1;  // how often it is drawn, in relation to others
    AllocationValues values;
};

// What allocations are drawn from; each allocation is an independent draw. Nothing is empty, save
// where no allocation is drawn.
struct AllocationSource {
    uint64_t seed = 0;
    std::vector<std::size_t> shapes;  // indices in VideoMemory::shapes
    std::vector<int64_t> devices;     // handles of device contexts
    std::vector<int64_t> segments;    // for shapes that have none of their own
};

// Allocations that are there from the beginning.
struct GeneratedAllocations {
    uint64_t count = 0;
    AllocationSource source;
};

// Allocations that come and go. Those that go are any of these and of the generated ones.
struct AllocationChange {
    uint64_t appear = 0;  // per second
    uint64_t vanish = 0;  // per second
    uint64_t live = 0;    // none appears while so many are there
    AllocationSource source;
};

// A device context that allocates and never frees.
struct AllocationLeak {
    uint64_t per_second = 0;
    AllocationSource source;
};

struct VideoMemory {
    bool shown = false;  // whether the driver has nodes for it at all
    AllocationNames names = AllocationNames::kEntries;
    std::vector<DeviceContext> contexts;
    std::vector<Allocation> allocations;
    std::vector<AllocationShape> shapes;
    GeneratedAllocations generated;
    AllocationChange change;
    std::vector<AllocationLeak> leaks;
};

}  // namespace nimba::sim
