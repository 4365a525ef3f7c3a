// SPDX-License-Identifier: MIT
// Bringing the kept list of allocations up to date with a snapshot.
#include "alloc/record_keys.hpp"
#include "nimba_mgmt_interface.h"

namespace nimba {
namespace {

using Records = std::vector<_GFX_ALLOCATION_INFO>;

// The records of a snapshot that no kept record has taken yet, by identity, first ones first.
class Untaken final {
  public:
    explicit Untaken(const Records& snapshot)
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

}  // namespace
}  // namespace nimba

void compare_memleak_list(std::vector<_GFX_ALLOCATION_INFO>& snapshot,
                          std::vector<_GFX_ALLOCATION_INFO>& kept)
{
    // All memory comes first, so that nothing has changed when there is none.
    nimba::Untaken untaken{snapshot};
    kept.reserve(snapshot.size());

    auto kept_end = kept.begin();
    for (const _GFX_ALLOCATION_INFO& record : kept) {
        if (untaken.take_same(record)) {
            *kept_end = record;
            ++kept_end->hit_count;
            ++kept_end;
        }
    }
    kept.erase(kept_end, kept.end());

    auto snapshot_end = snapshot.begin();
    for (std::size_t index = 0; index < snapshot.size(); ++index) {
        if (!untaken.is_taken(index)) {
            *snapshot_end++ = snapshot[index];
        }
    }
    snapshot.erase(snapshot_end, snapshot.end());
    kept.insert(kept.end(), snapshot.begin(), snapshot.end());
}
