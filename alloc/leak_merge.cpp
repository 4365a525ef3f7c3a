// SPDX-License-Identifier: MIT
// Bringing the kept list of allocations up to date with a snapshot.
#include "alloc/record_keys.hpp"
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <span>

namespace nimba {
namespace {

using Records = std::span<_GFX_ALLOCATION_INFO>;

// The records of a snapshot that no kept record has taken yet, by identity, first ones first.
class Untaken final {
  public:
    explicit Untaken(std::span<const _GFX_ALLOCATION_INFO> snapshot)
        : keys_{snapshot.size()}, next_(snapshot.size(), kNone), taken_(snapshot.size(), false)
    {
        for (uint32_t record = 0; record < snapshot.size(); ++record) {
            append(record, keys_.number_of(snapshot[record]));
        }
    }

    // Takes the first record that is the same allocation. Returns whether there was one.
    bool take_same(const _GFX_ALLOCATION_INFO& kept)
    {
        const uint32_t key = keys_.find(kept);
        if (key == kNoKey || queues_[key].first == kNone) {
            return false;
        }
        const uint32_t record = queues_[key].first;
        queues_[key].first = next_[record];
        taken_[record] = true;
        return true;
    }

    [[nodiscard]] bool is_taken(std::size_t record) const { return taken_[record]; }

  private:
    static constexpr uint32_t kNone = UINT32_MAX;

    struct Queue {
        uint32_t first;
        uint32_t last;
    };

    void append(uint32_t record, uint32_t key)
    {
        if (key == queues_.size()) {
            queues_.push_back({record, record});
        } else {
            next_[queues_[key].last] = record;
            queues_[key].last = record;
        }
    }

    RecordKeys<kIdentity> keys_;
    std::vector<Queue> queues_;   // by key
    std::vector<uint32_t> next_;  // of the same key, by record
    std::vector<bool> taken_;     // by record
};

// How many records both lists begin with alike. Each of these kept records takes the one at its own
// place, since those before it are taken.
std::size_t common_beginning(Records kept, Records snapshot)
{
    const auto [end, unused] = std::ranges::mismatch(kept, snapshot, has_same_key<kIdentity>);
    return static_cast<std::size_t>(end - kept.begin());
}

// Moves the records for which `stays` is true to the front, each at most once, and in order.
// Returns their number.
template <typename Stays>
std::size_t compact(Records records, Stays stays)
{
    std::size_t count = 0;
    for (std::size_t index = 0; index < records.size(); ++index) {
        if (stays(index)) {
            if (count != index) {
                records[count] = records[index];
            }
            ++count;
        }
    }
    return count;
}

}  // namespace
}  // namespace nimba

void compare_memleak_list(std::vector<_GFX_ALLOCATION_INFO>& snapshot,
                          std::vector<_GFX_ALLOCATION_INFO>& kept)
{
    // All memory comes first, so that nothing has changed when there is none.
    kept.reserve(snapshot.size());
    const std::size_t common = nimba::common_beginning(kept, snapshot);
    const nimba::Records other_kept = nimba::Records{kept}.subspan(common);
    nimba::Untaken untaken{nimba::Records{snapshot}.subspan(common)};

    for (_GFX_ALLOCATION_INFO& record : nimba::Records{kept}.first(common)) {
        ++record.hit_count;
    }
    const std::size_t found = nimba::compact(other_kept, [&](std::size_t index) {
        const bool same = untaken.take_same(other_kept[index]);
        other_kept[index].hit_count += same ? 1 : 0;
        return same;
    });
    kept.resize(common + found);
    snapshot.resize(nimba::compact(snapshot, [&](std::size_t index) {
        return index >= common && !untaken.is_taken(index - common);
    }));
    kept.insert(kept.end(), snapshot.begin(), snapshot.end());
}
