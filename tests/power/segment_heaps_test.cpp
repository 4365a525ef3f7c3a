// SPDX-License-Identifier: MIT
// Segments as the driver's heaps tell them.
#include "segment_fixture.hpp"
#include "support/captured_stdout.hpp"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>

namespace nimba::test {
namespace {

constexpr std::uint32_t kUnwritten = 0xEEEEEEEE;

class SegmentHeaps : public SegmentTest {
  protected:
    // Reads the heaps over a record that is full of kUnwritten; fills status_ and output_.
    void read(std::int32_t unused = 0)
    {
        std::memset(&info_, 0xEE, sizeof info_);
        output_ = stdout_of([&] { status_ = gpuinfo_get_kmd_segment_info(&info_, unused); });
    }
    // Segments with these values in front, and the others unwritten.
    static SegmentWords written(std::initializer_list<std::uint32_t> values)
    {
        SegmentWords words{};
        words.fill(kUnwritten);
        std::ranges::copy(values, words.begin());
        return words;
    }

    std::int32_t status_ = 42;
    std::string output_;
};

TEST_F(SegmentHeaps, AreTheFirstFourSegmentsInMebibytes)
{
    four_heaps();
    read();
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(total_in(info_), written({1, 256, 512, 1024, 0}));
    EXPECT_EQ(used_in(info_), written({0, 16, 32, 64, 0}));
    EXPECT_EQ(take_messages(), Texts{});
}

TEST_F(SegmentHeaps, DoNotDependOnTheSecondArgument)
{
    four_heaps();
    for (const std::int32_t unused : {-1, 1, 2147483647}) {
        read(unused);
        EXPECT_EQ(status_, 1);
        EXPECT_EQ(total_in(info_), written({1, 256, 512, 1024, 0}));
    }
}

TEST_F(SegmentHeaps, AreRoundedDown)
{
    four_heaps();
    heap(kLocal, "2097151", "1048575");
    read();
    EXPECT_EQ(total_in(info_), written({1, 1, 512, 1024, 0}));
    EXPECT_EQ(used_in(info_), written({0, 0, 32, 64, 0}));
}

TEST_F(SegmentHeaps, AreCutToThirtyTwoBitsBeforeTheyAreScaled)
{
    heap(kInvalid, "4294967296", "4294967295");
    heap(kLocal, "4298113024", "4296015872");
    heap(kUnsnoop, "18446744073709551615", "18446744073709551615");
    heap(kSnoop, "8589934592", "1099511627776");
    read();
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), written({0, 3, 4095, 0, 0}));
    EXPECT_EQ(used_in(info_), written({4095, 1, 4095, 0, 0}));
}

TEST_F(SegmentHeaps, AreZeroWithoutANumberBehindTheKey)
{
    four_heaps();
    heap(kLocal, "all", "16777216");
    heap(kUnsnoop, "536870912", "");
    heap_text(kSnoop, "KMD used segment memory:  \nTotal segment size:  1073741824\n");
    read();
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), written({1, 0, 512, 1024, 0}));
    EXPECT_EQ(used_in(info_), written({0, 16, 0, 0, 0}));
}

TEST_F(SegmentHeaps, MayHaveOtherTextAroundTheirSizes)
{
    four_heaps();
    heap_text(kUnsnoop,
              "Heap 2\nKMD used segment memory:  7340032 bytes\n"
              "UMD used segment memory:  1048576 bytes\n"
              "Total segment size:   9437184 bytes\n");
    read();
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), written({1, 256, 9, 1024, 0}));
    EXPECT_EQ(used_in(info_), written({0, 16, 7, 64, 0}));
}

TEST_F(SegmentHeaps, CannotBeReadWithoutTheirDirectory)
{
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "Error opening directory\n");
    EXPECT_EQ(total_in(info_), written({}));
    EXPECT_EQ(used_in(info_), written({}));
    EXPECT_EQ(take_messages(), Texts{});
}

TEST_F(SegmentHeaps, EndAtTheFirstWithoutATotalSize)
{
    four_heaps();
    heap_text(kInvalid, "Segment size:  1048576\nKMD used segment memory:  1048576\n");
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(total_in(info_), written({}));
    EXPECT_EQ(used_in(info_), written({}));
}

TEST_F(SegmentHeaps, EndAtTheFirstWithoutAUsedSize)
{
    four_heaps();
    heap_text(kInvalid, "Total segment size:  2097152\n");
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), written({2}));
    EXPECT_EQ(used_in(info_), written({}));
}

// A text that covers what the heaps before it leave, with neither size.
const std::string kNoSizes(100, '.');
const std::string kTotalAlone = "Total segment size:  7340032\n" + kNoSizes;

TEST_F(SegmentHeaps, KeepWhatWasReadBeforeATotalSizeIsMissing)
{
    four_heaps();
    heap_text(kSnoop, kNoSizes);
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), written({1, 256, 512}));
    EXPECT_EQ(used_in(info_), written({0, 16, 32}));
    heap_text(kUnsnoop, kNoSizes);
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), written({1, 256}));
    EXPECT_EQ(used_in(info_), written({0, 16}));
    heap_text(kLocal, kNoSizes);
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), written({1}));
    EXPECT_EQ(used_in(info_), written({0}));
}

TEST_F(SegmentHeaps, KeepWhatWasReadBeforeAUsedSizeIsMissing)
{
    four_heaps();
    heap_text(kSnoop, kTotalAlone);
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), written({1, 256, 512, 7}));
    EXPECT_EQ(used_in(info_), written({0, 16, 32}));
    heap_text(kUnsnoop, kTotalAlone);
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), written({1, 256, 7}));
    EXPECT_EQ(used_in(info_), written({0, 16}));
    heap_text(kLocal, kTotalAlone);
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), written({1, 7}));
    EXPECT_EQ(used_in(info_), written({0}));
}

TEST_F(SegmentHeaps, NeedTwoBlanksBehindTheColon)
{
    four_heaps();
    heap_text(kInvalid, "Total segment size: 1048576\nKMD used segment memory:  0\n");
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), written({}));
    heap_text(kInvalid, "Total segment size:  1048576\nKMD used segment memory: 0\n");
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), written({1}));
    EXPECT_EQ(used_in(info_), written({}));
}

TEST_F(SegmentHeaps, WithoutANodeShowTheTextOfTheHeapBefore)
{
    four_heaps();
    std::filesystem::remove(heap_node(kUnsnoop));
    read();
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), written({1, 256, 256, 1024, 0}));
    EXPECT_EQ(used_in(info_), written({0, 16, 16, 64, 0}));
    std::filesystem::remove_all(heaps() / kSnoop);
    read();
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), written({1, 256, 256, 256, 0}));
    EXPECT_EQ(used_in(info_), written({0, 16, 16, 16, 0}));
}

TEST_F(SegmentHeaps, WithoutTheFirstNodeFail)
{
    four_heaps();
    std::filesystem::remove(heap_node(kInvalid));
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(total_in(info_), written({}));
}

TEST_F(SegmentHeaps, WithAShorterTextShowTheRestOfTheTextBefore)
{
    four_heaps();
    heap(kInvalid, "104857600", "3145728");
    heap_text(kLocal, "Total segment size:  2097152");  // "00\n..." of the heap before follows
    heap_text(kUnsnoop, "Total segment size:  4194304\n");
    heap_text(kSnoop, "");
    read();
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), written({100, 200, 4, 4, 0}));
    EXPECT_EQ(used_in(info_), written({3, 3, 3, 3, 0}));
}

TEST_F(SegmentHeaps, ShowNothingOfAnEarlierReading)
{
    four_heaps();
    read();
    heap_text(kInvalid, "");
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), written({}));
    EXPECT_EQ(used_in(info_), written({}));
}

TEST_F(SegmentHeaps, ShowNothingBehindTheFirst512BytesOfANode)
{
    const std::string total = "Total segment size:  1048576\n";       // 29 bytes
    const std::string used = "KMD used segment memory:  2097152999";  // its first 33 are of 2 MiB
    four_heaps();
    heap_text(kInvalid, total + std::string(450, '.') + used + "\n");
    read();
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), written({1, 256, 512, 1024, 0}));
    EXPECT_EQ(used_in(info_), written({2, 16, 32, 64, 0}));
    heap_text(kInvalid, total + std::string(483, '.') + used + "\n");
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), written({1}));
    EXPECT_EQ(used_in(info_), written({}));
}

TEST_F(SegmentHeaps, LeaveNoDescriptorOpen)
{
    four_heaps();
    read();
    const auto before = open_descriptors();
    read();
    EXPECT_EQ(open_descriptors(), before);
    heap_text(kSnoop, kNoSizes);
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(open_descriptors(), before);
    heap_text(kInvalid, kTotalAlone);
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(open_descriptors(), before);
    std::filesystem::remove_all(heaps());
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(SegmentHeaps, NeedNoCurrentAdapter)
{
    four_heaps();
    pCurrent_gpu_infos = nullptr;
    read();
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), written({1, 256, 512, 1024, 0}));
}

}  // namespace
}  // namespace nimba::test
