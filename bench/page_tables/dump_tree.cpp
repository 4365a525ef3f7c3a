// SPDX-License-Identifier: MIT
#include "bench/page_tables/dump_tree.hpp"

#include "nimba_mgmt_interface.h"

#include <unistd.h>

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

namespace nimba::bench {
namespace {

constexpr int kEntriesPerTable = 512;

// Which of `total` things fall to part `part` of `parts`: those before end_of_share, and not before
// that of the part before.
int end_of_share(int total, int parts, int part)
{
    return static_cast<int>(static_cast<long long>(total) * (part + 1) / parts);
}

// The numbers from 0 in an order without pattern.
unsigned scattered(int number)
{
    return static_cast<unsigned>(number) * 2654435761U;
}

// Writes the dump of one device, depth first: behind a page-table line first its sub-table, then
// the lines of the next level.
class DumpWriter final {
  public:
    DumpWriter(const DumpSize& size, int device) : size_{size}, page_{device * size.lines()} {}

    std::string write()
    {
        for (int part = 0; part < size_.level0; ++part) {
            page_table_line(0, part);
            write_level1(part);
        }
        return std::move(text_);
    }

  private:
    void write_level1(int part)
    {
        int index = part * kEntriesPerTable;
        while (level1_ < end_of_share(size_.level1, size_.level0, part)) {
            page_table_line(1, index);
            write_level2(index);
            ++level1_;
            ++index;
        }
    }

    void write_level2(int parent)
    {
        int index = parent * kEntriesPerTable;
        while (level2_ < end_of_share(size_.level2, size_.level1, level1_)) {
            page_table_line(2, index);
            write_sub_table();
            ++level2_;
            ++index;
        }
    }

    // A run of pages somewhere in the table; every eighth table is of large pages, which a table
    // has fewer of.
    void write_sub_table()
    {
        const int end = end_of_share(size_.sub_table, size_.level2, level2_);
        const bool large = level2_ % 8 == 0;
        const int room = (large ? kEntriesPerTable / 16 : kEntriesPerTable) - (end - sub_table_);
        int index = static_cast<int>(scattered(level2_) >> 8U) % std::max(room, 1);
        for (; sub_table_ < end; ++sub_table_) {
            fmt::format_to(
                std::back_inserter(text_), "2:{} Snoop:{} Segment:{} LargePage:{} Addr:{:x}\n",
                index++, level2_ % 2, level2_ % 5, large ? 1 : 0, scattered(++page_) & 0x7FFFF000U);
        }
    }

    void page_table_line(int level, int index)
    {
        fmt::format_to(std::back_inserter(text_), "{}:{}: entry addr:{:x}, buffer:pt{}_{}\n", level,
                       index, 0x10000000 + 0x1000 * table_++, level, index);
    }

    DumpSize size_;
    std::string text_;
    int page_;
    int table_ = 0;
    int level1_ = 0;
    int level2_ = 0;
    int sub_table_ = 0;
};

void write_node(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream node{path, std::ios::binary};
    node << text << std::flush;
    if (!node) {
        throw std::system_error{errno, std::generic_category(), path.string()};
    }
}

}  // namespace

DumpSize DumpSize::of(int sub_table_lines)
{
    return {std::max(1, sub_table_lines / 3'000), std::max(1, sub_table_lines / 300),
            std::max(1, sub_table_lines / 15), sub_table_lines};
}

std::size_t DumpSize::record_bytes() const
{
    return static_cast<std::size_t>(level0 + level1 + level2) * sizeof(vidmm_vm_pt) +
           static_cast<std::size_t>(sub_table) * sizeof(vidmm_vm_pte_elt3k);
}

DumpTree::DumpTree(std::filesystem::path directory, int devices, const DumpSize& size)
    : directory_{std::move(directory)}, size_{size}
{
    std::filesystem::create_directories(directory_ / "allocations");
    for (int device = 0; device < devices; ++device) {
        const std::filesystem::path entry =
            directory_ / "devices" / fmt::format("{:08x}", 0x03000000 + 0x1000 * device);
        std::filesystem::create_directories(entry);
        write_node(entry / "info", fmt::format("handle = {:x}\npid = {}\n", device, ::getpid()));
        dumps_.push_back(entry / "vm_info");
        write_node(dumps_.back(), DumpWriter{size, device}.write());
    }
}

DumpTree::~DumpTree()
{
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

}  // namespace nimba::bench
