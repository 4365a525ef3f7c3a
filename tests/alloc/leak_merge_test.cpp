// SPDX-License-Identifier: MIT
// How a snapshot is merged into the list of kept allocations.
#include "leak_records.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace nimba::test {
namespace {

class LeakMerge : public testing::Test {
  protected:
    void merge() { compare_memleak_list(snapshot_, kept_); }

    Records snapshot_;
    Records kept_;
};

TEST_F(LeakMerge, OfNothingIsNothing)
{
    merge();
    EXPECT_EQ(kept_, Records{});
    EXPECT_EQ(snapshot_, Records{});
}

TEST_F(LeakMerge, KeepsTheWholeFirstSnapshotInItsOrder)
{
    snapshot_ = {allocation(3), allocation(1), allocation(2)};
    merge();
    EXPECT_EQ(kept_, (Records{allocation(3), allocation(1), allocation(2)}));
    EXPECT_EQ(snapshot_, (Records{allocation(3), allocation(1), allocation(2)}));
}

TEST_F(LeakMerge, CountsAnAllocationThatIsFoundAgain)
{
    kept_ = {allocation(1)};
    snapshot_ = {allocation(1)};
    merge();
    EXPECT_EQ(kept_, (Records{with_hits(allocation(1), 2)}));
    EXPECT_EQ(snapshot_, Records{});
}

TEST_F(LeakMerge, CountsOverManySnapshots)
{
    for (int i = 0; i < 1000; ++i) {
        snapshot_ = {allocation(2), allocation(1)};
        merge();
        EXPECT_EQ(snapshot_.size(), i == 0 ? 2U : 0U);
    }
    EXPECT_EQ(kept_, (Records{with_hits(allocation(2), 1000), with_hits(allocation(1), 1000)}));
}

TEST_F(LeakMerge, DropsAnAllocationThatIsGone)
{
    kept_ = {allocation(1), allocation(2), allocation(3), allocation(4), allocation(5)};
    snapshot_ = {allocation(4), allocation(2)};
    merge();
    EXPECT_EQ(kept_, (Records{with_hits(allocation(2), 2), with_hits(allocation(4), 2)}));
    EXPECT_EQ(snapshot_, Records{});
}

TEST_F(LeakMerge, WithAnEmptySnapshotDropsEverything)
{
    kept_ = {allocation(1), with_hits(allocation(2), 7), allocation(3)};
    merge();
    EXPECT_EQ(kept_, Records{});
    EXPECT_EQ(snapshot_, Records{});
}

TEST_F(LeakMerge, CountsAnewAfterAnAbsence)
{
    kept_ = {with_hits(allocation(1), 7), with_hits(allocation(2), 7)};
    snapshot_ = {allocation(2)};
    merge();
    snapshot_ = {allocation(1), allocation(2)};
    merge();
    EXPECT_EQ(kept_, (Records{with_hits(allocation(2), 9), allocation(1)}));
    EXPECT_EQ(snapshot_, (Records{allocation(1)}));
}

TEST_F(LeakMerge, PutsNewAllocationsBehindTheKeptOnes)
{
    kept_ = {allocation(5), allocation(3), allocation(9)};
    snapshot_ = {allocation(8), allocation(9), allocation(1), allocation(5), allocation(7)};
    merge();
    EXPECT_EQ(kept_, (Records{with_hits(allocation(5), 2), with_hits(allocation(9), 2),
                              allocation(8), allocation(1), allocation(7)}));
    EXPECT_EQ(snapshot_, (Records{allocation(8), allocation(1), allocation(7)}));
}

TEST_F(LeakMerge, TakesAChangedKeyFieldForANewAllocation)
{
    for (const RecordField& field : kMatchKey) {
        for (const std::int32_t value : {0, -1, 1000, INT32_MIN, INT32_MAX}) {
            SCOPED_TRACE(std::string{field.name} + " " + std::to_string(value));
            const Record changed = with(allocation(1), field.member, value);
            kept_ = {with_hits(allocation(1), 5)};
            snapshot_ = {changed};
            merge();
            EXPECT_EQ(kept_, (Records{changed}));
            EXPECT_EQ(snapshot_, (Records{changed}));
        }
    }
}

TEST_F(LeakMerge, KeepsTheOldValuesOfFieldsThatAreNoKey)
{
    for (const RecordField& field : kFreeFields) {
        SCOPED_TRACE(field.name);
        kept_ = {with_hits(allocation(1), 5)};
        snapshot_ = {with(allocation(1), field.member, 1000)};
        merge();
        EXPECT_EQ(kept_, (Records{with_hits(allocation(1), 6)}));
        EXPECT_EQ(snapshot_, Records{});
    }
}

TEST_F(LeakMerge, AddsOneWhateverTheSnapshotCounts)
{
    kept_ = {with_hits(allocation(1), 5)};
    snapshot_ = {with(with_hits(allocation(1), 9), &Record::sum_count, 9)};
    merge();
    EXPECT_EQ(kept_, (Records{with_hits(allocation(1), 6)}));
}

TEST_F(LeakMerge, ChangesNothingButTheHits)
{
    kept_ = {with(with_hits(allocation(1), -5), &Record::sum_count, 9)};
    snapshot_ = {allocation(1)};
    merge();
    EXPECT_EQ(kept_, (Records{with(with_hits(allocation(1), -4), &Record::sum_count, 9)}));
}

TEST_F(LeakMerge, DoesNotMixUpKeyFieldsThatSwapValues)
{
    for (const RecordField& one : kMatchKey) {
        for (const RecordField& other : kMatchKey) {
            if (one.member == other.member) {
                continue;
            }
            SCOPED_TRACE(std::string{one.name} + " and " + other.name);
            Record swapped = allocation(1);
            std::swap(swapped.*one.member, swapped.*other.member);
            kept_ = {with_hits(allocation(1), 5)};
            snapshot_ = {swapped};
            merge();
            EXPECT_EQ(kept_, (Records{swapped}));
        }
    }
}

TEST_F(LeakMerge, PairsEqualAllocationsOneToOne)
{
    kept_ = {with_hits(allocation(1), 3), with_hits(allocation(1), 2)};
    snapshot_ = {allocation(1), allocation(1)};
    merge();
    EXPECT_EQ(kept_, (Records{with_hits(allocation(1), 4), with_hits(allocation(1), 3)}));
    EXPECT_EQ(snapshot_, Records{});
}

TEST_F(LeakMerge, DropsTheLaterOfEqualAllocationsWhenThereAreFewer)
{
    kept_ = {with_hits(allocation(1), 3), allocation(2), with_hits(allocation(1), 2),
             with_hits(allocation(1), 1)};
    snapshot_ = {allocation(1), allocation(1)};
    merge();
    EXPECT_EQ(kept_, (Records{with_hits(allocation(1), 4), with_hits(allocation(1), 3)}));
    EXPECT_EQ(snapshot_, Records{});
}

TEST_F(LeakMerge, AddsTheLaterOfEqualAllocationsWhenThereAreMore)
{
    kept_ = {with_hits(allocation(1), 3)};
    snapshot_ = {with(allocation(1), &Record::device, 100), with(allocation(1), &Record::tile, 101),
                 allocation(2), with(allocation(1), &Record::device, 102)};
    const Records rest{snapshot_[1], snapshot_[2], snapshot_[3]};
    merge();
    EXPECT_EQ(kept_, (Records{with_hits(allocation(1), 4), rest[0], rest[1], rest[2]}));
    EXPECT_EQ(snapshot_, rest);
}

TEST_F(LeakMerge, KeepsNewRecordsAsTheyAre)
{
    const Record odd = with(with_hits(allocation(1), -7), &Record::sum_count, 12);
    snapshot_ = {odd, Record{}};
    merge();
    EXPECT_EQ(kept_, (Records{odd, Record{}}));
}

// The merge as it is defined, record by record.
void merge_plainly(Records& snapshot, Records& kept)
{
    for (std::size_t i = 0; i < kept.size();) {
        const auto found = std::find_if(snapshot.begin(), snapshot.end(), [&](const Record& r) {
            return r.handle == kept[i].handle && r.width == kept[i].width &&
                   r.height == kept[i].height && r.size == kept[i].size &&
                   r.hw_format == kept[i].hw_format && r.at_type == kept[i].at_type;
        });
        if (found == snapshot.end()) {
            kept.erase(kept.begin() + static_cast<std::ptrdiff_t>(i));
        } else {
            snapshot.erase(found);
            kept[i++].hit_count += 1;
        }
    }
    kept.insert(kept.end(), snapshot.begin(), snapshot.end());
}

class RandomRecords final {
  public:
    explicit RandomRecords(unsigned seed) : random_{seed} {}

    // Up to `most` records. Their keys have few values, so that many are equal or nearly so.
    Records some(std::size_t most, int key_values)
    {
        static constexpr std::array<std::int32_t, 5> kValues{0, 1, -1, INT32_MIN, INT32_MAX};
        Records records(pick(most + 1));
        for (Record& record : records) {
            for (const RecordField& field : kMatchKey) {
                if (pick(4) == 0) {
                    record.*field.member = kValues[pick(static_cast<std::size_t>(key_values))];
                }
            }
            for (const RecordField& field : kFreeFields) {
                record.*field.member = static_cast<std::int32_t>(random_());
            }
            record.hit_count = static_cast<std::int32_t>(1 + pick(3));
            record.sum_count = 1;
        }
        return records;
    }

  private:
    std::size_t pick(std::size_t count) { return random_() % count; }

    std::mt19937 random_;
};

TEST_F(LeakMerge, OfRandomListsIsThatOfTheDefinition)
{
    RandomRecords random{20240229};
    for (int i = 0; i < 20'000; ++i) {
        SCOPED_TRACE("case " + std::to_string(i));
        const int key_values = 2 + i % 4;
        kept_ = random.some(i % 3 == 0 ? 40 : 8, key_values);
        snapshot_ = random.some(i % 5 == 0 ? 40 : 8, key_values);
        Records expected_snapshot = snapshot_;
        Records expected_kept = kept_;
        merge_plainly(expected_snapshot, expected_kept);
        merge();
        ASSERT_EQ(kept_, expected_kept);
        ASSERT_EQ(snapshot_, expected_snapshot);
    }
}

TEST_F(LeakMerge, OfASeriesOfRandomSnapshotsIsThatOfTheDefinition)
{
    RandomRecords random{1999};
    Records expected_kept;
    for (int i = 0; i < 2'000; ++i) {
        SCOPED_TRACE("snapshot " + std::to_string(i));
        snapshot_ = random.some(30, 2);
        Records expected_snapshot = snapshot_;
        merge_plainly(expected_snapshot, expected_kept);
        merge();
        ASSERT_EQ(kept_, expected_kept);
        ASSERT_EQ(snapshot_, expected_snapshot);
    }
}

// With 400,000 records a search or a removal that walks the list for each of them takes minutes:
// the tests below then run into their time limit.
constexpr int kMany = 400'000;

class LeakMergeOfManyRecords : public LeakMerge {};

TEST_F(LeakMergeOfManyRecords, PairsIdenticalOnes)
{
    kept_.assign(kMany, allocation(1));
    snapshot_.assign(kMany, allocation(1));
    merge();
    EXPECT_EQ(kept_, Records(kMany, with_hits(allocation(1), 2)));
    EXPECT_EQ(snapshot_, Records{});
}

TEST_F(LeakMergeOfManyRecords, DropsAndAddsIdenticalOnes)
{
    kept_.assign(kMany, allocation(1));
    snapshot_.assign(kMany / 2, allocation(1));
    snapshot_.insert(snapshot_.end(), kMany, allocation(2));
    merge();
    Records expected(kMany / 2, with_hits(allocation(1), 2));
    expected.insert(expected.end(), kMany, allocation(2));
    EXPECT_EQ(kept_, expected);
    EXPECT_EQ(snapshot_, Records(kMany, allocation(2)));
}

TEST_F(LeakMergeOfManyRecords, FindsThoseOfOneShapeInTheOppositeOrder)
{
    Records expected;
    for (int i = 0; i < kMany; ++i) {
        kept_.push_back(allocation(i));
        snapshot_.push_back(allocation(kMany - 1 - i));
        expected.push_back(with_hits(allocation(i), 2));
    }
    merge();
    EXPECT_EQ(kept_, expected);
    EXPECT_EQ(snapshot_, Records{});
}

TEST_F(LeakMergeOfManyRecords, FindsThoseOfOneHandle)
{
    Records expected;
    for (int i = 0; i < kMany; ++i) {
        kept_.push_back(with(allocation(1), &Record::size, i));
        snapshot_.push_back(with(allocation(1), &Record::size, kMany - 1 - i));
        expected.push_back(with_hits(kept_.back(), 2));
    }
    merge();
    EXPECT_EQ(kept_, expected);
    EXPECT_EQ(snapshot_, Records{});
}

TEST_F(LeakMergeOfManyRecords, FindsThoseOfSquareShapesInWholePages)
{
    Records expected;
    for (int i = 0; i < kMany; ++i) {
        Record record = allocation(i << 12);
        record.width = i;
        record.height = i;
        record.size = i << 12;
        kept_.push_back(record);
        expected.push_back(with_hits(record, 2));
    }
    snapshot_.assign(kept_.rbegin(), kept_.rend());
    merge();
    EXPECT_EQ(kept_, expected);
    EXPECT_EQ(snapshot_, Records{});
}

TEST_F(LeakMergeOfManyRecords, ReplacesThemAll)
{
    for (int i = 0; i < kMany; ++i) {
        kept_.push_back(allocation(i));
        snapshot_.push_back(allocation(kMany + i));
    }
    const Records expected = snapshot_;
    merge();
    EXPECT_EQ(kept_, expected);
    EXPECT_EQ(snapshot_, expected);
}

TEST_F(LeakMergeOfManyRecords, FreesThemAll)
{
    for (int i = 0; i < kMany; ++i) {
        kept_.push_back(allocation(i));
    }
    merge();
    EXPECT_EQ(kept_, Records{});
}

}  // namespace
}  // namespace nimba::test
