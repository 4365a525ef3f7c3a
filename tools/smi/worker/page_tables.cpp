// SPDX-License-Identifier: MIT
#include "tools/smi/worker/page_tables.hpp"

#include <algorithm>
#include <cstring>
#include <set>
#include <string_view>
#include <tuple>

namespace nimba::smi {
namespace {

template <std::size_t Size>
bool same_text(const char (&a)[Size], const char (&b)[Size])
{
    return std::strncmp(a, b, Size) == 0;
}

bool same_entry(const vidmm_vm_pt& a, const vidmm_vm_pt& b)
{
    return a.PT_Level == b.PT_Level && a.PT_index == b.PT_index && same_text(a.Addr, b.Addr) &&
           same_text(a.Buffer, b.Buffer);
}

bool same_page(const vidmm_vm_pte_elt3k& a, const vidmm_vm_pte_elt3k& b)
{
    return a.ST_Level == b.ST_Level && a.Index == b.Index && a.parent_level == b.parent_level &&
           a.parent_index == b.parent_index && a.Snoop == b.Snoop && a.Segment == b.Segment &&
           a.LargePage == b.LargePage && same_text(a.Addr, b.Addr);
}

bool same_device(const data_vectors& a, const data_vectors& b)
{
    return same_text(a.pid, b.pid) && same_text(a.app_name, b.app_name) &&
           std::ranges::all_of(
               kDeviceTables,
               [&](auto level) { return std::ranges::equal(a.*level, b.*level, same_entry); }) &&
           std::ranges::all_of(kDevicePages, [&](auto level) {
               return std::ranges::equal(a.*level, b.*level, same_page);
           });
}

}  // namespace

std::vector<std::size_t> distinct_devices(const std::vector<data_vectors>& devices)
{
    std::vector<std::size_t> distinct;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const bool met = std::ranges::any_of(
            distinct, [&](std::size_t other) { return same_device(devices[other], devices[i]); });
        if (!met) {
            distinct.push_back(i);
        }
    }
    return distinct;
}

std::vector<std::size_t> distinct_allocations(const std::vector<allcation_Info>& allocations)
{
    using Fields = std::tuple<std::string_view, std::string_view, std::string_view,
                              std::string_view, std::string_view>;
    std::set<Fields> met;
    std::vector<std::size_t> distinct;
    for (std::size_t i = 0; i < allocations.size(); ++i) {
        const allcation_Info& node = allocations[i];
        if (met.emplace(node.device_pid, node.device_pname, node.allocation_handle, node.gpu_va,
                        node.size)
                .second) {
            distinct.push_back(i);
        }
    }
    return distinct;
}

}  // namespace nimba::smi
