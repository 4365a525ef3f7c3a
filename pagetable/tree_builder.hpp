// SPDX-License-Identifier: MIT
// Puts the entries of a dump into the arrays of a device and links them.
#pragma once

#include "nimba_mgmt_interface.h"
#include "pagetable/dump_line.hpp"

namespace nimba {

// For one dump; the device may hold entries of others.
class TreeBuilder final {
  public:
    explicit TreeBuilder(data_vectors& device) : device_{device} {}

    void add(const PageTableLine& line);
    void add(const SubTableLine& line);

  private:
    void append_child(const PageTableLine& line);
    void append_sibling(const PageTableLine& line);
    vidmm_vm_pt& append(const PageTableLine& line);
    vidmm_vm_pte_elt3k& append(const SubTableLine& line);

    data_vectors& device_;
    // Which level the last page-table line had; none before the first.
    bool last_was_level0_ = false;
    bool last_was_level1_ = false;
    bool last_was_level2_ = false;
    bool last_was_sub_table_ = false;  // of the lines of both kinds
    int32_t large_page_ = 0;           // of the last sub-table line that told it
};

}  // namespace nimba
