// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/split.hpp"

#include "tools/smi/decimal.hpp"

#include <numeric>

namespace nimba::smi {
namespace {

constexpr unsigned kMostBits = 63;
constexpr unsigned kLargePageBits = 4;
constexpr int kLowestLevel = kPageTableLevels - 1;

AddressRange range_at(uint64_t index, unsigned shift)
{
    return {index << shift, (index + 1) << shift};
}

bool is_below(int64_t index, unsigned bits)
{
    return index >= 0 && static_cast<uint64_t>(index) < uint64_t{1} << bits;
}

}  // namespace

unsigned AddressSplit::total() const
{
    return std::accumulate(bits_.begin(), bits_.end(), 0U);
}

unsigned AddressSplit::table_shift(int level) const
{
    return std::accumulate(bits_.begin() + level + 1, bits_.end(), 0U);
}

unsigned AddressSplit::page_shift(int level, bool large) const
{
    return table_shift(level + 1) + (large && level == kLowestLevel ? kLargePageBits : 0);
}

std::optional<AddressRange> AddressSplit::table_range(int level, int64_t index) const
{
    if (level < 0 || level > kLowestLevel || !is_below(index, total() - table_shift(level))) {
        return std::nullopt;
    }
    return range_at(static_cast<uint64_t>(index), table_shift(level));
}

std::optional<AddressRange> AddressSplit::page_range(int level, int64_t table_index, int64_t index,
                                                     bool large) const
{
    const auto table = table_range(level, table_index);
    if (!table) {
        return std::nullopt;
    }
    const unsigned shift = page_shift(level, large);
    if (shift > table_shift(level) || !is_below(index, table_shift(level) - shift)) {
        return std::nullopt;
    }
    const AddressRange page = range_at(static_cast<uint64_t>(index), shift);
    return AddressRange{table->begin + page.begin, table->begin + page.end};
}

std::optional<AddressSplit> parse_split(std::string_view text)
{
    AddressSplit::Bits bits{};
    for (std::size_t i = 0; i < bits.size(); ++i) {
        const auto comma = text.find(',');
        const bool last = i + 1 == bits.size();
        const auto number = parse_number<unsigned>(text.substr(0, comma), 1, kMostBits);
        if (!number || last != (comma == std::string_view::npos)) {
            return std::nullopt;
        }
        bits.at(i) = *number;
        text.remove_prefix(last ? text.size() : comma + 1);
    }
    const AddressSplit split{bits};
    return split.total() <= kMostBits ? std::optional(split) : std::nullopt;
}

}  // namespace nimba::smi
