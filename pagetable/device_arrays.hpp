// SPDX-License-Identifier: MIT
// The six arrays of a device, whose entries link to each other.
#pragma once

#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace nimba {

template <typename Entry>
struct LevelArray {
    std::vector<Entry> data_vectors::*entries;
    std::size_t usual_capacity;
};

// By level.
inline constexpr std::array kPageTables{
    LevelArray<vidmm_vm_pt>{&data_vectors::pt_level0, 100},
    LevelArray<vidmm_vm_pt>{&data_vectors::pt_level1, 1'000},
    LevelArray<vidmm_vm_pt>{&data_vectors::pt_level2, 20'000},
};
inline constexpr std::array kSubTables{
    LevelArray<vidmm_vm_pte_elt3k>{&data_vectors::st_level0, 100},
    LevelArray<vidmm_vm_pte_elt3k>{&data_vectors::st_level1, 20'000},
    LevelArray<vidmm_vm_pte_elt3k>{&data_vectors::st_level2, 300'000},
};

// Makes room for so many entries in one of the device's arrays. When they have to move, all links
// to them follow.
void reserve(data_vectors& device, std::vector<vidmm_vm_pt>& entries, std::size_t capacity);
void reserve(data_vectors& device, std::vector<vidmm_vm_pte_elt3k>& entries, std::size_t capacity);

// Appends an entry that is all 0 to one of the device's arrays.
template <typename Entry>
Entry& append_entry(data_vectors& device, std::vector<Entry>& entries)
{
    if (entries.size() == entries.capacity()) {
        reserve(device, entries, std::max<std::size_t>(2 * entries.capacity(), 64));
    }
    return entries.emplace_back();
}

}  // namespace nimba
