// SPDX-License-Identifier: MIT
#include "driver/synthetic_tables.hpp"

#include <algorithm>

namespace nimba::sim {
namespace {

constexpr uint64_t kLargePages = 32;  // in a sub-table
constexpr uint64_t kSmallPages = 512;
constexpr uint64_t kLargePageSize = uint64_t{64} << 10U;
constexpr uint64_t kTableSpan = uint64_t{2} << 20U;

// Where part `index` of `parts` equal parts of `total` begins.
uint64_t part_begin(uint64_t index, uint64_t parts, uint64_t total)
{
    return parts == 0 ? 0 : index * total / parts;
}

// Whether one of so many percent, spread evenly, is the one of that number.
bool is_chosen(uint64_t number, uint64_t percent)
{
    return (number + 1) * percent / 100 > number * percent / 100;
}

uint64_t large_tables(const SyntheticTables& tables)
{
    return tables.level2 * tables.large_pages / 100;
}

// Large pages are few in a sub-table: the other sub-tables take what does not fit.
uint64_t large_entries(const SyntheticTables& tables)
{
    const uint64_t large = large_tables(tables);
    return std::min(large * kLargePages, part_begin(large, tables.level2, tables.entries));
}

class Filling {
  public:
    Filling(const SyntheticTables& tables, PageTableText& text) : tables_{tables}, text_{text} {}

    // The entries of the next sub-table of level 2.
    void add_entries();

  private:
    const SyntheticTables& tables_;
    PageTableText& text_;
    uint64_t table_ = 0;
    uint64_t entry_ = 0;
};

void Filling::add_entries()
{
    const bool is_large = is_chosen(table_, tables_.large_pages);
    const uint64_t larges = large_tables(tables_);
    const uint64_t large = table_ * tables_.large_pages / 100;  // those before this one
    const uint64_t number = is_large ? large : table_ - large;
    const uint64_t parts = is_large ? larges : tables_.level2 - larges;
    const uint64_t total =
        is_large ? large_entries(tables_) : tables_.entries - large_entries(tables_);
    const uint64_t count = part_begin(number + 1, parts, total) - part_begin(number, parts, total);
    const int64_t segment = tables_.segments[table_ % tables_.segments.size()];
    for (uint64_t index = 0; index < count; ++index) {
        text_.add_page(2, index,
                       {is_chosen(entry_++, tables_.snooping), segment, is_large,
                        table_ * kTableSpan + index * (is_large ? kLargePageSize : kPageSize)});
    }
    ++table_;
}

}  // namespace

uint64_t most_entries(const SyntheticTables& tables)
{
    const uint64_t large = large_tables(tables);
    return large * kLargePages + (tables.level2 - large) * kSmallPages;
}

void add_synthetic_tables(const SyntheticTables& tables, PageTableText& text)
{
    Filling filling{tables, text};
    for (uint64_t level0 = 0; level0 < tables.level0; ++level0) {
        uint64_t index0 = kFirstSyntheticLevel0 + level0;
        text.add_table(0, index0);
        uint64_t index1 = index0 * kTablesPerTable;
        const uint64_t end1 = part_begin(level0 + 1, tables.level0, tables.level1);
        for (uint64_t level1 = part_begin(level0, tables.level0, tables.level1); level1 < end1;
             ++level1, ++index1) {
            text.add_table(1, index1);
            uint64_t index2 = index1 * kTablesPerTable;
            const uint64_t end2 = part_begin(level1 + 1, tables.level1, tables.level2);
            for (uint64_t level2 = part_begin(level1, tables.level1, tables.level2); level2 < end2;
                 ++level2, ++index2) {
                text.add_table(2, index2);
                filling.add_entries();
            }
        }
    }
}

}  // namespace nimba::sim
