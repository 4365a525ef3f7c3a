// SPDX-License-Identifier: MIT
#include "bench/page_tables/report.hpp"

#include "bench/page_tables/cases.hpp"
#include "bench/page_tables/export_cases.hpp"
#include "bench/rows.hpp"

#include <fmt/format.h>

namespace nimba::bench {
namespace {

constexpr double kParserLimit = 0.25;     // x the plain way
constexpr double kCollectionLimit = 3.5;  // x the bare pass
constexpr double kDoublingLimit = 2.2;    // x the time of half as many lines
constexpr double kExportLimit = 2.5;      // x copy and digits
constexpr double kPeakLimit = 1.1;        // x what is needed
constexpr double kLargeBlockLimit = 1;    // x the arrays that are needed

}  // namespace

std::vector<Row> dump_rows(const Samples& samples, const DumpTree& tree, const std::string& devices)
{
    const auto median = [&](const char* measured) {
        return samples.median(measured, tree.lines());
    };
    const auto row = [&](const char* measured) {
        return time_row(measured + (", " + devices), tree.lines(), median(measured));
    };
    const auto row_against = [&](const char* measured, const char* against, const char* called) {
        return held_against(row(measured), called, median(measured) / median(against));
    };
    const auto limited_row = [&](const char* measured, const char* against, const char* called,
                                 double limit) {
        return limited(row_against(measured, against, called), median(measured) / median(against),
                       limit);
    };
    return {
        row(name::kBareDumps),
        row_against(name::kPlainDumps, name::kBareDumps, "bare"),
        limited_row(name::kParser, name::kPlainDumps, "plain", kParserLimit),
        row_against(name::kPlainReused, name::kPlainDumps, "plain"),
        limited_row(name::kParserReused, name::kPlainReused, "plain, reused", kParserLimit),
        limited_row(name::kCollection, name::kBareDumps, "bare", kCollectionLimit),
        row(name::kCollectionAndPs),
    };
}

std::vector<Row> dump_growth_rows(const Samples& samples, const DumpTree& half,
                                  const DumpTree& tree)
{
    std::vector<Row> rows;
    for (const char* const measured : {name::kParser, name::kCollection}) {
        const double first = samples.median(measured, half.lines());
        const double total = samples.median(measured, tree.lines());
        rows.push_back(time_row(measured + std::string{", half the lines"}, half.lines(), first));
        const Row row = time_row(measured + std::string{", twice the lines"}, tree.lines(), total);
        rows.push_back(limited(held_against(row, grouped(half.lines()), total / first),
                               total / first, kDoublingLimit));
    }
    return rows;
}

std::vector<Row> export_rows(const Samples& samples, const DumpTree& tree)
{
    const int records = tree.lines();
    const double copy = samples.median(name::kRecordCopy, records);
    const double digits = samples.median(name::kDigits, records);
    const double total = samples.median(name::kExport, records);
    const double ratio = total / (copy + digits);
    return {time_row(name::kRecordCopy, records, copy), time_row(name::kDigits, records, digits),
            limited(held_against(time_row(name::kExport, records, total), "copy + digits", ratio),
                    ratio, kExportLimit)};
}

std::vector<Row> collection_memory_rows(const CollectionMemory& memory, const DumpTree& tree,
                                        const std::string& devices)
{
    const CollectionMemory needed = needed_memory(tree);
    const auto peak = static_cast<double>(memory.peak);
    const double peak_ratio = peak / static_cast<double>(needed.peak);
    const double block_ratio =
        static_cast<double>(memory.large_blocks) / static_cast<double>(needed.large_blocks);
    const Row peak_row =
        memory_row("peak memory of get_PageTable_data, " + devices, tree.lines(), peak);
    const Row block_row{"blocks from 1 MiB of get_PageTable_data, " + devices,
                        grouped(tree.lines()),
                        grouped(memory.large_blocks),
                        "",
                        "",
                        "",
                        ""};
    return {
        limited(held_against(peak_row, "the needed bytes", peak_ratio), peak_ratio, kPeakLimit),
        limited(held_against(block_row, fmt::format("{} arrays", needed.large_blocks), block_ratio),
                block_ratio, kLargeBlockLimit)};
}

}  // namespace nimba::bench
