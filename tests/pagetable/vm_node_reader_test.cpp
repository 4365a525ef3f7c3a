// SPDX-License-Identifier: MIT
// One pass over the virtual-memory nodes of all allocations.
#include "support/descriptor.hpp"
#include "vm_node_fixture.hpp"

namespace nimba::test {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

TEST_F(VmNodeReader, TellsTheTextsOfANodeAsTheyStand)
{
    add("8f01",
        "=====vm node info=====\n"
        "device_pid = 4711\n"
        "device_pname = some app \n"
        "gpu_va = 0x1f000\n"
        "size = 2000\n"
        "flags = 3\n");
    read_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(list_, (VmNodes{{"4711", "some app ", "8f01", "0x1f000", "2000"}}));
}

TEST_F(VmNodeReader, FindsTheKeysInAnyOrder)
{
    add("a", "=====vm node info=====\nsize = 4\ngpu_va = 3\ndevice_pname = 2\ndevice_pid = 1\n");
    read_once();
    EXPECT_EQ(list_, (VmNodes{{"1", "2", "a", "3", "4"}}));
}

TEST_F(VmNodeReader, HasNoRecordOfAnEmptyDirectory)
{
    read_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_TRUE(list_.empty());
}

TEST_F(VmNodeReader, HasARecordOfEachBlockInOrder)
{
    add("a", block_at("1") + block_at("2") + block_at("3"));
    read_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(list_, (VmNodes{{"7", "app", "a", "1", "1000"},
                              {"7", "app", "a", "2", "1000"},
                              {"7", "app", "a", "3", "1000"}}));
}

TEST_F(VmNodeReader, HasNoRecordOfANodeWithoutAMarker)
{
    add("a", "");
    add("b", "device_pid = 7\ngpu_va = 1\n");
    read_once();
    EXPECT_EQ(status_, 0);
    EXPECT_TRUE(list_.empty());
}

TEST_F(VmNodeReader, LeavesTheTextOfAMissingKeyEmpty)
{
    add("a", "=====vm node info=====\ndevice_pid = 7\ndevice_pname = app\nsize = 1000\n");
    read_once();
    EXPECT_EQ(list_, (VmNodes{{"7", "app", "a", "", "1000"}}));
}

TEST_F(VmNodeReader, HasARecordOfABlockWithoutAnyKey)
{
    add("a", "=====vm node info=====");
    read_once();
    EXPECT_EQ(list_, (VmNodes{{"", "", "a", "", ""}}));
}

TEST_F(VmNodeReader, DoesNotTakeAKeyFromTheBlockBehind)
{
    add("a", "=====vm node info=====\nsize = 5\n" + block_at("2"));
    read_once();
    EXPECT_EQ(list_, (VmNodes{{"", "", "a", "", "5"}, {"7", "app", "a", "2", "1000"}}));
}

TEST_F(VmNodeReader, MatchesAKeyWithinALongerOneThatStandsEarlier)
{
    add("a", "=====vm node info=====\nreserved_size = 9\nsize = 5\n");
    read_once();
    EXPECT_EQ(list_, (VmNodes{{"", "", "a", "", "9"}}));
}

TEST_F(VmNodeReader, KeepsCarriageReturnsAndNulBytes)
{
    add("a",
        "=====vm node info=====\r\ndevice_pid = 7\r\ndevice_pname = a\0b\r\ngpu_va = 1\r\n"
        "size = 2\r\n"s);
    read_once();
    EXPECT_EQ(list_, (VmNodes{{"7\r", "a\0b\r"s, "a", "1\r", "2\r"}}));
}

TEST_F(VmNodeReader, ReadsTextsAndNamesOfAnyLength)
{
    const std::string name(255, 'e');
    const std::string process(70'000, 'p');
    add(name, "=====vm node info=====\ndevice_pname = " + process + "\nsize = 1");
    read_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(list_, (VmNodes{{"", process, name, "", "1"}}));
}

TEST_F(VmNodeReader, FindsMarkersAndKeysAcrossAnyBoundaryOfABuffer)
{
    for (std::size_t padding = 4'060; padding < 4'110; ++padding) {
        list_.clear();
        add("a", std::string(padding, 'x') + block_at("12345678"));
        read_once();
        ASSERT_EQ(list_, (VmNodes{{"7", "app", "a", "12345678", "1000"}})) << padding;
    }
}

TEST_F(VmNodeReader, ReadsAllocationsInListingOrder)
{
    for (const char* name : {"a", "b", "c"}) {
        add(name, block_at("1"));
    }
    const ListedAs listed{{".", "c", "a", "..", "b"}};
    read_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Names{"c", "a", "b"}));
}

TEST_F(VmNodeReader, SkipsNoOtherNameThatBeginsWithADot)
{
    add(".hidden", block_at("1"));
    add("...", block_at("1"));
    const ListedAs listed{{".", "..", ".hidden", "..."}};
    read_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Names{".hidden", "..."}));
}

TEST_F(VmNodeReader, AppendsToTheList)
{
    add("a", block_at("1"));
    list_ = {{"p", "n", "h", "v", "s"}};
    read_once();
    EXPECT_EQ(list_, (VmNodes{{"p", "n", "h", "v", "s"}, {"7", "app", "a", "1", "1000"}}));
}

TEST_F(VmNodeReader, FailsSilentlyWithoutTheDirectory)
{
    fs::remove(allocations());
    list_ = {{"p", "n", "h", "v", "s"}};
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(list_, (VmNodes{{"p", "n", "h", "v", "s"}}));
}

TEST_F(VmNodeReader, FailsAtAnAllocationWithoutANodeAndKeepsThoseBefore)
{
    add("a", block_at("1"));
    add_without_node("b");
    add("c", block_at("1"));
    const ListedAs listed{{"a", "b", "c"}};
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoVmNode);
    EXPECT_EQ(handles(), (Names{"a"}));
    EXPECT_EQ(take_pauses(), Pauses{});
}

TEST_F(VmNodeReader, FailsAtAnAllocationThatHasGone)
{
    add("a", block_at("1"));
    const ListedAs listed{{"a", "gone"}};
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoVmNode);
    EXPECT_EQ(handles(), (Names{"a"}));
}

TEST_F(VmNodeReader, TakesAFileForAnAllocationToo)
{
    write_file(allocations() / "file", block_at("1"));
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoVmNode);
    EXPECT_TRUE(list_.empty());
}

TEST_F(VmNodeReader, ReadsNothingOfTheNodeThatNumericRecordsComeFrom)
{
    add("a", block_at("1"));
    write_file(allocations() / "a" / "info", block_at("2"));
    read_once();
    EXPECT_EQ(list_, (VmNodes{{"7", "app", "a", "1", "1000"}}));
}

TEST_F(VmNodeReader, ReadsManyAllocations)
{
    for (int number = 0; number < 150; ++number) {
        add(std::to_string(number), block_at("1") + block_at("2"));
    }
    read_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(list_.size(), 300);
}

TEST_F(VmNodeReader, LeavesNoDescriptorOpen)
{
    const auto before = open_descriptors();
    add("a", block_at("1"));
    read_once();
    EXPECT_EQ(open_descriptors(), before);
    add_without_node("b");
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(open_descriptors(), before);
    fs::remove_all(allocations());
    read_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(open_descriptors(), before);
}

}  // namespace
}  // namespace nimba::test
