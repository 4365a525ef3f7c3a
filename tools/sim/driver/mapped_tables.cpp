// SPDX-License-Identifier: MIT
#include "driver/mapped_tables.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>

namespace nimba::sim {
namespace {

// In pages of 4 KiB.
constexpr uint64_t kLargePage = 16;
constexpr uint64_t kLevel2Span = 512;
constexpr uint64_t kLevel1Span = 512 * kLevel2Span;
constexpr uint64_t kLevel0Span = 512 * kLevel1Span;

uint64_t round_down(uint64_t page, uint64_t span)
{
    return page / span * span;
}

uint64_t round_up(uint64_t page, uint64_t span)
{
    return round_down(page + span - 1, span);
}

// The part of a run that lies between two pages.
PageRun cut(const PageRun& run, uint64_t begin, uint64_t end)
{
    PageRun part = run;
    part.begin = std::max(run.begin, begin);
    part.end = std::min(run.end, end);
    part.physical += (part.begin - run.begin) * kPageSize;
    return part;
}

class Walk {
  public:
    Walk(PageTableText& text, uint64_t most_entries) : text_{text}, left_{most_entries} {}

    void add(std::span<const PageRun> runs);

  private:
    void add_level1(uint64_t index, std::span<const PageRun> runs);
    void add_level2(std::span<const PageRun> parts);
    void add_pages(unsigned level, const PageRun& run, uint64_t page_size);

    PageTableText& text_;
    uint64_t left_;  // entries that may still come
    std::optional<uint64_t> level0_;
    std::vector<PageRun> parts_;
};

void Walk::add(std::span<const PageRun> runs)
{
    uint64_t done = 0;  // the pages before this one are
    while (!runs.empty() && left_ > 0) {
        const uint64_t index = std::max(done, runs.front().begin) / kLevel1Span;
        done = (index + 1) * kLevel1Span;
        const auto behind = std::ranges::lower_bound(runs, done, {}, &PageRun::begin);
        add_level1(index, {runs.begin(), behind});
        const auto next = std::ranges::upper_bound(runs, done, {}, &PageRun::end);
        runs = {next, runs.end()};
    }
}

void Walk::add_level1(uint64_t index, std::span<const PageRun> runs)
{
    const uint64_t begin = index * kLevel1Span;
    if (level0_ != begin / kLevel0Span) {
        level0_ = begin / kLevel0Span;
        text_.add_table(0, *level0_);
    }
    text_.add_table(1, index);
    parts_.clear();
    const auto add_part = [this](const PageRun& part) {
        if (part.begin < part.end) {
            parts_.push_back(part);
        }
    };
    for (const PageRun& run : runs) {
        const PageRun here = cut(run, begin, begin + kLevel1Span);
        const uint64_t whole_begin = round_up(here.begin, kLevel2Span);
        const uint64_t whole_end = std::max(whole_begin, round_down(here.end, kLevel2Span));
        add_part(cut(here, here.begin, whole_begin));
        add_pages(1, cut(here, whole_begin, whole_end), kLevel2Span);
        add_part(cut(here, whole_end, here.end));
    }
    for (auto first = parts_.begin(); first != parts_.end() && left_ > 0;) {
        const uint64_t table = first->begin / kLevel2Span;
        const auto last = std::find_if(first, parts_.end(), [=](const PageRun& part) {
            return part.begin / kLevel2Span != table;
        });
        add_level2({first, last});
        first = last;
    }
}

void Walk::add_level2(std::span<const PageRun> parts)
{
    text_.add_table(2, parts.front().begin / kLevel2Span);
    const bool large = std::ranges::all_of(parts, [](const PageRun& part) {
        return part.begin % kLargePage == 0 && part.end % kLargePage == 0;
    });
    for (const PageRun& part : parts) {
        add_pages(2, part, large ? kLargePage : 1);
    }
}

// Pages of so many small ones, in a sub-table of 2 MiB (level 2) or of 1 GiB (level 1).
void Walk::add_pages(unsigned level, const PageRun& run, uint64_t page_size)
{
    const uint64_t table_span = level == 2 ? kLevel2Span : kLevel1Span;
    for (uint64_t page = run.begin; page < run.end && left_ > 0; page += page_size, --left_) {
        text_.add_page(
            level, page % table_span / page_size,
            {run.snoop, run.segment, page_size > 1, run.physical + (page - run.begin) * kPageSize});
    }
}

}  // namespace

void add_mapped_tables(const std::vector<PageRun>& runs, PageTableText& text, uint64_t most_entries)
{
    Walk{text, most_entries}.add(runs);
}

}  // namespace nimba::sim
