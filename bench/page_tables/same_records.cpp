// SPDX-License-Identifier: MIT
#include "bench/page_tables/same_records.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <tuple>
#include <vector>

namespace nimba::bench {
namespace {

using PageTable = std::vector<vidmm_vm_pt>;
using SubTable = std::vector<vidmm_vm_pte_elt3k>;

// The place of a linked entry in its array; -1 without one.
template <class Entry>
std::ptrdiff_t place(const Entry* entry, const std::vector<Entry>& entries)
{
    return entry == nullptr ? -1 : entry - entries.data();
}

// One level of a device and what its links lead to.
struct Level {
    const PageTable& above;  // of the root: itself, as it has no links there
    const PageTable& page_table;
    const PageTable& below;  // of the last level likewise
    const SubTable& sub_table;
};

std::array<Level, 3> levels_of(const data_vectors& device)
{
    return {{{device.pt_level0, device.pt_level0, device.pt_level1, device.st_level0},
             {device.pt_level0, device.pt_level1, device.pt_level2, device.st_level1},
             {device.pt_level1, device.pt_level2, device.pt_level2, device.st_level2}}};
}

auto links_of(const vidmm_vm_pt& entry, const Level& level)
{
    return std::tuple{place(entry.entries, level.below), place(entry.parent, level.above),
                      place(entry.PT_sub_entries, level.sub_table),
                      place(entry.next, level.page_table), place(entry.pre, level.page_table)};
}

auto links_of(const vidmm_vm_pte_elt3k& entry, const Level& level)
{
    return std::tuple{place(entry.next, level.sub_table), place(entry.pre, level.sub_table),
                      place(entry.parent, level.page_table)};
}

std::array<std::byte, sizeof(vidmm_vm_pt)> bytes_without_links(vidmm_vm_pt entry)
{
    entry.entries = entry.parent = entry.next = entry.pre = nullptr;
    entry.PT_sub_entries = nullptr;
    std::array<std::byte, sizeof entry> bytes;
    std::memcpy(bytes.data(), &entry, bytes.size());
    return bytes;
}

// Nothing is said of the padding behind the last field.
auto bytes_without_links(vidmm_vm_pte_elt3k entry)
{
    entry.next = entry.pre = nullptr;
    entry.parent = nullptr;
    std::array<std::byte, offsetof(vidmm_vm_pte_elt3k, parent_index) + sizeof entry.parent_index>
        bytes;
    std::memcpy(bytes.data(), &entry, bytes.size());
    return bytes;
}

template <class Entry>
bool same(const std::vector<Entry>& a, const Level& level_a, const std::vector<Entry>& b,
          const Level& level_b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](const Entry& x, const Entry& y) {
        return bytes_without_links(x) == bytes_without_links(y) &&
               links_of(x, level_a) == links_of(y, level_b);
    });
}

}  // namespace

bool same_entries(const data_vectors& a, const data_vectors& b)
{
    const std::array<Level, 3> levels_a = levels_of(a);
    const std::array<Level, 3> levels_b = levels_of(b);
    return std::equal(
        levels_a.begin(), levels_a.end(), levels_b.begin(), [](const Level& x, const Level& y) {
            return same(x.page_table, x, y.page_table, y) && same(x.sub_table, x, y.sub_table, y);
        });
}

}  // namespace nimba::bench
