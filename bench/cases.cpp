// SPDX-License-Identifier: MIT
#include "bench/cases.hpp"

#include "bench/bare_reader.hpp"
#include "bench/plain_leak.hpp"
#include "bench/plain_reader.hpp"
#include "nimba_mgmt_interface.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace nimba::bench {
namespace {

using Records = std::vector<_GFX_ALLOCATION_INFO>;

void expect(bool good, const char* what)
{
    if (!good) {
        throw std::runtime_error{fmt::format("{}: not what the allocations are", what)};
    }
}

// One pass over the selected tree, which must find its allocations.
using Pass = void (*)(const AllocationTree& tree);

Records read_selected()
{
    Records list;
    expect(get_current_allocation_data(list, 0, 0) == 0, name::kReader);
    return list;
}

void bare_pass(const AllocationTree& tree)
{
    const BareCount count = read_bare(tree.path());
    expect(count.nodes == tree.count() && count.bytes == tree.bytes(), name::kBare);
}

void plain_pass(const AllocationTree& tree)
{
    expect(std::ssize(read_plainly(tree.path())) == tree.count(), name::kPlain);
}

void reader_pass(const AllocationTree& tree)
{
    expect(std::ssize(read_selected()) == tree.count(), name::kReader);
}

void raw_list_pass(const AllocationTree& tree)
{
    const find_adapter adapter{};
    _GFX_ALLOCATION_RAW_LIST page{};
    expect(get_allocation_raw_list(&page, &adapter) == 0 && page.total_cnt == tree.count(),
           name::kRawList);
}

void summary_pass(const AllocationTree&)
{
    _GFX_DEVICE_ALLOCATION_SUMMARY summary{};
    expect(get_device_allocation_summary(&summary) == 0 && summary.entries[0].device != 0,
           name::kSummary);
}

void wide_summary_pass(const AllocationTree&)
{
    _GFX_DEVICE_ALLOCATION_SUMMARY_EXT1 summary{};
    expect(get_device_allocation_summary_ext1(&summary) == 0 && summary.entries[0].device != 0,
           name::kWideSummary);
}

void leak_pass(const AllocationTree& tree)
{
    _GFX_MEMLEAK_INFO report{};
    expect(get_memleak_info(&report) == 0 && std::ssize(vec_memleak_result) == tree.count() &&
               report.groups[0].sum_count > 0,
           name::kLeakQuery);
}

using Trees = std::array<const AllocationTree*, 2>;

// Times passes over the two trees in turn. The first pass is not timed: after it every way finds
// caches and heap alike, and the leak detector has its kept list.
void time_passes(benchmark::State& state, Trees trees, Pass pass)
{
    trees[1]->select();
    pass(*trees[1]);
    for ([[maybe_unused]] auto _ : state) {
        trees[0]->select();
        pass(*trees[0]);
        std::swap(trees[0], trees[1]);
    }
}

std::int64_t iterations_for(int count)
{
    return 1 + 10'000 / count;
}

Case pass_case(const char* case_name, const Trees& trees, Pass pass)
{
    const int count = trees[0]->count();
    return {case_name, count, iterations_for(count), false,
            [trees, pass](benchmark::State& state) { time_passes(state, trees, pass); }};
}

double seconds_of(Pass pass, const AllocationTree& tree)
{
    tree.select();
    const auto start = std::chrono::steady_clock::now();
    pass(tree);
    return std::chrono::duration<double>{std::chrono::steady_clock::now() - start}.count();
}

// Times what a leak query does besides reading: the query less the mean of the two readings that
// follow at once. Each reads the tree that was not read last, so that all find caches alike.
void time_merge_and_grouping(benchmark::State& state, Trees trees)
{
    seconds_of(leak_pass, *trees[1]);
    for ([[maybe_unused]] auto _ : state) {
        const double query = seconds_of(leak_pass, *trees[0]);
        const double reading =
            (seconds_of(reader_pass, *trees[1]) + seconds_of(reader_pass, *trees[0])) / 2;
        state.SetIterationTime(query - reading);
        std::swap(trees[0], trees[1]);
    }
}

Case merge_and_grouping_case(const Trees& trees)
{
    const int count = trees[0]->count();
    return {name::kMergeAndGrouping, count, iterations_for(count), true,
            [trees](benchmark::State& state) { time_merge_and_grouping(state, trees); }};
}

// The full pages of the raw list but the first, in turn.
class LaterPages final {
  public:
    explicit LaterPages(int count) : end_{count / RAW_LIST_BLOCK_MAX} {}
    int next()
    {
        page_ = page_ + 1 < end_ ? page_ + 1 : 1;
        return page_;
    }

  private:
    int end_;
    int page_ = 0;
};

constexpr std::int64_t kPageIterations = 20'000;

Case later_page_case(const AllocationTree& tree)
{
    return {name::kLaterPage, tree.count(), kPageIterations, false,
            [&tree](benchmark::State& state) {
                tree.select();
                raw_list_pass(tree);
                const find_adapter adapter{};
                _GFX_ALLOCATION_RAW_LIST page{};
                LaterPages pages{tree.count()};
                for ([[maybe_unused]] auto _ : state) {
                    page.page_index = pages.next();
                    benchmark::DoNotOptimize(get_allocation_raw_list(&page, &adapter));
                    benchmark::ClobberMemory();
                }
                expect(page.trasfer_cnt == RAW_LIST_BLOCK_MAX, name::kLaterPage);
            }};
}

// Copies from a list as long as the library's, page by page as above.
Case copy_case(const AllocationTree& tree)
{
    return {name::kCopy, tree.count(), kPageIterations, false, [&tree](benchmark::State& state) {
                const Records list = Records(static_cast<std::size_t>(tree.count()));
                _GFX_ALLOCATION_RAW_LIST page{};
                LaterPages pages{tree.count()};
                std::size_t size = sizeof page.records;
                benchmark::DoNotOptimize(size);
                for ([[maybe_unused]] auto _ : state) {
                    const int first = pages.next() * RAW_LIST_BLOCK_MAX;
                    std::memcpy(&page.records[0], list.data() + first, size);
                    benchmark::ClobberMemory();
                }
            }};
}

Records read_tree(const AllocationTree& tree)
{
    tree.select();
    return read_selected();
}

using Work = void (*)(Records& snapshot, Records& kept);

// Seconds of work(snapshot, kept) alone, on copies of the records.
double seconds_of(Work work, Records snapshot, Records kept)
{
    const std::size_t count = snapshot.size();
    const auto start = std::chrono::steady_clock::now();
    work(snapshot, kept);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    expect(kept.size() == count, name::kMerge);
    return took.count();
}

// The first work is not timed, as the first pass is not.
Case merge_case(const char* case_name, const AllocationTree& tree, const AllocationTree& other,
                Work work)
{
    const auto snapshot = std::make_shared<const Records>(read_tree(tree));
    const auto kept = std::make_shared<const Records>(read_tree(other));
    return {case_name, tree.count(), iterations_for(tree.count()), true,
            [=](benchmark::State& state) {
                seconds_of(work, *snapshot, *kept);
                for ([[maybe_unused]] auto _ : state) {
                    state.SetIterationTime(seconds_of(work, *snapshot, *kept));
                }
            }};
}

void merge_and_group_plainly(Records& snapshot, Records& kept)
{
    merge_plainly(snapshot, kept);
    benchmark::DoNotOptimize(group_plainly(kept));
}

void check_groups(const Records& records)
{
    const Records expected = group_plainly(records);
    _GFX_MEMLEAK_INFO report{};
    expect(get_memleak_info(&report) == 0, name::kLeakQuery);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        expect(report.groups[i].sum_count == expected[i].sum_count, name::kLeakQuery);
    }
}

}  // namespace

void check_tree(const AllocationTree& tree)
{
    bare_pass(tree);
    const Records records = read_tree(tree);
    const Records plain = read_plainly(tree.path());
    expect(std::ssize(records) == tree.count(), name::kReader);
    expect(plain.size() == records.size() &&
               std::memcmp(plain.data(), records.data(), records.size() * sizeof records[0]) == 0,
           name::kPlain);
    if (tree.count() <= kPlainLeaksMax) {
        check_groups(records);
    }
}

std::vector<Case> query_cases(const AllocationTree& tree)
{
    const Trees trees{&tree, &tree};
    std::vector<Case> cases = leak_cases(tree, tree);
    cases.push_back(pass_case(name::kBare, trees, bare_pass));
    cases.push_back(pass_case(name::kPlain, trees, plain_pass));
    cases.push_back(pass_case(name::kRawList, trees, raw_list_pass));
    cases.push_back(later_page_case(tree));
    cases.push_back(copy_case(tree));
    cases.push_back(pass_case(name::kSummary, trees, summary_pass));
    cases.push_back(pass_case(name::kWideSummary, trees, wide_summary_pass));
    if (tree.count() <= kPlainLeaksMax) {
        cases.push_back(merge_case(name::kPlainLeaks, tree, tree, merge_and_group_plainly));
    }
    return cases;
}

std::vector<Case> leak_cases(const AllocationTree& tree, const AllocationTree& other)
{
    const Trees trees{&tree, &other};
    return {pass_case(name::kReader, trees, reader_pass),
            pass_case(name::kLeakQuery, trees, leak_pass), merge_and_grouping_case(trees),
            merge_case(name::kMerge, tree, other, compare_memleak_list)};
}

}  // namespace nimba::bench
