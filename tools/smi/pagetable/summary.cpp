// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/summary.hpp"

#include "tools/smi/text/size.hpp"
#include "tools/smi/text/table.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <functional>
#include <numeric>

namespace nimba::smi {
namespace {

// What the columns are about.
struct Columns {
    bool pages_by_level = false;
    std::vector<uint64_t> page_sizes;
    std::vector<std::size_t> segments;
};

Columns columns_for(const SpaceSums& total)
{
    Columns columns;
    columns.pages_by_level = total.pages[0] + total.pages[1] > 0;
    for (const auto& [size, bytes] : total.by_page_size) {
        columns.page_sizes.push_back(size);
    }
    for (std::size_t i = 0; i < total.by_segment.size(); ++i) {
        if (total.by_segment.at(i) > 0) {
            columns.segments.push_back(i);
        }
    }
    return columns;
}

Row header_row(const Columns& columns)
{
    Row row{"PID", "L0", "L1", "L2"};
    if (columns.pages_by_level) {
        row.insert(row.end(), {"PAGES L0", "PAGES L1", "PAGES L2"});
    } else {
        row.emplace_back("PAGES");
    }
    std::ranges::transform(columns.page_sizes, std::back_inserter(row),
                           [](uint64_t size) { return size_text(size, SizeUnit::kAuto); });
    for (const std::size_t segment : columns.segments) {
        row.push_back(fmt::format("SEG {}", kMappedSegments.at(segment)));
    }
    row.emplace_back("MAPPED");
    row.emplace_back("PROCESS");
    return row;
}

Row text_row(const std::string& pid, const SpaceSums& sums, const std::string& name,
             const Columns& columns)
{
    Row row{pid};
    for (const uint64_t count : sums.tables) {
        row.push_back(std::to_string(count));
    }
    const std::size_t first_level = columns.pages_by_level ? 0 : kPageTableLevels - 1;
    for (std::size_t level = first_level; level < sums.pages.size(); ++level) {
        row.push_back(std::to_string(sums.pages.at(level)));
    }
    for (const uint64_t size : columns.page_sizes) {
        const auto found = sums.by_page_size.find(size);
        row.push_back(size_text(found == sums.by_page_size.end() ? 0 : found->second));
    }
    for (const std::size_t segment : columns.segments) {
        row.push_back(size_text(sums.by_segment.at(segment)));
    }
    row.push_back(size_text(sums.mapped));
    row.push_back(name);
    return row;
}

template <typename Array>
void add_each(Array& to, const Array& what)
{
    std::ranges::transform(to, what, to.begin(), std::plus{});
}

}  // namespace

void SpaceSums::add(const SpaceSums& other)
{
    add_each(tables, other.tables);
    add_each(pages, other.pages);
    add_each(by_segment, other.by_segment);
    for (const auto& [size, bytes] : other.by_page_size) {
        by_page_size[size] += bytes;
    }
    mapped += other.mapped;
}

SpaceSums sums_of(const VmDevice& device, const AddressSpace& space)
{
    SpaceSums sums{device.tables, device.pages, {}, {}, 0};
    for (const PageRun& run : space.runs) {
        const uint64_t bytes = run.range().size();
        const std::size_t segment =
            std::min<std::size_t>(run.kind.segment, kMappedSegments.size() - 1);
        sums.by_page_size[run.kind.page_size()] += bytes;
        sums.by_segment.at(segment) += bytes;
        sums.mapped += bytes;
    }
    return sums;
}

std::string summary_text(std::span<const ProcessSums> processes)
{
    SpaceSums total;
    for (const ProcessSums& process : processes) {
        total.add(process.sums);
    }
    const Columns columns = columns_for(total);
    std::vector<Row> rows{header_row(columns)};
    for (const auto& [device, sums] : processes) {
        rows.push_back(
            text_row(device.pid, sums, device.name.empty() ? "-" : device.name, columns));
    }
    rows.push_back(text_row("all", total, "", columns));
    std::vector<std::size_t> numbers(rows.front().size() - 2);
    std::iota(numbers.begin(), numbers.end(), 1);
    return aligned(rows, numbers);
}

}  // namespace nimba::smi
