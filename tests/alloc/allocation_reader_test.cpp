// SPDX-License-Identifier: MIT
// One pass over the allocations: what is listed, in which order, and how a pass fails.
#include "allocation_reader_fixture.hpp"
#include "support/descriptor.hpp"
#include "support/messages.hpp"
#include "support/ordinary_user.hpp"
#include "support/scoped_print_callback.hpp"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <stdexcept>

namespace nimba::test {
namespace {

namespace fs = std::filesystem;

TEST_F(AllocationReader, OfNoAllocationsSucceedsWithAnEmptyList)
{
    read_once();
    EXPECT_EQ(status_, 0);
    EXPECT_TRUE(list_.empty());
    EXPECT_EQ(output_, "");
}

TEST_F(AllocationReader, AppendsTheAllocationsInListingOrder)
{
    add_numbered(5);
    for (const Names& order :
         {Names{"1", "2", "3", "4", "5"}, Names{"5", "3", "1", "2", "4"}, Names{"4"}}) {
        const ListedAs listed{order};
        list_.clear();
        read_once();
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(handles(), order);
    }
}

TEST_F(AllocationReader, FollowsTheOrderOfTheSystem)
{
    add_numbered(9);
    Names order;
    for (const auto& entry : fs::directory_iterator{tree_.allocations()}) {
        order.push_back(entry.path().filename().string());
    }
    read_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), order);
}

TEST_F(AllocationReader, AppendsToWhatIsInTheList)
{
    add_numbered(1);
    list_ = {allocation(0xa), allocation(0xb)};
    read_once();
    read_once();
    EXPECT_EQ(handles(), (Names{"a", "b", "1", "1"}));
    EXPECT_EQ(list_[0], allocation(0xa));
    EXPECT_EQ(list_[1], allocation(0xb));
}

TEST_F(AllocationReader, SkipsTheDirectoryItselfAndItsParentOnly)
{
    add_numbered(1);
    tree_.add("...", "handle=3\n");
    tree_.add(".hidden", "handle=4\n");
    tree_.add("..x", "handle=5\n");
    tree_.add("a b", "handle=6\n");
    tree_.add("%s%n", "handle=7\n");
    tree_.add(std::string(255, 'n'), "handle=8\n");
    // Read as an allocation, either of the two would be a failure.
    read_once();
    EXPECT_EQ(status_, 0);
    Names found = handles();
    std::ranges::sort(found);
    EXPECT_EQ(found, (Names{"1", "3", "4", "5", "6", "7", "8"}));
}

TEST_F(AllocationReader, SkipsTheDirectoryItselfAndItsParentWhereverTheyAreListed)
{
    add_numbered(2);
    const ListedAs listed{{"1", ".", "..", "2", ".."}};
    read_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Names{"1", "2"}));
}

TEST_F(AllocationReader, TakesAnyChipIdAndKeepsToTheSameAllocations)
{
    add_numbered(1);
    for (const std::uint32_t chip_id :
         {0U, 1U, 0x1001U, std::numeric_limits<std::uint32_t>::max()}) {
        list_.clear();
        EXPECT_EQ(get_current_allocation_data_try(list_, chip_id, 0), 0);
        EXPECT_EQ(get_current_allocation_data(list_, chip_id, 0), 0);
        EXPECT_EQ(handles(), (Names{"1", "1"}));
    }
}

TEST_F(AllocationReader, ReadsTheDriverAfreshEachTime)
{
    add_numbered(1);
    read_once();
    tree_.add("1", "handle=9\n");
    read_once();
    tree_.remove("1");
    read_once();
    EXPECT_EQ(handles(), (Names{"1", "9"}));
}

TEST_F(AllocationReader, FollowsTheDebugDirectoryOfTheCurrentAdapter)
{
    add_numbered(1);
    {
        const AllocationTree other;
        other.add("2", "handle=2\n");
        read_once();
    }
    read_once();
    EXPECT_EQ(handles(), (Names{"2", "1"}));
}

TEST_F(AllocationReader, ReadsAllocationsThatAreLinks)
{
    const TempDirectory elsewhere;
    elsewhere.write("info", "handle=7\n");
    fs::create_directory_symlink(elsewhere.path(), tree_.entry("1"));
    read_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Names{"7"}));
}

TEST_F(AllocationReader, WithoutADirectoryFails)
{
    list_ = {allocation(0xa)};
    fs::remove(tree_.allocations());
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "Error opening directory\n");
    EXPECT_EQ(handles(), (Names{"a"}));
}

TEST_F(AllocationReader, OfAFileInPlaceOfTheDirectoryFails)
{
    fs::remove(tree_.allocations());
    write_file(tree_.allocations(), "handle=1\n");
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "Error opening directory\n");
}

TEST_F(AllocationReader, OfADirectoryThatMayNotBeReadFails)
{
    add_numbered(1);
    fs::permissions(tree_.allocations(), fs::perms::none);
    {
        const OrdinaryUser user{tree_.debug_directory()};
        read_once();
    }
    fs::permissions(tree_.allocations(), fs::perms::owner_all);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "Error opening directory\n");
    EXPECT_TRUE(list_.empty());
}

TEST_F(AllocationReader, WithoutACurrentAdapterFails)
{
    sys_kernel_debug_ID_dri_ADAPTER_path[0] = '\0';
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "Error opening directory\n");
}

TEST_F(AllocationReader, EndsAtTheFirstAllocationThatVanished)
{
    add_numbered(4);
    tree_.add_without_info("gone");
    const ListedAs listed{{"1", "2", "gone", "3", "gone", "4"}};
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "Fail to read allocation info. skip...\n");
    EXPECT_EQ(handles(), (Names{"1", "2"}));
}

TEST_F(AllocationReader, EndsAtAnAllocationWhoseDirectoryVanished)
{
    add_numbered(2);
    const ListedAs listed{{"2", "gone", "1"}};
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "Fail to read allocation info. skip...\n");
    EXPECT_EQ(handles(), (Names{"2"}));
}

TEST_F(AllocationReader, EndsAtAFileInPlaceOfAnAllocation)
{
    add_numbered(2);
    write_file(tree_.entry("file"), "handle=9\n");
    const ListedAs listed{{"2", "file", "1"}};
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "Fail to read allocation info. skip...\n");
    EXPECT_EQ(handles(), (Names{"2"}));
}

TEST_F(AllocationReader, EndsAtANodeThatMayNotBeRead)
{
    add_numbered(2);
    tree_.add("closed", "handle=9\n");
    fs::permissions(tree_.entry("closed") / "info", fs::perms::none);
    {
        const OrdinaryUser user{tree_.debug_directory()};
        const ListedAs listed{{"1", "closed", "2"}};
        read_once();
    }
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "Fail to read allocation info. skip...\n");
    EXPECT_EQ(handles(), (Names{"1"}));
}

TEST_F(AllocationReader, EndsAtANodeThatIsADirectory)
{
    add_numbered(2);
    fs::create_directories(tree_.entry("odd") / "info");
    const ListedAs listed{{"1", "odd", "2"}};
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "Fail to read allocation info. skip...\n");
    EXPECT_EQ(handles(), (Names{"1"}));
}

TEST_F(AllocationReader, EndsAtANodeThatBreaksOff)
{
    add_numbered(2);
    tree_.add_without_info("broken");
    fs::create_symlink("/proc/self/mem", tree_.entry("broken") / "info");  // EIO at its start
    const ListedAs listed{{"1", "broken", "2"}};
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "Fail to read allocation info. skip...\n");
    EXPECT_EQ(handles(), (Names{"1"}));
}

TEST_F(AllocationReader, FailsWithoutAMessageWhenTheListingBreaksOff)
{
    add_numbered(3);
    const ListedAs listed{{"1", "2", "3"}};
    const BrokenListing broken{2};
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(handles(), (Names{"1", "2"}));
}

TEST_F(AllocationReader, LetsAnErrorOfAValueThroughBehindEarlierAllocations)
{
    add_numbered(2);
    tree_.add("odd", "handle=none\n");
    const ListedAs listed{{"1", "odd", "2"}};
    EXPECT_THROW(read_once(), std::invalid_argument);
    EXPECT_EQ(handles(), (Names{"1"}));
    EXPECT_THROW(read(), std::invalid_argument);
    EXPECT_EQ(handles(), (Names{"1", "1"}));
    EXPECT_EQ(take_pauses(), Pauses{});
}

TEST_F(AllocationReader, LeavesNoDescriptorOpen)
{
    add_numbered(3);
    const auto before = open_descriptors();
    read_once();
    EXPECT_EQ(open_descriptors(), before);
    tree_.add_without_info("gone");
    read_once();
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(open_descriptors(), before);
    tree_.remove("gone");
    tree_.add("odd", "handle=80000000\n");
    EXPECT_THROW(read(), std::out_of_range);
    EXPECT_EQ(open_descriptors(), before);
    tree_.remove("odd");
    fs::create_directories(tree_.entry("odd") / "info");
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(open_descriptors(), before);
    tree_.remove_all();
    fs::remove(tree_.allocations());
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(AllocationReader, LeavesNoDescriptorOpenWhenTheListingBreaksOff)
{
    add_numbered(3);
    const auto before = open_descriptors();
    {
        const BrokenListing broken{2};
        read_once();
    }
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(AllocationReader, DoesNotUseThePrintCallback)
{
    const ScopedPrintCallback callback{keep_message};
    take_messages();
    tree_.add_without_info("gone");
    read_once();
    EXPECT_EQ(output_, "Fail to read allocation info. skip...\n");
    fs::remove_all(tree_.allocations());
    read_once();
    EXPECT_EQ(output_, "Error opening directory\n");
    EXPECT_EQ(take_messages(), Texts{});
}

TEST_F(AllocationReader, ReadsAHundredThousandAllocations)
{
    tree_.add("1", "handle=1f\nsize=4096\n");
    tree_.add("2", "handle=2f\nsize=8192\n");
    Names names(100000, "1");
    names.back() = "2";
    const ListedAs listed{names};
    read();
    EXPECT_EQ(status_, 0);
    ASSERT_EQ(list_.size(), 100000U);
    Record record = blank();
    record.handle = 0x1f;
    record.size = 4096;
    EXPECT_EQ(std::ranges::count(list_, record), 99999);
    record.handle = 0x2f;
    record.size = 8192;
    EXPECT_EQ(list_.back(), record);
}

}  // namespace
}  // namespace nimba::test
