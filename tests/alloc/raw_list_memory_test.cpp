// SPDX-License-Identifier: MIT
// The raw list without memory for it. The program's malloc stands before the C library's.
#include "raw_list_fixture.hpp"

#include <cstddef>

namespace {

std::size_t refused_size = 0;

}  // namespace

extern "C" {
void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size);

void* __wrap_malloc(std::size_t size)
{
    return size != 0 && size == refused_size ? nullptr : __real_malloc(size);
}
}

namespace nimba::test {
namespace {

constexpr const char* kNoMemory = "allocate memory for global_allocation_raw_list fail.\n";

class RawListMemory : public RawList {
  protected:
    // Asks for page 0 while there is no memory for a list of `records` and the ten spare ones.
    void refuse(std::size_t records)
    {
        refused_size = (records + 10) * 92;
        page(0);
        refused_size = 0;
    }
};

TEST_F(RawListMemory, IsForTenRecordsMore)
{
    add_devices(45);
    page(0);
    refuse(44);
    expect_page(0, 45, 1, numbers(1, 20));
    refuse(45);
    EXPECT_EQ(status_, -1);
}

TEST_F(RawListMemory, ThatIsMissingLeavesTheBuffer)
{
    add_devices(45);
    refuse(45);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoMemory);
    expect_untouched_buffer(0);
}

TEST_F(RawListMemory, ThatIsMissingLeavesTheNewCountAndNoRecords)
{
    add_devices(30);
    page(0);
    add_devices(15, 31);
    refuse(45);
    EXPECT_EQ(status_, -1);
    for (const std::int32_t index : {1, 2, 3, -1}) {
        expect_no_such_page(index, 45);
    }
}

TEST_F(RawListMemory, ThatIsMissingIsAskedForAgain)
{
    add_devices(45);
    refuse(45);
    refuse(45);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoMemory);
    page(0);
    EXPECT_EQ(output_, "");
    expect_page(0, 45, 1, numbers(1, 20));
    page(2);
    expect_page(2, 45, 0, numbers(41, 45));
}

TEST_F(RawListMemory, ThatIsMissingIsNotTouchedByAFailedRead)
{
    add_devices(45);
    refuse(45);
    sys_kernel_debug_ID_dri_ADAPTER_path[0] = '\0';
    page(0);
    EXPECT_EQ(status_, -1);
    expect_untouched_buffer(0);
    expect_no_such_page(1, 45);
}

TEST_F(RawListMemory, ThatIsMissingForAnEmptyListIsToldToo)
{
    add_devices(30);
    page(0);
    tree_.remove_all();
    refuse(0);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoMemory);
    expect_untouched_buffer(0);
    expect_no_such_page(1, 0);
}

}  // namespace
}  // namespace nimba::test
