// SPDX-License-Identifier: MIT
#include "tools/smi/alloc/listing.hpp"

#include "memory_records.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

MemorySnapshot snapshot()
{
    MemorySnapshot result;
    result.adapters = {memory_of(kFirstSlot,
                                 {allocation(0x80000001, 17, 0x80000000, 1),
                                  allocation(2, 16, 100, 0), allocation(3, 30, 100, -1)},
                                 {{16, 20, "b/maze"}, {16, 21, "a/MAZE"}, {17, 5, "editor"}}),
                       memory_of(kSecondSlot, {allocation(9, 16, 50, 0)}, {{16, 20, "b/maze"}})};
    return result;
}

std::vector<int32_t> handles(const AllocOptions& options,
                             std::optional<std::size_t> top = std::nullopt)
{
    const MemorySnapshot all = snapshot();
    std::vector<int32_t> result;
    for (const ListedAllocation& row : list_allocations(all, options, top).rows) {
        result.push_back(row.allocation->handle);
    }
    return result;
}

constexpr int32_t kBig = INT32_MIN + 1;

TEST(Listing, ComesLargestFirstByDefault)
{
    EXPECT_EQ(handles({}), (std::vector<int32_t>{kBig, 2, 3, 9}));
    EXPECT_EQ(handles({}, 2), (std::vector<int32_t>{kBig, 2}));
}

TEST(Listing, SortsByEachKey)
{
    const auto sorted = [](SortKey key, bool descending = false) {
        return handles({{key, descending}, {}});
    };
    EXPECT_EQ(sorted(SortKey::kHandle), (std::vector<int32_t>{2, 3, 9, kBig}));
    EXPECT_EQ(sorted(SortKey::kHandle, true), (std::vector<int32_t>{kBig, 9, 3, 2}));
    EXPECT_EQ(sorted(SortKey::kSlot), (std::vector<int32_t>{2, kBig, 3, 9}));
    EXPECT_EQ(sorted(SortKey::kDevice), (std::vector<int32_t>{2, 9, kBig, 3}));
    EXPECT_EQ(sorted(SortKey::kPid), (std::vector<int32_t>{3, kBig, 2, 9}));
    EXPECT_EQ(sorted(SortKey::kProcess), (std::vector<int32_t>{3, 2, 9, kBig}));
    EXPECT_EQ(sorted(SortKey::kSize), (std::vector<int32_t>{9, 2, 3, kBig}));
    EXPECT_EQ(sorted(SortKey::kSegment, true), (std::vector<int32_t>{kBig, 2, 9, 3}));
}

TEST(Listing, SortsByFieldsOfTheShape)
{
    MemorySnapshot all;
    all.adapters = {memory_of(kFirstSlot, {allocation(1, 1, 1), allocation(2, 1, 1)}, {})};
    auto& list = all.adapters[0].allocations;
    list[1].width = -1;
    list[1].height = -1;
    list[1].hw_format = -1;
    list[1].at_type = -1;
    for (const SortKey key :
         {SortKey::kWidth, SortKey::kHeight, SortKey::kFormat, SortKey::kType}) {
        const Listing listing = list_allocations(all, {{key, false}, {}}, std::nullopt);
        EXPECT_EQ(listing.rows[0].allocation->handle, 2) << static_cast<int>(key);
    }
}

TEST(Listing, FiltersByProcessDeviceSegmentAndSize)
{
    const auto filtered = [](const AllocationFilter& filter) { return handles({{}, filter}); };
    EXPECT_EQ(filtered({.pid = 21}), (std::vector<int32_t>{2}));
    EXPECT_EQ(filtered({.pid = 20}), (std::vector<int32_t>{2, 9}));
    EXPECT_EQ(filtered({.process = "maze"}), (std::vector<int32_t>{2, 9}));
    EXPECT_EQ(filtered({.pid = 20, .process = "MAZE"}), (std::vector<int32_t>{}));
    EXPECT_EQ(filtered({.process = ""}), (std::vector<int32_t>{kBig, 2, 9}));
    EXPECT_EQ(filtered({.device = 30}), (std::vector<int32_t>{3}));
    EXPECT_EQ(filtered({.segment = 0}), (std::vector<int32_t>{2, 9}));
    EXPECT_EQ(filtered({.segment = -1}), (std::vector<int32_t>{3}));
    EXPECT_EQ(filtered({.min_size = 100}), (std::vector<int32_t>{kBig, 2, 3}));
    EXPECT_EQ(filtered({.min_size = 2147483649}), (std::vector<int32_t>{}));
}

TEST(Listing, CountsWhatMatchesAndAll)
{
    const MemorySnapshot all = snapshot();
    const Listing listing = list_allocations(all, {{}, {.min_size = 100}}, 1);
    EXPECT_EQ(listing.rows.size(), 1U);
    EXPECT_EQ(listing.matched, (AllocationCount{3, 2147483848}));
    EXPECT_EQ(listing.all, (AllocationCount{4, 2147483898}));
}

}  // namespace
}  // namespace nimba::smi
