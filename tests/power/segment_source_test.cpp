// SPDX-License-Identifier: MIT
// Which source segments are read from, and what comes of it.
#include "alloc/recorded_pauses.hpp"
#include "core/current_adapter.hpp"
#include "segment_fixture.hpp"
#include "support/captured_stdout.hpp"

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace nimba::test {
namespace {

constexpr const char* kOneSegment = "segment_id:0,total_size:9000,used_size:8000\n";
using Chips = std::vector<std::uint32_t>;

const Chips kNimbaChips{0x1001, 0x1002, 0x1003, 0x1013, 0x1005, 0x1006};
const Chips kOtherChips{0x2020, 0x2030, 0x2040, 0, 0x1004, 0x7777, 0xFFFFFFFF};

class SegmentSource : public SegmentTest {
  protected:
    SegmentSource()
    {
        current_chip_id = 0;
        current_is_va_driver = 1;
        take_pauses();
    }
    ~SegmentSource() override
    {
        current_is_va_driver = 0;
        without_sources();
        choose(0);  // from the allocations, as at load
    }

    void without_sources() const
    {
        std::filesystem::remove_all(heaps());
        std::filesystem::remove(adapter_.info().path() / "segment_info");
    }

    // The status of the choice for an adapter of this chip.
    std::int32_t choose(std::uint32_t chip)
    {
        adapter_.chip_id() = chip;
        std::int32_t status = 42;
        output_ = stdout_of([&] { status = segment_init(&adapter_.record()); });
        return status;
    }

    // Reads segments over a record that is full of ones; fills status_ and output_.
    void read()
    {
        std::memset(&info_, 0xFF, sizeof info_);
        output_ = stdout_of([&] { status_ = get_segment_info(&info_); });
    }

    std::int32_t status_ = 42;
    std::string output_;
};

TEST_F(SegmentSource, OfANimbaChipIsTheNode)
{
    info("segment_info", kOneSegment);
    four_heaps();
    allocation("1", "1", "3145728");
    for (const std::uint32_t chip : kNimbaChips) {
        EXPECT_EQ(choose(chip), 1) << chip;
        EXPECT_EQ(output_, "");
        read();
        EXPECT_EQ(status_, 1);
        EXPECT_EQ(output_, "");
        EXPECT_EQ(total_in(info_), (SegmentWords{9})) << chip;
        EXPECT_EQ(used_in(info_), (SegmentWords{8})) << chip;
    }
}

TEST_F(SegmentSource, OfANimbaChipWithoutANodeIsTheAllocations)
{
    four_heaps();
    allocation("1", "1", "3145728");
    for (const std::uint32_t chip : kNimbaChips) {
        EXPECT_EQ(choose(chip), -1) << chip;
        EXPECT_EQ(output_, "");
        EXPECT_EQ(take_messages(), Texts{});
        read();
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(total_in(info_), SegmentWords{}) << chip;
        EXPECT_EQ(used_in(info_), (SegmentWords{0, 3})) << chip;
    }
}

TEST_F(SegmentSource, OfAnyOtherChipIsTheHeaps)
{
    info("segment_info", kOneSegment);
    four_heaps();
    for (const std::uint32_t chip : kOtherChips) {
        EXPECT_EQ(choose(chip), 1) << chip;
        EXPECT_EQ(output_, "");
        read();
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(output_, "");
        EXPECT_EQ(total_in(info_), (SegmentWords{1, 256, 512, 1024})) << chip;
        EXPECT_EQ(used_in(info_), (SegmentWords{0, 16, 32, 64})) << chip;
    }
}

TEST_F(SegmentSource, OfAnyOtherChipWithoutHeapsIsTheAllocations)
{
    info("segment_info", kOneSegment);
    allocation("1", "1", "3145728");
    for (const std::uint32_t chip : kOtherChips) {
        EXPECT_EQ(choose(chip), -1) << chip;
        EXPECT_EQ(output_, "Error opening directory\n");
        EXPECT_EQ(take_messages(), Texts{});
        read();
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(output_, "");
        EXPECT_EQ(total_in(info_), SegmentWords{}) << chip;
        EXPECT_EQ(used_in(info_), (SegmentWords{0, 3})) << chip;
    }
}

TEST_F(SegmentSource, IsTheAllocationsWhenAHeapLacksASize)
{
    four_heaps();
    heap_text(kInvalid, "Total segment size:  1048576\n");
    EXPECT_EQ(choose(DEVICE_ID_QV_M30), -1);
    EXPECT_EQ(output_, "");
    four_heaps();
    read();
    EXPECT_EQ(total_in(info_), SegmentWords{});
}

TEST_F(SegmentSource, IsThatOfTheSlotsChipAndNotOfTheCurrentOne)
{
    info("segment_info", kOneSegment);
    four_heaps();
    current_chip_id = DEVICE_ID_NIMBA_K1;
    adapter_.record().header.chip_id[0] = DEVICE_ID_NIMBA_K2;
    adapter_.record().header.chip_id[2] = DEVICE_ID_NIMBA_K3;
    EXPECT_EQ(choose(DEVICE_ID_QV_M40), 1);
    read();
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 256, 512, 1024}));

    current_chip_id = DEVICE_ID_QV_M40;
    adapter_.record().header.chip_id[0] = DEVICE_ID_QV_M40;
    adapter_.record().header.chip_id[2] = DEVICE_ID_QV_M40;
    EXPECT_EQ(choose(DEVICE_ID_NIMBA_K1), 1);
    read();
    EXPECT_EQ(total_in(info_), (SegmentWords{9}));
    current_chip_id = 0;
}

TEST_F(SegmentSource, IsChosenOnce)
{
    info("segment_info", kOneSegment);
    EXPECT_EQ(choose(DEVICE_ID_NIMBA_K1), 1);
    without_sources();
    four_heaps();
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(total_in(info_), SegmentWords{});
    EXPECT_EQ(used_in(info_), SegmentWords{});
    info("segment_info", "segment_id:0,total_size:7000,used_size:6000\n");
    read();
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(total_in(info_), (SegmentWords{7}));
}

TEST_F(SegmentSource, IsTheAllocationsAgainAfterAFailedChoice)
{
    allocation("1", "2", "5242880");
    info("segment_info", kOneSegment);
    EXPECT_EQ(choose(DEVICE_ID_NIMBA_K1), 1);
    without_sources();
    EXPECT_EQ(choose(DEVICE_ID_NIMBA_K1), -1);
    info("segment_info", kOneSegment);
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(total_in(info_), SegmentWords{});
    EXPECT_EQ(used_in(info_), (SegmentWords{0, 0, 5}));

    four_heaps();
    EXPECT_EQ(choose(DEVICE_ID_QV_M20), 1);
    without_sources();
    EXPECT_EQ(choose(DEVICE_ID_QV_M20), -1);
    four_heaps();
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(total_in(info_), SegmentWords{});
    EXPECT_EQ(used_in(info_), (SegmentWords{0, 0, 5}));
}

TEST_F(SegmentSource, OfAllocationsTellsUseInFiveSegments)
{
    allocation("1", "0", "1048576");
    allocation("2", "1", "2097152");
    allocation("3", "2", "3145728");
    allocation("4", "3", "4194304");
    allocation("5", "4", "5242880");
    allocation("6", "15", "10485760");
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(used_in(info_), (SegmentWords{1, 2, 3, 4, 15}));
    EXPECT_EQ(total_in(info_), SegmentWords{});
}

TEST_F(SegmentSource, OfAllocationsThatCannotBeReadFailsWithZeros)
{
    std::filesystem::remove_all(tree_.allocations());
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(used_in(info_), SegmentWords{});
    EXPECT_EQ(total_in(info_), SegmentWords{});
}

TEST_F(SegmentSource, OfAllocationsTakesTheKindOfTheDriver)
{
    tree_.add("1", "device=ff\nsegmentid=1\nsize=1048576\n");
    current_is_va_driver = 0;
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(used_in(info_), (SegmentWords{0, 1}));
    current_is_va_driver = 1;
    EXPECT_THROW(get_segment_info(&info_), std::invalid_argument);
}

TEST_F(SegmentSource, OfHeapsTakesTheKindOfTheDriver)
{
    four_heaps();
    tree_.add("1", "device=ff\nsegmentid=1\nsize=1048576\n");
    EXPECT_EQ(choose(DEVICE_ID_QV_M30), 1);
    current_is_va_driver = 0;
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(used_in(info_), (SegmentWords{0, 17, 32, 64}));
    current_is_va_driver = 1;
    EXPECT_THROW(get_segment_info(&info_), std::invalid_argument);
}

TEST_F(SegmentSource, OfHeapsAddsTheUseByAllocations)
{
    four_heaps();
    allocation("1", "0", "1048576");
    allocation("2", "1", "2097152");
    allocation("3", "2", "3145728");
    allocation("4", "3", "4194304");
    allocation("5", "4", "5242880");
    allocation("6", "15", "10485760");
    EXPECT_EQ(choose(DEVICE_ID_QV_M40), 1);
    for (int round = 0; round < 2; ++round) {
        read();
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(used_in(info_), (SegmentWords{1, 18, 35, 68, 15}));
        EXPECT_EQ(total_in(info_), (SegmentWords{1, 256, 512, 1024}));
    }
}

TEST_F(SegmentSource, OfHeapsAddsANegativeUseByAllocations)
{
    four_heaps();
    allocation("1", "1", "4293918720");  // -1 MiB
    allocation("2", "3", "2147483648");  // -2048 MiB, more than the heap has
    EXPECT_EQ(choose(DEVICE_ID_QV_M40), 1);
    read();
    EXPECT_EQ(used_in(info_), (SegmentWords{0, 15, 32, 4294965312}));
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 256, 512, 1024}));
}

TEST_F(SegmentSource, OfHeapsFailsWithTheAllocationsAlone)
{
    four_heaps();
    EXPECT_EQ(choose(DEVICE_ID_QV_M40), 1);
    std::filesystem::remove_all(tree_.allocations());
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(used_in(info_), (SegmentWords{0, 16, 32, 64}));
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 256, 512, 1024}));
}

TEST_F(SegmentSource, OfHeapsThatEndEarlyGoesOnWithTheAllocations)
{
    four_heaps();
    allocation("1", "1", "2097152");
    allocation("2", "7", "7340032");
    EXPECT_EQ(choose(DEVICE_ID_QV_M40), 1);
    heap_text(kUnsnoop, std::string(100, '.'));
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(used_in(info_), (SegmentWords{0, 18, 0, 0, 7}));
    EXPECT_EQ(total_in(info_), (SegmentWords{1, 256}));

    std::filesystem::remove_all(heaps());
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "Error opening directory\n");
    EXPECT_EQ(used_in(info_), (SegmentWords{0, 2, 0, 0, 7}));
    EXPECT_EQ(total_in(info_), SegmentWords{});
}

TEST_F(SegmentSource, LeavesNoDescriptorOpen)
{
    four_heaps();
    info("segment_info", kOneSegment);
    allocation("1", "1", "2097152");
    const auto before = open_descriptors();
    for (const std::uint32_t chip : Chips{DEVICE_ID_QV_M40, DEVICE_ID_NIMBA_K1}) {
        EXPECT_EQ(choose(chip), 1);
        read();
        EXPECT_EQ(open_descriptors(), before);
    }
}

}  // namespace
}  // namespace nimba::test
