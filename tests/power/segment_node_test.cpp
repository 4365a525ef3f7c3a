// SPDX-License-Identifier: MIT
// Segments as the driver's node "segment_info" tells them.
#include "segment_fixture.hpp"

#include <cstdint>
#include <string>

namespace nimba::test {
namespace {

class SegmentNode : public SegmentTest {
  protected:
    // Reads the segments of a node with this text into info_; fills status_.
    void read(const std::string& text)
    {
        info("segment_info", text);
        read();
    }
    void read()
    {
        std::memset(&guarded_.info, 0, sizeof guarded_.info);
        status_ = gpuinfo_get_segment_info(&guarded_.info);
        info_ = guarded_.info;
        EXPECT_EQ(guarded_.guard, 77U);
    }

    struct {
        SegmentInfo info{};
        std::uint32_t guard = 77;
    } guarded_;
    std::int32_t status_ = 42;
};

TEST_F(SegmentNode, TellsOneSegmentDividedByThousand)
{
    read("segment_id:0,total_size:8388608,used_size:4096\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{8388}));
    EXPECT_EQ(used_in(info_), (SegmentWords{4}));
}

TEST_F(SegmentNode, DividesTowardZero)
{
    read(
        "segment_id:0,total_size:1999,used_size:999\n"
        "segment_id:1,total_size:1000,used_size:1\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 1}));
    EXPECT_EQ(used_in(info_), (SegmentWords{0, 0}));
}

TEST_F(SegmentNode, TellsFiveSegmentsWithoutASum)
{
    read(
        "segment_id:0,total_size:1000,used_size:1000\n"
        "segment_id:1,total_size:2000,used_size:1000\n"
        "segment_id:2,total_size:3000,used_size:2000\n"
        "segment_id:3,total_size:4000,used_size:3000\n"
        "segment_id:4,total_size:5000,used_size:4000\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 2, 3, 4, 5}));
    EXPECT_EQ(used_in(info_), (SegmentWords{1, 1, 2, 3, 4}));
}

TEST_F(SegmentNode, AddsASixthSegmentToTheFifthAndKeepsIt)
{
    read(
        "segment_id:0,total_size:1000,used_size:1000\n"
        "segment_id:1,total_size:2000,used_size:1000\n"
        "segment_id:2,total_size:3000,used_size:2000\n"
        "segment_id:3,total_size:4000,used_size:3000\n"
        "segment_id:4,total_size:5000,used_size:4000\n"
        "segment_id:5,total_size:60000,used_size:50000\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 2, 3, 4, 65, 60}));
    EXPECT_EQ(used_in(info_), (SegmentWords{1, 1, 2, 3, 54, 50}));
}

TEST_F(SegmentNode, AddsAllOfSevenSegmentsFromTheSixthOnToTheFifth)
{
    read(
        "segment_id:0,total_size:1000,used_size:1000\n"
        "segment_id:1,total_size:2000,used_size:1000\n"
        "segment_id:2,total_size:3000,used_size:2000\n"
        "segment_id:3,total_size:4000,used_size:3000\n"
        "segment_id:4,total_size:5000,used_size:4000\n"
        "segment_id:5,total_size:60000,used_size:50000\n"
        "segment_id:6,total_size:700000,used_size:600000\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 2, 3, 4, 765, 60, 700}));
    EXPECT_EQ(used_in(info_), (SegmentWords{1, 1, 2, 3, 654, 50, 600}));
}

TEST_F(SegmentNode, SumOfSegmentsRoundsEachOfThemFirst)
{
    read(
        "segment_id:0,segment_id:1,segment_id:2,segment_id:3,\n"
        "segment_id:4,total_size:1999,used_size:999\n"
        "segment_id:5,total_size:1999,used_size:999\n");
    EXPECT_EQ(total_in(info_), (SegmentWords{0, 0, 0, 0, 2, 1}));
    EXPECT_EQ(used_in(info_), SegmentWords{});
}

TEST_F(SegmentNode, TellsSixteenSegments)
{
    read(
        "segment_id:0,total_size:1000,used_size:2000\n"
        "segment_id:1,segment_id:2,segment_id:3,"
        "segment_id:4,total_size:3000,used_size:4000\n"
        "segment_id:5,segment_id:6,segment_id:7,segment_id:8,segment_id:9,segment_id:10,"
        "segment_id:11,segment_id:12,segment_id:13,segment_id:14,total_size:50000,used_size:60000\n"
        "segment_id:15,total_size:700000,used_size:800000\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 0, 0, 0, 753, 0, 0, 0, 0, 0, 0, 0, 0, 0, 50, 700}));
    EXPECT_EQ(used_in(info_), (SegmentWords{2, 0, 0, 0, 864, 0, 0, 0, 0, 0, 0, 0, 0, 0, 60, 800}));
}

TEST_F(SegmentNode, TellsNoSeventeenthSegment)
{
    read(
        "segment_id:0,segment_id:1,segment_id:2,segment_id:3,segment_id:4,segment_id:5,"
        "segment_id:6,segment_id:7,segment_id:8,segment_id:9,segment_id:10,segment_id:11,"
        "segment_id:12,segment_id:13,segment_id:14,segment_id:15,total_size:1000,used_size:2000\n"
        "segment_id:16,total_size:50000,used_size:60000\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(used_in(info_), (SegmentWords{0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2}));
}

TEST_F(SegmentNode, StopsAtTheFirstSegmentThatIsMissing)
{
    read(
        "segment_id:0,total_size:1000,used_size:2000\n"
        "segment_id:1,total_size:3000,used_size:4000\n"
        "segment_id:3,total_size:5000,used_size:6000\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 3}));
    EXPECT_EQ(used_in(info_), (SegmentWords{2, 4}));
}

TEST_F(SegmentNode, TakesSegmentsInAnyOrder)
{
    read(
        "segment_id:2,total_size:5000,used_size:6000\n"
        "segment_id:0,total_size:1000,used_size:2000\n"
        "segment_id:1,total_size:3000,used_size:4000\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 3, 5}));
    EXPECT_EQ(used_in(info_), (SegmentWords{2, 4, 6}));
}

TEST_F(SegmentNode, TakesTheFirstOfASegmentThatIsThereTwice)
{
    read(
        "segment_id:0,total_size:1000,used_size:2000\n"
        "segment_id:0,total_size:3000,used_size:4000\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{1}));
    EXPECT_EQ(used_in(info_), (SegmentWords{2}));
}

TEST_F(SegmentNode, WithoutTheFirstSegmentFails)
{
    read("segment_id:1,total_size:3000,used_size:4000\n");
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), SegmentWords{});
    EXPECT_EQ(used_in(info_), SegmentWords{});
}

TEST_F(SegmentNode, NeedsTheWholeKey)
{
    read(
        "segment_id:01,total_size:1000,used_size:2000\n"
        "segment_id:0 ,total_size:1000,used_size:2000\n"
        "segment_id: 0,total_size:1000,used_size:2000\n");
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), SegmentWords{});
}

TEST_F(SegmentNode, OfNineteenBytesFails)
{
    read("segment_id:0,total_");
    EXPECT_EQ(status_, -1);
    read("");
    EXPECT_EQ(status_, -1);
}

TEST_F(SegmentNode, OfTwentyBytesIsRead)
{
    read("segment_id:0,total_s");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), SegmentWords{});
    EXPECT_EQ(used_in(info_), SegmentWords{});
}

TEST_F(SegmentNode, ThatIsMissingFails)
{
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), SegmentWords{});
    EXPECT_EQ(used_in(info_), SegmentWords{});
}

TEST_F(SegmentNode, OfNoAdapterFails)
{
    info("segment_info", "segment_id:0,total_size:1000,used_size:2000\n");
    pCurrent_gpu_infos = nullptr;
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), SegmentWords{});
}

TEST_F(SegmentNode, OfAnAdapterWithoutAnInfoDirectoryFails)
{
    info("segment_info", "segment_id:0,total_size:1000,used_size:2000\n");
    adapter_.handles().jw_info_dir_fd = -1;
    read();
    EXPECT_EQ(status_, -1);
}

TEST_F(SegmentNode, WithoutAUsedSizeTellsTheTotalSizeAlone)
{
    read(
        "segment_id:0,total_size:1000,used:2000\n"
        "segment_id:1,used_size:4000,total_size:3000\n"
        "segment_id:2,total_size:5000,used_size:6000\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 0, 5}));
    EXPECT_EQ(used_in(info_), (SegmentWords{0, 0, 6}));
}

TEST_F(SegmentNode, DividesWhatTheCallerHadWhereASizeIsMissing)
{
    info("segment_info",
         "segment_id:0,total_size:none,used_size:1000\n"
         "segment_id:1,total_size:3000,used_size:none\n");
    SegmentInfo before{};
    before.total_size[0] = 70999;
    before.used_size[0] = 80999;
    before.total_size[1] = 90999;
    before.used_size[1] = 60999;
    before.total_size[2] = 50999;
    EXPECT_EQ(gpuinfo_get_segment_info(&before), 1);
    EXPECT_EQ(total_in(before), (SegmentWords{70, 3, 50999}));
    EXPECT_EQ(used_in(before), (SegmentWords{80, 60}));
}

TEST_F(SegmentNode, CutsValuesToThirtyTwoBitsBeforeTheDivision)
{
    read(
        "segment_id:0,total_size:4294967295,used_size:4294967296\n"
        "segment_id:1,total_size:4294969296,used_size:4294970296\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{4294967, 2}));
    EXPECT_EQ(used_in(info_), (SegmentWords{0, 3}));
}

TEST_F(SegmentNode, TakesBlanksBeforeAValue)
{
    read("segment_id:0,total_size: \t1000,used_size:\n 2000\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{1}));
    EXPECT_EQ(used_in(info_), (SegmentWords{2}));
}

TEST_F(SegmentNode, ShowsNothingBehindItsFirst512Bytes)
{
    const std::string first = "segment_id:0,total_size:1000,used_size:2000\n";  // 44 bytes
    const std::string second = "segment_id:1,total_size:3000,used_size:4000\n";
    read(first + std::string(468, '.') + second);
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{1}));
    read(first + std::string(424, '.') + second);
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 3}));
    EXPECT_EQ(used_in(info_), (SegmentWords{2, 4}));
}

TEST_F(SegmentNode, CutsAValueAt512Bytes)
{
    const std::string digits = "segment_id:0,total_size:1000,used_size:2000123";  // 46 bytes
    read(std::string(466, '.') + digits + "456\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{1}));
    EXPECT_EQ(used_in(info_), (SegmentWords{2000}));
}

TEST_F(SegmentNode, ShowsNothingOfAnEarlierReading)
{
    read(
        "segment_id:0,total_size:1000,used_size:2000\n"
        "segment_id:1,total_size:3000,used_size:4000\n");
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 3}));
    read("segment_id:0,total_size:5000,used_size:6000\n");
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{5}));
    EXPECT_EQ(used_in(info_), (SegmentWords{6}));
}

TEST_F(SegmentNode, LeavesNoDescriptorOpenAndWritesNoMessage)
{
    const auto before = open_descriptors();
    read("segment_id:0,total_size:1000,used_size:2000\n");
    read("short");
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(take_messages(), Texts{});
}

}  // namespace
}  // namespace nimba::test
