// SPDX-License-Identifier: MIT
// The leak detector without memory. This program's operator new stands before the standard one.
#include "leak_records.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

// How many more allocations there is memory for; negative when there is no limit.
int allocations_left = -1;

}  // namespace

void* operator new(std::size_t size)
{
    if (allocations_left == 0) {
        throw std::bad_alloc{};
    }
    allocations_left -= allocations_left > 0 ? 1 : 0;
    if (void* block = std::malloc(size)) {
        return block;
    }
    throw std::bad_alloc{};
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    std::free(block);
}

namespace nimba::test {
namespace {

// Merges with memory for so many allocations. Returns whether that was enough.
bool merge_with(int allocations, Records& snapshot, Records& kept)
{
    bool enough = true;
    allocations_left = allocations;
    try {
        compare_memleak_list(snapshot, kept);
    } catch (const std::bad_alloc&) {
        enough = false;
    }
    allocations_left = -1;
    return enough;
}

// Merges with ever more memory until it is enough. Expects that a merge without enough of it
// changes neither list, and that there is one. Returns the kept list of the last one.
Records merge_at_last(const Records& snapshot, const Records& kept)
{
    for (int allocations = 0; allocations < 1'000; ++allocations) {
        SCOPED_TRACE("memory for " + std::to_string(allocations) + " allocations");
        Records new_snapshot = snapshot;
        Records new_kept = kept;
        if (merge_with(allocations, new_snapshot, new_kept)) {
            EXPECT_GT(allocations, 0);
            return new_kept;
        }
        EXPECT_EQ(new_snapshot, snapshot);
        EXPECT_EQ(new_kept, kept);
    }
    ADD_FAILURE() << "no memory is enough";
    return {};
}

TEST(LeakMergeWithoutMemory, ChangesNothingWhenThereIsNoListYet)
{
    EXPECT_EQ(merge_at_last({allocation(1), allocation(2)}, {}),
              (Records{allocation(1), allocation(2)}));
}

TEST(LeakMergeWithoutMemory, ChangesNothingWhenTheListGrows)
{
    EXPECT_EQ(merge_at_last({allocation(1), allocation(2), allocation(3), allocation(4),
                             allocation(5), allocation(6)},
                            {allocation(1), allocation(3), allocation(7)}),
              (Records{with_hits(allocation(1), 2), with_hits(allocation(3), 2), allocation(2),
                       allocation(4), allocation(5), allocation(6)}));
}

TEST(LeakMergeWithoutMemory, ChangesNothingWhenTheListShrinks)
{
    EXPECT_EQ(merge_at_last({allocation(1), allocation(4), allocation(5)},
                            {allocation(1), allocation(2), allocation(3), allocation(4)}),
              (Records{with_hits(allocation(1), 2), with_hits(allocation(4), 2), allocation(5)}));
}

TEST(LeakMergeWithoutMemory, ChangesNothingWhenAllOfTheListIsReplaced)
{
    EXPECT_EQ(merge_at_last({allocation(3), allocation(4), allocation(5)},
                            {allocation(1), allocation(2)}),
              (Records{allocation(3), allocation(4), allocation(5)}));
}

}  // namespace
}  // namespace nimba::test
