// SPDX-License-Identifier: MIT
// The report of the leak detector: groups of like allocations, largest first.
#include "alloc/leak_report.hpp"

#include "leak_fixture.hpp"

#include <algorithm>
#include <climits>
#include <random>

namespace nimba::test {
namespace {

class LeakReport : public LeakTest {
  protected:
    // Shows a group of each of these sizes, which differ in width, one allocation of each group
    // after the other; the handles are 1, 2, 3, ...
    void show_groups(std::vector<int> sizes)
    {
        Records records;
        for (bool more = true; more;) {
            more = false;
            for (std::size_t group = 0; group < sizes.size(); ++group) {
                if (sizes[group] > 0) {
                    --sizes[group];
                    more = true;
                    records.push_back(
                        with(allocation(static_cast<std::int32_t>(records.size()) + 1),
                             &Record::width, width_of(group)));
                }
            }
        }
        show(records);
    }
    static std::int32_t width_of(std::size_t group)
    {
        return static_cast<std::int32_t>(group) + 100;
    }

    // Width and size of the first `count` groups of the report.
    std::vector<std::pair<std::int32_t, std::int32_t>> shapes(std::size_t count) const
    {
        std::vector<std::pair<std::int32_t, std::int32_t>> found;
        for (const Record& group : report(count)) {
            found.emplace_back(group.width, group.sum_count);
        }
        return found;
    }
};

using Shapes = std::vector<std::pair<std::int32_t, std::int32_t>>;

Record with_sum(const Record& record, std::int32_t sum_count)
{
    return with(record, &Record::sum_count, sum_count);
}

TEST(LeakOrder, PutsTheGreaterSumFirst)
{
    const auto first = [](std::int32_t a, std::int32_t b) {
        return compare_allo_sum(with_sum(allocation(1), a), with_sum(allocation(1), b));
    };
    EXPECT_TRUE(first(2, 1));
    EXPECT_FALSE(first(1, 2));
    EXPECT_FALSE(first(1, 1));
    EXPECT_FALSE(first(0, 0));
    EXPECT_TRUE(first(0, -1));
    EXPECT_FALSE(first(-1, 0));
    EXPECT_TRUE(first(INT_MAX, INT_MIN));
    EXPECT_FALSE(first(INT_MIN, INT_MAX));
}

TEST(LeakOrder, ComparesNothingElse)
{
    Record large = with_sum(with_hits(allocation(INT_MAX), INT_MAX), 3);
    large.size = INT_MAX;
    EXPECT_FALSE(compare_allo_sum(large, with_sum(Record{}, 3)));
    EXPECT_FALSE(compare_allo_sum(with_sum(Record{}, 3), large));
    EXPECT_FALSE(compare_allo_sum(large, with_sum(Record{}, 4)));
    EXPECT_TRUE(compare_allo_sum(with_sum(Record{}, 4), large));
}

TEST_F(LeakReport, OfNoAllocationsIsAllZero)
{
    show({});
    EXPECT_EQ(query(), 0);
    EXPECT_EQ(report(0), Records{});
}

TEST_F(LeakReport, OfOneAllocationIsIt)
{
    show({allocation(0x7f)});
    query();
    EXPECT_EQ(report(1), (Records{allocation(0x7f)}));
}

TEST_F(LeakReport, PutsTheGroupOfFiveBeforeThatOfThree)
{
    show_groups({3, 5});
    query();
    EXPECT_EQ(shapes(2), (Shapes{{101, 5}, {100, 3}}));
}

TEST_F(LeakReport, ShowsTheFirstAllocationOfAGroup)
{
    Record first = allocation(9);
    first.device = 70;
    first.gpu_virt_addr = 71;
    Record second = allocation(3);
    second.device = 80;
    second.gpu_virt_addr = 81;
    show({first, second, allocation(1)});
    query();
    EXPECT_EQ(report(1), (Records{with_sum(first, 3)}));
}

TEST_F(LeakReport, ShowsTheHitsOfTheFirstAllocationOfAGroup)
{
    show({allocation(1)});
    query();
    show({allocation(1), allocation(2)});
    query();
    show({allocation(3), allocation(2), allocation(1)});
    query();
    EXPECT_EQ(report(1), (Records{with_sum(with_hits(allocation(1), 3), 3)}));
    show({allocation(3), allocation(2)});
    query();
    EXPECT_EQ(report(1), (Records{with_sum(with_hits(allocation(2), 3), 2)}));
}

TEST_F(LeakReport, LeavesTheSumsOfTheKeptAllocationsAtOne)
{
    show({allocation(1), allocation(2), allocation(3)});
    query();
    query();
    EXPECT_EQ(vec_memleak_result, (Records{with_hits(allocation(1), 2), with_hits(allocation(2), 2),
                                           with_hits(allocation(3), 2)}));
    EXPECT_EQ(report(1), (Records{with_sum(with_hits(allocation(1), 2), 3)}));
}

TEST_F(LeakReport, TellsShapesApartByEachFieldOfTheKey)
{
    for (const RecordField& field : kGroupKey) {
        SCOPED_TRACE(field.name);
        const Record other = with(allocation(2), field.member, 1000);
        show({allocation(1), other, with(other, &Record::handle, 3)});
        query();
        EXPECT_EQ(report(2), (Records{with_sum(other, 2), allocation(1)}));
        vec_memleak_result.clear();
    }
}

TEST_F(LeakReport, TakesAllocationsForAlikeWhateverTheirOtherFields)
{
    for (const RecordField& field : kFreeFields) {
        SCOPED_TRACE(field.name);
        show({allocation(1), with(allocation(2), field.member, 1000)});
        query();
        EXPECT_EQ(report(1), (Records{with_sum(allocation(1), 2)}));
        vec_memleak_result.clear();
    }
}

TEST_F(LeakReport, DoesNotMixUpShapesThatSwapValues)
{
    for (const RecordField& one : kGroupKey) {
        for (const RecordField& other : kGroupKey) {
            if (one.member == other.member) {
                continue;
            }
            SCOPED_TRACE(std::string{one.name} + " and " + other.name);
            Record swapped = allocation(1);
            std::swap(swapped.*one.member, swapped.*other.member);
            show({allocation(1), swapped, with(swapped, &Record::handle, 2)});
            query();
            EXPECT_EQ(report(2), (Records{with_sum(swapped, 2), allocation(1)}));
            vec_memleak_result.clear();
        }
    }
}

TEST_F(LeakReport, CountsIdenticalAllocations)
{
    show({allocation(1), allocation(1), allocation(1)});
    query();
    EXPECT_EQ(report(1), (Records{with_sum(allocation(1), 3)}));
}

TEST_F(LeakReport, HasRoomFor15Groups)
{
    show_groups({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    query();
    EXPECT_EQ(shapes(15), (Shapes{{114, 15},
                                  {113, 14},
                                  {112, 13},
                                  {111, 12},
                                  {110, 11},
                                  {109, 10},
                                  {108, 9},
                                  {107, 8},
                                  {106, 7},
                                  {105, 6},
                                  {104, 5},
                                  {103, 4},
                                  {102, 3},
                                  {101, 2},
                                  {100, 1}}));
}

TEST_F(LeakReport, HasTheLargestOfMoreGroups)
{
    show_groups({1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15, 8, 16, 17, 18});
    query();
    EXPECT_EQ(shapes(15), (Shapes{{117, 18},
                                  {116, 17},
                                  {115, 16},
                                  {113, 15},
                                  {111, 14},
                                  {109, 13},
                                  {107, 12},
                                  {105, 11},
                                  {103, 10},
                                  {101, 9},
                                  {114, 8},
                                  {112, 7},
                                  {110, 6},
                                  {108, 5},
                                  {106, 4}}));
}

TEST_F(LeakReport, HasZerosBehind14Groups)
{
    show_groups({14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1});
    query();
    EXPECT_EQ(shapes(14), (Shapes{{100, 14},
                                  {101, 13},
                                  {102, 12},
                                  {103, 11},
                                  {104, 10},
                                  {105, 9},
                                  {106, 8},
                                  {107, 7},
                                  {108, 6},
                                  {109, 5},
                                  {110, 4},
                                  {111, 3},
                                  {112, 2},
                                  {113, 1}}));
}

// The widths of the groups that are reported of two allocations of each of these widths.
std::vector<std::int32_t> reported_of_equal_groups(const std::vector<std::int32_t>& widths)
{
    Records kept;
    for (const std::int32_t handle : {1, 2}) {
        for (const std::int32_t width : widths) {
            kept.push_back(with(allocation(handle), &Record::width, width));
        }
    }
    const _GFX_MEMLEAK_INFO report = report_leaks(kept);
    std::vector<std::int32_t> reported;
    for (const Record& group : report.groups) {
        EXPECT_EQ(group.sum_count, 2);
        reported.push_back(group.width);
    }
    return reported;
}

TEST(LeakReportOfEqualGroups, HasThoseFirstMetInTheirOrder)
{
    EXPECT_EQ(reported_of_equal_groups(
                  {7, 19, 3, 12, 1, 16, 9, 20, 5, 14, 2, 18, 10, 4, 15, 6, 13, 8, 17, 11}),
              (std::vector{7, 19, 3, 12, 1, 16, 9, 20, 5, 14, 2, 18, 10, 4, 15}));
}

TEST_F(LeakReport, ForgetsGroupsThatAreGone)
{
    show_groups({5, 4, 3});
    query();
    show_groups({0, 1});
    query();
    EXPECT_EQ(shapes(1), (Shapes{{101, 1}}));
    show({});
    query();
    EXPECT_EQ(report(0), Records{});
}

// The groups of these records as they are defined, record by record; in the order in which they
// are met.
Records groups_plainly(const Records& kept)
{
    Records groups;
    for (const Record& record : kept) {
        const auto found = std::find_if(groups.begin(), groups.end(), [&](const Record& group) {
            return group.width == record.width && group.height == record.height &&
                   group.size == record.size && group.hw_format == record.hw_format &&
                   group.at_type == record.at_type;
        });
        if (found == groups.end()) {
            groups.push_back(record);
        } else {
            found->sum_count += 1;
        }
    }
    return groups;
}

class RandomAllocations final {
  public:
    explicit RandomAllocations(unsigned seed) : random_{seed} {}

    // Up to 30 allocations whose key fields have so many values each.
    Records some(std::uint32_t values)
    {
        Records records(random_() % 31);
        std::int32_t device = 0;
        for (Record& record : records) {
            record = allocation(static_cast<std::int32_t>(random_() % 3));
            record.device = ++device;
            record.hit_count = static_cast<std::int32_t>(random_() % 5) + 1;
            for (const RecordField& field : kGroupKey) {
                record.*field.member = static_cast<std::int32_t>(random_() % values) - 1;
            }
        }
        return records;
    }

  private:
    std::mt19937 random_;
};

TEST(LeakReportOfRandomAllocations, IsThatOfTheDefinition)
{
    RandomAllocations random{5};
    for (unsigned i = 0; i < 10'000; ++i) {
        SCOPED_TRACE("case " + std::to_string(i));
        const Records kept = random.some(2 + i % 2);
        const _GFX_MEMLEAK_INFO report = report_leaks(kept);
        Records left = groups_plainly(kept);
        const std::size_t count = std::min<std::size_t>(left.size(), MEMLEAK_REPORT_MAX);
        std::int32_t smallest = INT_MAX;
        for (std::size_t g = 0; g < count; ++g) {
            const Record& group = report.groups[g];
            const auto found = std::find(left.begin(), left.end(), group);
            ASSERT_NE(found, left.end());
            left.erase(found);
            ASSERT_LE(group.sum_count, smallest);
            smallest = group.sum_count;
        }
        for (const Record& group : left) {
            ASSERT_LE(group.sum_count, smallest);
        }
        for (std::size_t g = count; g < MEMLEAK_REPORT_MAX; ++g) {
            ASSERT_EQ(report.groups[g], Record{});
        }
    }
}

// A search through the groups for each allocation takes minutes: the time limit ends it.
TEST(LeakReportOfManyShapes, HasTheLargestGroups)
{
    Records kept;
    for (int i = 0; i < 400'000; ++i) {
        Record record = allocation(i);
        record.width = i;
        record.height = i;
        record.size = i << 12;
        kept.push_back(record);
    }
    kept.push_back(kept[300'000]);
    kept.push_back(kept[200'000]);
    kept.push_back(kept[300'000]);
    const _GFX_MEMLEAK_INFO report = report_leaks(kept);
    EXPECT_EQ(report.groups[0], with_sum(kept[300'000], 3));
    EXPECT_EQ(report.groups[1], with_sum(kept[200'000], 2));
    EXPECT_EQ(report.groups[2].sum_count, 1);
    EXPECT_EQ(report.groups[14].sum_count, 1);
}

TEST_F(LeakReport, Of100000AllocationsOfOneShape)
{
    show_repeatedly(allocation(1), 100'000);
    query();
    EXPECT_EQ(report(1), (Records{with_sum(allocation(1), 100'000)}));
    query();
    EXPECT_EQ(report(1), (Records{with_sum(with_hits(allocation(1), 2), 100'000)}));
    EXPECT_EQ(vec_memleak_result, Records(100'000, with_hits(allocation(1), 2)));
}

}  // namespace
}  // namespace nimba::test
