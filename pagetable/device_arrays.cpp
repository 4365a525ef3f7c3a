// SPDX-License-Identifier: MIT
#include "pagetable/device_arrays.hpp"

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace nimba {
namespace {

// A block of entries that has moved from one place to another.
template <typename Entry>
class Move final {
  public:
    Move(const std::vector<Entry>& from, std::vector<Entry>& to)
        : begin_{reinterpret_cast<std::uintptr_t>(from.data())},
          end_{begin_ + from.size() * sizeof(Entry)},
          to_{to.data()}
    {
    }

    void follow(Entry*& link) const
    {
        const auto at = reinterpret_cast<std::uintptr_t>(link);
        if (at >= begin_ && at < end_) {
            link = to_ + (at - begin_) / sizeof(Entry);
        }
    }

  private:
    std::uintptr_t begin_;
    std::uintptr_t end_;
    Entry* to_;
};

void follow(data_vectors& device, const Move<vidmm_vm_pt>& move)
{
    for (const auto& level : kPageTables) {
        for (vidmm_vm_pt& entry : device.*level.entries) {
            move.follow(entry.entries);
            move.follow(entry.parent);
            move.follow(entry.next);
            move.follow(entry.pre);
        }
    }
    for (const auto& level : kSubTables) {
        for (vidmm_vm_pte_elt3k& entry : device.*level.entries) {
            move.follow(entry.parent);
        }
    }
}

void follow(data_vectors& device, const Move<vidmm_vm_pte_elt3k>& move)
{
    for (const auto& level : kPageTables) {
        for (vidmm_vm_pt& entry : device.*level.entries) {
            move.follow(entry.PT_sub_entries);
        }
    }
    for (const auto& level : kSubTables) {
        for (vidmm_vm_pte_elt3k& entry : device.*level.entries) {
            move.follow(entry.next);
            move.follow(entry.pre);
        }
    }
}

// Page by page, the kernel's work for a large new array costs as much as reading the dump into it.
// The advice stays with the memory; where there are no huge pages it changes nothing.
void advise_huge_pages(void* memory, std::size_t size)
{
    constexpr std::size_t kWorthwhile = std::size_t{16} * 1024 * 1024;
    constexpr std::size_t kHugePage = std::size_t{2} * 1024 * 1024;
    if (size >= kWorthwhile) {
        std::size_t room = size;
        void* const first = std::align(kHugePage, kHugePage, memory, room);
        ::madvise(first, room / kHugePage * kHugePage, MADV_HUGEPAGE);
    }
}

template <typename Entry>
void reserve_and_follow(data_vectors& device, std::vector<Entry>& entries, std::size_t capacity)
{
    if (capacity <= entries.capacity()) {
        return;
    }
    std::vector<Entry> larger;
    larger.reserve(capacity);
    advise_huge_pages(larger.data(), capacity * sizeof(Entry));
    larger.assign(entries.begin(), entries.end());
    entries.swap(larger);
    follow(device, Move<Entry>{larger, entries});
}

}  // namespace

void reserve(data_vectors& device, std::vector<vidmm_vm_pt>& entries, std::size_t capacity)
{
    reserve_and_follow(device, entries, capacity);
}

void reserve(data_vectors& device, std::vector<vidmm_vm_pte_elt3k>& entries, std::size_t capacity)
{
    reserve_and_follow(device, entries, capacity);
}

}  // namespace nimba
