// SPDX-License-Identifier: MIT
#pragma once

#include "driver/allocation_text.hpp"
#include "driver/handles.hpp"
#include "video_memory.hpp"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace nimba::sim {

// What an allocation is, for as long as it is there.
struct AllocationView {
    const AllocationValues* values;
    OwnValues own;
};

// The allocations of one adapter that the simulation makes, over time. What there is depends on the
// description, its seeds and the number of ticks gone by alone. An allocation's entry is a number
// that no other one ever has; its handle is given out again when it is gone.
class Allocations {
  public:
    static constexpr uint64_t kTicksPerSecond = 100;

    // `description` outlives this object.
    Allocations(const VideoMemory& description, bool va_driver);

    // Makes `ticks`, counted from the beginning, go by. A number that is lower than before changes
    // nothing.
    void advance_to(uint64_t ticks);

    // The names, in listing order: in the order in which the allocations came.
    std::vector<std::string> list(AllocationNames names = AllocationNames::kEntries) const;

    // The allocation of that name.
    std::optional<AllocationView> find(const std::string& name,
                                       AllocationNames names = AllocationNames::kEntries) const;

    bool contains(const std::string& entry) const { return find(entry).has_value(); }

    // The bytes in use in each segment, by those of the description too. What has a text as its
    // segment, or as its size, uses nothing.
    const std::map<int64_t, uint64_t>& used() const { return used_; }

    // The text of an allocation's info node.
    std::optional<std::string> info(const std::string& name,
                                    AllocationNames names = AllocationNames::kEntries) const;

    // Those of the device context with that handle, in listing order.
    template <typename Function>
    void for_each_of(int64_t device, Function function) const
    {
        if (const auto entries = by_device_.find(device); entries != by_device_.end()) {
            for (const uint64_t entry : entries->second) {
                function(view(live_.at(entry)));
            }
        }
    }

  private:
    struct Live {
        const AllocationShape* shape;
        int64_t handle;
        int64_t device;
        int64_t segment;
        int64_t address;
    };

    // Draws one allocation after the other from a source.
    class Draw {
      public:
        Draw(const AllocationSource& source, const std::vector<AllocationShape>& shapes);
        Live next();

      private:
        const AllocationSource* source_;
        const std::vector<AllocationShape>* shapes_;
        std::vector<uint64_t> weight_sums_;
        std::mt19937_64 random_;
    };

    static constexpr int64_t kFirstAddress = int64_t{1} << 40U;

    static AllocationView view(const Live& live);
    uint64_t add(Draw& draw);  // returns the entry
    // Adds what the allocation takes to what is in use, as it comes; else takes it off.
    void count(const AllocationView& allocation, bool comes);
    void remove_any();
    void tick();

    const VideoMemory* description_;
    bool va_driver_;
    Handles handles_;
    Draw changes_;
    std::vector<Draw> leaks_;
    std::mt19937_64 choice_;                                     // of those that go
    std::map<uint64_t, Live> live_;                              // by entry
    std::unordered_map<int64_t, uint64_t> by_handle_;            // the entries
    std::unordered_map<int64_t, std::set<uint64_t>> by_device_;  // the entries, in listing order
    std::vector<uint64_t> mortal_;                               // entries of those that can go
    std::map<int64_t, uint64_t> used_;                           // bytes, by segment
    uint64_t next_entry_ = 0;
    int64_t next_address_ = kFirstAddress;
    uint64_t ticks_ = 0;
};

}  // namespace nimba::sim
