// SPDX-License-Identifier: MIT
#include "allocation_values_reader.hpp"

#include "message.hpp"

#include <limits>
#include <utility>

namespace nimba::sim {
namespace {

struct Range {
    int64_t least;
    int64_t greatest;
    int64_t fallback = 0;
};

constexpr int64_t kPage = 4096;
constexpr int64_t kGreatestLength = int64_t{1} << 20U;
constexpr int64_t kGreatestSize = int64_t{1} << 47U;
constexpr Range kHandle{0, kGreatestHandle};
constexpr Range kLength{0, kGreatestLength, 256};
constexpr Range kAddress{0, std::numeric_limits<int64_t>::max()};
constexpr Range kCode{std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()};

Range range_of(AllocationKey key)
{
    switch (key) {
        case AllocationKey::kHandle:
        case AllocationKey::kDevice:
            return kHandle;
        case AllocationKey::kWidth:
        case AllocationKey::kHeight:
            return kLength;
        case AllocationKey::kBitCnt:
            return {0, 1024, 32};
        case AllocationKey::kPitch:
            return {0, std::numeric_limits<int32_t>::max()};
        case AllocationKey::kSize:
            return {0, kGreatestSize};
        case AllocationKey::kGpuVirtAddr:
        case AllocationKey::kFbOffset:
            return kAddress;
        default:
            return kCode;
    }
}

// What follows from other values, where the file says nothing.
NodeValue default_value(AllocationKey key, const AllocationValues& values)
{
    const auto number = [&](AllocationKey other) { return values.number(other); };
    switch (key) {
        case AllocationKey::kHandle:
        case AllocationKey::kDevice:
        case AllocationKey::kSegmentid:
        case AllocationKey::kGpuVirtAddr:
            return {};
        case AllocationKey::kPitch:
            return number(AllocationKey::kWidth) * number(AllocationKey::kBitCnt) / 8;
        case AllocationKey::kSize:
            return (number(AllocationKey::kPitch) * number(AllocationKey::kHeight) + kPage - 1) /
                   kPage * kPage;
        default:
            return range_of(key).fallback;
    }
}

void read_value(const TableReader& reader, AllocationKey key, AllocationValues& values)
{
    const std::string_view name = kAllocationKeyNames[static_cast<std::size_t>(key)];
    const Range range = range_of(key);
    values[key] = reader.has(name) ? read_node_value(reader, name, range.least, range.greatest)
                                   : default_value(key, values);
}

}  // namespace

NodeValue read_node_value(const TableReader& reader, std::string_view key, int64_t least,
                          int64_t greatest)
{
    auto value = reader.integer_or_text(key, least, greatest);
    if (const auto* text = std::get_if<std::string>(&value);
        text != nullptr && has_control_characters(*text)) {
        reader.reject(key, "a number, or a text of one line, without control characters");
    }
    return std::visit([](auto& read) { return NodeValue{std::move(read)}; }, value);
}

AllocationValues read_allocation_values(const TableReader& reader)
{
    AllocationValues values;
    // A picture's size follows from its pitch, and that from its width and depth.
    read_value(reader, AllocationKey::kBitCnt, values);
    for (std::size_t index = 0; index < kAllocationKeyCount; ++index) {
        read_value(reader, static_cast<AllocationKey>(index), values);
    }
    return values;
}

}  // namespace nimba::sim
