// SPDX-License-Identifier: MIT
#include "tools/smi/mem/segments.hpp"

#include "tools/smi/mem/view.hpp"
#include "tools/smi/worker/segment_reader.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <initializer_list>

namespace nimba::smi {
namespace {

SegmentReading reading(SegmentSource source, std::vector<SegmentUse> segments)
{
    SegmentReading result;
    result.source = source;
    result.segments = std::move(segments);
    return result;
}

struct Sizes {
    uint32_t used;
    uint32_t total;
};

// What the library's reader leaves in a record whose bytes were all `byte` before.
SegmentInfo record(int byte, std::initializer_list<Sizes> sizes)
{
    SegmentInfo info;
    std::memset(&info, byte, sizeof info);
    std::size_t segment = 0;
    for (const Sizes& size : sizes) {
        info.used_size[segment] = size.used;
        info.total_size[segment++] = size.total;
    }
    return info;
}

TEST(SegmentsInNode, AreThoseThatWereWritten)
{
    const auto sizes = {Sizes{1, 10}, Sizes{0, 20}};
    EXPECT_EQ(segments_in_node(record(0, sizes), record(0xFF, sizes)),
              (std::vector<SegmentUse>{{1, 10}, {0, 20}}));
    EXPECT_EQ(segments_in_node(record(0, {}), record(0xFF, {})), std::vector<SegmentUse>{});
}

TEST(SegmentsInNode, TheFifthIsToldWithoutThoseBehindIt)
{
    const auto sizes = {
        Sizes{1, 10}, Sizes{2, 20}, Sizes{3, 30}, Sizes{4, 40}, Sizes{5 + 6 + 7, 50 + 60 + 70},
        Sizes{6, 60}, Sizes{7, 70}};
    EXPECT_EQ(
        segments_in_node(record(0, sizes), record(0xFF, sizes)),
        (std::vector<SegmentUse>{{1, 10}, {2, 20}, {3, 30}, {4, 40}, {5, 50}, {6, 60}, {7, 70}}));
}

TEST(SegmentsInNode, ASizeThatTheDriverDoesNotGiveIsNotZero)
{
    // Divided by 1000, what was not written is 0 in one record and 4294967 in the other.
    EXPECT_EQ(
        segments_in_node(record(0, {{1, 10}, {0, 20}}), record(0xFF, {{1, 10}, {4294967, 20}})),
        (std::vector<SegmentUse>{{1, 10}, {std::nullopt, 20}}));
}

TEST(SegmentTable, TheSumIsThatOfAllSegments)
{
    const auto table = segment_table(reading(SegmentSource::kNode, {{1, 10}, {2, 20}}));
    EXPECT_EQ(table.segments,
              (std::vector<Segment>{{"0", std::nullopt, {1, 10}}, {"1", std::nullopt, {2, 20}}}));
    EXPECT_EQ(table.sum, (SegmentUse{3, 30}));
}

TEST(SegmentTable, ASumWithAnUnknownPartIsUnknown)
{
    EXPECT_EQ(segment_table(reading(SegmentSource::kNode, {{1, 10}, {std::nullopt, 20}})).sum,
              (SegmentUse{std::nullopt, 30}));
}

TEST(SegmentTable, HeapsHaveNamesAndTheRestIsThereOnlyIfUsed)
{
    const std::vector<SegmentUse> heaps{{0, 0}, {1, 10}, {2, 20}, {3, 30}, {0, std::nullopt}};
    auto table = segment_table(reading(SegmentSource::kHeaps, heaps));
    EXPECT_EQ(table.segments, (std::vector<Segment>{{"0", "heap_invalid", {0, 0}},
                                                    {"1", "heap_local", {1, 10}},
                                                    {"2", "heap_pcie_unsnoop", {2, 20}},
                                                    {"3", "heap_pcie_snoop", {3, 30}}}));
    EXPECT_EQ(table.sum, (SegmentUse{6, 60}));
    auto with_rest = heaps;
    with_rest.back().used = 4;
    table = segment_table(reading(SegmentSource::kHeaps, with_rest));
    ASSERT_EQ(table.segments.size(), 5U);
    EXPECT_EQ(table.segments.back(), (Segment{"4+", std::nullopt, {4, std::nullopt}}));
    EXPECT_EQ(table.sum, (SegmentUse{10, std::nullopt}));
}

TEST(SegmentTable, TheFifthSegmentOfTheNodeIsASegment)
{
    const std::vector<SegmentUse> five{{1, 1}, {1, 1}, {1, 1}, {1, 1}, {0, 9}};
    EXPECT_EQ(segment_table(reading(SegmentSource::kNode, five)).segments.back(),
              (Segment{"4", std::nullopt, {0, 9}}));
}

TEST(SegmentBar, IsFullOnlyWhenAllIsUsedAndEmptyOnlyWhenNothingIs)
{
    EXPECT_EQ(bar_text({0, 100}), "....................");
    EXPECT_EQ(bar_text({1, 4294967}), "#...................");
    EXPECT_EQ(bar_text({50, 100}), "##########..........");
    EXPECT_EQ(bar_text({99, 100}), "###################.");
    EXPECT_EQ(bar_text({100, 100}), "####################");
    EXPECT_EQ(bar_text({4294967295, 1}), "####################");
}

TEST(SegmentBar, IsNotThereWhenTheShareIsNotKnown)
{
    EXPECT_EQ(bar_text({std::nullopt, 100}), "");
    EXPECT_EQ(bar_text({1, std::nullopt}), "");
    EXPECT_EQ(bar_text({0, 0}), "");
}

TEST(SegmentsView, ShowsNumbersBarAndSource)
{
    const auto view = segments_view();
    const auto node = segment_table(reading(SegmentSource::kNode, {{512, 4096}}));
    EXPECT_EQ(view.text_rows(node),
              (std::vector<Row>{
                  {"0", "512 MB", "4096 MB", "12%", "##..................", "segment_info"},
                  {"all", "512 MB", "4096 MB", "12%", "##..................", "segment_info"}}));
    const auto heaps = segment_table(reading(SegmentSource::kHeaps, {{0, 0}, {1, 2}}));
    EXPECT_EQ(view.text_rows(heaps)[1], (Row{"1 heap_local", "1 MiB", "2 MiB", "50%",
                                             "##########..........", "heaps and allocations"}));
    const auto allocations =
        segment_table(reading(SegmentSource::kAllocations, {{7, std::nullopt}}));
    EXPECT_EQ(view.text_rows(allocations)[0], (Row{"0", "7 MiB", "n/a", "n/a", "", "allocations"}));
}

TEST(SegmentsView, TellsBytesToScripts)
{
    const auto view = segments_view();
    const auto node = segment_table(reading(SegmentSource::kNode, {{5, std::nullopt}}));
    EXPECT_EQ(view.csv_rows(node), (std::vector<Row>{{"0", "", "5000000", "", "node"}}));
    EXPECT_EQ(view.json(node).dump(),
              R"({"source":"node","unit":"MB","segments":[{"segment":"0","name":null,)"
              R"("used_bytes":5000000,"total_bytes":null}],)"
              R"("sum":{"used_bytes":5000000,"total_bytes":null}})");
    const auto heaps = segment_table(reading(SegmentSource::kHeaps, {{5, 4294967295}}));
    EXPECT_EQ(view.csv_rows(heaps),
              (std::vector<Row>{{"0", "heap_invalid", "5242880", "4503599626321920", "heaps"}}));
}

}  // namespace
}  // namespace nimba::smi
