// SPDX-License-Identifier: MIT
// The names and texts of allocations' virtual-memory nodes, and their export as flat records. A
// first byte with the bit kNamed gives the entries names: the first lines of their texts.
#include "fuzz/support/check.hpp"
#include "fuzz/support/entry_names.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/machine_paths.hpp"
#include "fuzz/support/node_tree.hpp"
#include "fuzz/support/outcome.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace nimba::fuzz {
namespace {

constexpr unsigned kNamed = 8;
constexpr std::size_t kMostNodes = 6;
constexpr std::size_t kMostBytes = 24'000;
constexpr std::string_view kMarker = "=====vm node info=====";

std::string value_of(const std::string& block, const char* key)
{
    const std::size_t position = block.find(key);
    if (position == std::string::npos) {
        return "";
    }
    const std::size_t equals = block.find('=', position);
    const std::size_t begin = equals == std::string::npos ? 1 : equals + 2;
    const std::size_t newline = block.find('\n', position);
    const std::size_t end = newline == std::string::npos ? block.size() : newline;
    return begin < end ? block.substr(begin, end - begin) : "";
}

std::vector<std::string> blocks_of(const std::string& text)
{
    std::vector<std::string> blocks;
    std::size_t begin = text.find(kMarker);
    while (begin != std::string::npos) {
        const std::size_t end = text.find(kMarker, begin + kMarker.size());
        blocks.push_back(text.substr(begin, end == std::string::npos ? end : end - begin));
        begin = end;
    }
    return blocks;
}

bool is_same(const allcation_Info& a, const allcation_Info& b)
{
    return a.device_pid == b.device_pid && a.device_pname == b.device_pname &&
           a.allocation_handle == b.allocation_handle && a.gpu_va == b.gpu_va && a.size == b.size;
}

std::vector<allcation_Info> expected_of(const std::string& text, const std::string& handle)
{
    std::vector<allcation_Info> expected;
    for (const std::string& block : blocks_of(text)) {
        allcation_Info& info = expected.emplace_back();
        info.device_pname = value_of(block, "device_pname");
        info.device_pid = value_of(block, "device_pid");
        info.allocation_handle = handle;
        info.gpu_va = value_of(block, "gpu_va");
        info.size = value_of(block, "size");
    }
    return expected;
}

Outcome convert(const allcation_Info& info, _ALLOCATION_DATA& data)
{
    Outcome outcome = to_int(info.device_pid, 10, data.device_pid);
    if (outcome == Outcome::kDone) {
        outcome = to_long(info.allocation_handle, 16, data.allocation_handle);
    }
    if (outcome == Outcome::kDone) {
        outcome = to_long(info.size, 16, data.size);
    }
    return outcome == Outcome::kDone ? to_long(info.gpu_va, 16, data.gpu_va) : outcome;
}

void check_export()
{
    Get_Local_Data_Status = 0;
    uint32_t count = 0;
    get_allocation_data(nullptr, &count);
    check(count == Allocation_List.size(), "every allocation counts");
    // One more than there are: a buffer must not be null.
    _ALLOCATION_DATA pattern;
    std::memset(&pattern, 0xA5, sizeof pattern);
    std::vector<_ALLOCATION_DATA> records(count + 1, pattern);
    const Outcome outcome = outcome_of([&] { get_allocation_data(records.data(), &count); });
    Outcome expected = Outcome::kDone;
    for (std::size_t index = 0; index < count && expected == Outcome::kDone; ++index) {
        _ALLOCATION_DATA data{};
        expected = convert(Allocation_List[index], data);
        check(expected != Outcome::kDone || std::memcmp(&records[index], &data, sizeof data) == 0,
              "a flat record has the numbers of its texts, and zeros");
    }
    check(outcome == expected, "an export ends as its numbers do");
    check(std::memcmp(&records.back(), &pattern, sizeof pattern) == 0,
          "an export has no more than every allocation");
}

}  // namespace

void try_input(std::string_view input)
{
    static NodeTree tree{"allocations", "vm_info"};
    const uint8_t control = take_byte(input);
    std::vector<std::string_view> parts = split(input, kMostNodes);
    const std::vector<std::string> names =
        (control & kNamed) != 0 ? take_names(parts) : numbered_names(parts.size());
    for (std::size_t node = 0; node < parts.size(); ++node) {
        tree.node(node).set(repeated(parts[node], control, kMostBytes));
    }
    const NodeTree::Tree& shown = tree.with_entries(names);
    redirect("/sys/kernel/debug/dri/0/qv", shown.path);
    std::vector<allcation_Info> expected;
    for (const std::size_t node : shown.listed) {
        const auto infos = expected_of(tree.node(node).text(), names[node]);
        expected.insert(expected.end(), infos.begin(), infos.end());
    }
    Allocation_List.clear();
    check(get_alloction_data_try(Allocation_List) == 0, "nodes that are there can be read");
    check(std::ranges::equal(Allocation_List, expected, is_same),
          "each block gives the values behind its keys");
    check_export();
}

}  // namespace nimba::fuzz
