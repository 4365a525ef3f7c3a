// SPDX-License-Identifier: MIT
#include "pagetable/tree_builder.hpp"

#include "pagetable/device_arrays.hpp"

#include <string_view>

namespace nimba {
namespace {

constexpr int32_t kLevels = 3;

// Copies as much of the text as fits into a field of zeros.
template <std::size_t size>
void copy_text(std::string_view text, char (&field)[size])
{
    text.copy(field, size - 1);
}

// Links the last entry of an array with the one before it, if there is one.
template <typename Entry>
void chain_last(std::vector<Entry>& entries)
{
    if (entries.size() > 1) {
        Entry& last = entries.back();
        last.pre = &last - 1;
        last.pre->next = &last;
    }
}

}  // namespace

void TreeBuilder::add(const PageTableLine& line)
{
    last_was_sub_table_ = false;
    if (line.level < 0 || line.level >= kLevels) {
        return;
    }
    if (line.level == 0) {
        append(line);
    } else if (line.level == 1 ? last_was_level0_ : last_was_level1_) {
        append_child(line);
    } else if (last_was_level2_ || (line.level == 1 && last_was_level1_)) {
        append_sibling(line);
    }
    update_PageTable_Flags(last_was_level0_, last_was_level1_, last_was_level2_, line.level);
}

void TreeBuilder::add(const SubTableLine& line)
{
    const bool continues_run = last_was_sub_table_;
    last_was_sub_table_ = true;
    large_page_ = line.large_page.value_or(large_page_);
    if (line.level < 0 || line.level >= kLevels) {
        return;
    }
    vidmm_vm_pte_elt3k& entry = append(line);
    const auto level = static_cast<std::size_t>(line.level);
    auto& owners = device_.*kPageTables[level].entries;
    if (continues_run) {
        chain_last(device_.*kSubTables[level].entries);
    } else if (!owners.empty()) {
        entry.parent = &owners.back();
        entry.parent->PT_sub_entries = &entry;
    }
}

// The level above is empty when its lines were dropped.
void TreeBuilder::append_child(const PageTableLine& line)
{
    vidmm_vm_pt& entry = append(line);
    auto& owners = device_.*kPageTables[static_cast<std::size_t>(line.level) - 1].entries;
    if (!owners.empty()) {
        entry.parent = &owners.back();
        entry.parent->entries = &entry;
    }
}

void TreeBuilder::append_sibling(const PageTableLine& line)
{
    append(line);
    chain_last(device_.*kPageTables[static_cast<std::size_t>(line.level)].entries);
}

vidmm_vm_pt& TreeBuilder::append(const PageTableLine& line)
{
    auto& entries = device_.*kPageTables[static_cast<std::size_t>(line.level)].entries;
    vidmm_vm_pt& entry = append_entry(device_, entries);
    copy_text(line.buffer, entry.Buffer);
    copy_text(line.address, entry.Addr);
    entry.PT_Level = line.level;
    entry.PT_index = line.index;
    return entry;
}

vidmm_vm_pte_elt3k& TreeBuilder::append(const SubTableLine& line)
{
    auto& entries = device_.*kSubTables[static_cast<std::size_t>(line.level)].entries;
    vidmm_vm_pte_elt3k& entry = append_entry(device_, entries);
    entry.Snoop = static_cast<uint16_t>(line.snoop);
    entry.Segment = static_cast<uint16_t>(line.segment);
    copy_text(line.address, entry.Addr);
    entry.LargePage = large_page_;
    entry.ST_Level = line.level;
    entry.Index = line.index;
    return entry;
}

}  // namespace nimba

int32_t update_PageTable_Flags(bool& level0, bool& level1, bool& level2, int32_t level)
{
    level0 = level == 0;
    level1 = level == 1;
    level2 = level == 2;
    return level2 ? 1 : 0;
}
