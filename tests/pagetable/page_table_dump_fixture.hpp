// SPDX-License-Identifier: MIT
// Reading dumps of page tables that a test makes up. Entries are told as texts: "1:5" is the entry
// of level 1 and index 5; behind it stand those of its texts and numbers that are not empty or 0,
// and its links, with "2.0" for the first entry of level 2 in the device's arrays.
#pragma once

#include "nimba_mgmt_interface.h"
#include "support/captured_stdout.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace nimba::test {

using Lines = std::vector<std::string>;

template <typename Entry>
using Levels = std::array<const std::vector<Entry>*, 3>;

inline Levels<vidmm_vm_pt> page_levels(const data_vectors& device)
{
    return {&device.pt_level0, &device.pt_level1, &device.pt_level2};
}

inline Levels<vidmm_vm_pte_elt3k> sub_levels(const data_vectors& device)
{
    return {&device.st_level0, &device.st_level1, &device.st_level2};
}

// " name=value", or nothing for an empty value.
inline std::string part(const char* name, const std::string& value)
{
    return value.empty() ? "" : std::string{" "} + name + '=' + value;
}

inline std::string number_part(const char* name, std::int64_t value)
{
    return value == 0 ? "" : part(name, std::to_string(value));
}

// " name=level.position" for a link, or nothing for null; "elsewhere" when it leads to no entry.
template <typename Entry>
std::string link_part(const char* name, const Entry* entry, const Levels<Entry>& levels)
{
    if (entry == nullptr) {
        return "";
    }
    for (std::size_t level = 0; level < levels.size(); ++level) {
        const Entry* const begin = levels[level]->data();
        if (!std::less{}(entry, begin) && std::less{}(entry, begin + levels[level]->size())) {
            return part(name, std::to_string(level) + '.' + std::to_string(entry - begin));
        }
    }
    return part(name, "elsewhere");
}

inline std::string told(const vidmm_vm_pt& entry, const data_vectors& device)
{
    const auto pages = page_levels(device);
    return std::to_string(entry.PT_Level) + ':' + std::to_string(entry.PT_index) +
           part("addr", entry.Addr) + part("buffer", entry.Buffer) +
           link_part("parent", entry.parent, pages) + link_part("child", entry.entries, pages) +
           link_part("sub", entry.PT_sub_entries, sub_levels(device)) +
           link_part("pre", entry.pre, pages) + link_part("next", entry.next, pages);
}

inline std::string told(const vidmm_vm_pte_elt3k& entry, const data_vectors& device)
{
    const auto subs = sub_levels(device);
    return std::to_string(entry.ST_Level) + ':' + std::to_string(entry.Index) +
           number_part("snoop", entry.Snoop) + number_part("segment", entry.Segment) +
           number_part("large", entry.LargePage) + part("addr", entry.Addr) +
           number_part("found", entry.found) +
           link_part("parent", entry.parent, page_levels(device)) +
           link_part("pre", entry.pre, subs) + link_part("next", entry.next, subs);
}

class PageTableDump : public testing::Test {
  protected:
    std::string path() const { return (directory_.path() / "vm_info").string(); }

    // Reads the dump at path(), appended to device_; fills status_ and output_.
    void read()
    {
        output_ = stdout_of([&] { status_ = get_pagetable_info(&device_, path().c_str()); });
    }
    // Reads a dump with this text.
    void read(const std::string& dump)
    {
        directory_.write("vm_info", dump);
        read();
    }
    // Reads it into a device without entries.
    void read_anew(const std::string& dump)
    {
        device_ = {};
        read(dump);
    }

    // The entries of a level, each told.
    Lines pages(std::size_t level) const { return all_told(*page_levels(device_)[level]); }
    Lines subs(std::size_t level) const { return all_told(*sub_levels(device_)[level]); }
    // Those of all three levels.
    Lines pages() const { return joined(pages(0), pages(1), pages(2)); }
    Lines subs() const { return joined(subs(0), subs(1), subs(2)); }

    TempDirectory directory_;
    data_vectors device_{};
    std::int32_t status_ = 42;
    std::string output_;

  private:
    template <typename Entry>
    Lines all_told(const std::vector<Entry>& entries) const
    {
        Lines lines;
        for (const Entry& entry : entries) {
            lines.push_back(told(entry, device_));
        }
        return lines;
    }

    static Lines joined(Lines all, const Lines& second, const Lines& third)
    {
        all.insert(all.end(), second.begin(), second.end());
        all.insert(all.end(), third.begin(), third.end());
        return all;
    }
};

}  // namespace nimba::test
