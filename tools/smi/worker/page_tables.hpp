// SPDX-License-Identifier: MIT
// What a worker keeps between requests of the library's last reading of page tables.
#pragma once

#include "tools/smi/worker/page_table_library.hpp"

#include <cstddef>
#include <vector>

namespace nimba::smi {

// The entries of a device's page tables and sub-tables, by level.
inline constexpr std::vector<vidmm_vm_pt> data_vectors::*kDeviceTables[] = {
    &data_vectors::pt_level0, &data_vectors::pt_level1, &data_vectors::pt_level2};
inline constexpr std::vector<vidmm_vm_pte_elt3k> data_vectors::*kDevicePages[] = {
    &data_vectors::st_level0, &data_vectors::st_level1, &data_vectors::st_level2};

// The lists are the library's own. It can list a device and an allocation twice when it had to read
// the driver again.
struct PageTables {
    PageTableEntryPoints entry;
    std::vector<std::size_t> devices;      // those of the library's list to show
    std::vector<std::size_t> allocations;  // likewise
};

// The elements of the library's lists without those that were met before, equal in all that the
// driver tells.
std::vector<std::size_t> distinct_devices(const std::vector<data_vectors>& devices);
std::vector<std::size_t> distinct_allocations(const std::vector<allcation_Info>& allocations);

}  // namespace nimba::smi
