// SPDX-License-Identifier: MIT
#include "driver/page_table_text.hpp"

#include <fmt/compile.h>

#include <array>

namespace nimba::sim {
namespace {

constexpr uint64_t kAddressMask = 0x7FFFF000;
constexpr uint64_t kFirstTableAddress = 0x10000000;
constexpr uint64_t kMostTableAddresses = (kAddressMask - kFirstTableAddress) / kPageSize + 1;

// More than any line has, whatever its numbers.
using Line = std::array<char, 256>;

}  // namespace

void PageTableText::add_table(unsigned level, uint64_t index)
{
    const uint64_t address = kFirstTableAddress + tables_++ % kMostTableAddresses * kPageSize;
    Line line;
    text_.append(
        line.data(),
        fmt::format_to(line.data(), FMT_COMPILE("{}:{}: entry addr:{:x}, buffer:pt{}_{}\n"), level,
                       index, address, level, index));
}

void PageTableText::add_page(unsigned level, uint64_t index, const PageEntry& entry)
{
    Line line;
    text_.append(line.data(),
                 fmt::format_to(line.data(),
                                FMT_COMPILE("{}:{} Snoop:{} Segment:{} LargePage:{} Addr:{:x}\n"),
                                level, index, entry.snoop ? 1 : 0, entry.segment,
                                entry.large ? 1 : 0, entry.address & kAddressMask));
}

}  // namespace nimba::sim
