// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace nimba::sim {

inline constexpr uint64_t kPageSize = 4096;

// An entry of a sub-table.
struct PageEntry {
    bool snoop = false;
    int64_t segment = 0;
    bool large = false;
    uint64_t address = 0;  // physical; what is beyond 2 GiB begins at 0 again
};

// The text of a dump of page tables, line by line.
class PageTableText {
  public:
    // A page-table entry; `index` counts those of its level from the beginning of the address
    // space. It has the next physical address for a table.
    void add_table(unsigned level, uint64_t index);

    // An entry of the sub-table of the page-table entry before; `index` counts from its beginning.
    void add_page(unsigned level, uint64_t index, const PageEntry& entry);

    // The text, which then is empty.
    std::string take() { return std::exchange(text_, {}); }

  private:
    std::string text_;
    uint64_t tables_ = 0;
};

}  // namespace nimba::sim
