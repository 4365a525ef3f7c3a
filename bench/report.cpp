// SPDX-License-Identifier: MIT
#include "bench/report.hpp"

#include "bench/cases.hpp"
#include "bench/rows.hpp"
#include "nimba_mgmt_interface.h"

#include <fmt/format.h>

#include <algorithm>

namespace nimba::bench {
namespace {

constexpr double kReaderLimit = 1.25;      // x the bare reading
constexpr double kRawListLimit = 1.2;      // x the reader
constexpr double kLeakLimit = 0.25;        // x the reader, for merge and grouping
constexpr double kDoublingLimit = 2.3;     // x the time of half as many allocations
constexpr double kLaterPageLimit = 100.0;  // ns more than the copy
constexpr double kReaderMemoryLimit = 3.0;
constexpr double kQueryMemoryLimit = 6.0;

constexpr char kReading[] = "the reader";

Row reader_row(const Samples& samples, int size)
{
    const double reader = samples.median(name::kReader, size);
    const double ratio = reader / samples.median(name::kBare, size);
    return limited(held_against(time_row(name::kReader, size, reader), "bare", ratio), ratio,
                   kReaderLimit);
}

Row against_reader(const Samples& samples, const char* measured, int size)
{
    const double total = samples.median(measured, size);
    return held_against(time_row(measured, size, total), kReading,
                        total / samples.median(name::kReader, size));
}

Row raw_list_row(const Samples& samples, int size)
{
    const double ratio = samples.median(name::kRawList, size) / samples.median(name::kReader, size);
    return limited(against_reader(samples, name::kRawList, size), ratio, kRawListLimit);
}

Row copy_row(const Samples& samples, int size)
{
    return {
        name::kCopy, grouped(size), duration_text(samples.median(name::kCopy, size)), "", "", "",
        ""};
}

Row later_page_row(const Samples& samples, int size)
{
    const double page = samples.median(name::kLaterPage, size);
    const double more = page - samples.median(name::kCopy, size);
    return {name::kLaterPage,
            grouped(size),
            duration_text(page),
            "",
            "memcpy",
            fmt::format("{:+.0f} ns", more),
            fmt::format("{:+.0f} ns", kLaterPageLimit),
            more <= kLaterPageLimit};
}

Row merge_and_grouping_row(const Samples& samples, int size, const std::string& condition)
{
    const double total = samples.median(name::kMergeAndGrouping, size);
    const double ratio = total / samples.median(name::kReader, size);
    const Row row = time_row(name::kMergeAndGrouping + condition, size, total);
    return limited(held_against(row, kReading, ratio), ratio, kLeakLimit);
}

Row doubling_row(const Samples& samples, const char* measured, int half, int size,
                 const std::string& condition)
{
    const double total = samples.median(measured, size);
    const double ratio = total / samples.median(measured, half);
    const Row row = held_against(time_row(measured + condition, size, total), grouped(half), ratio);
    // The merge alone is so quick that the memory's own levels show in it.
    return measured == std::string_view{name::kLeakQuery} ? limited(row, ratio, kDoublingLimit)
                                                          : row;
}

Row peak_row(const char* measured, int size, std::int64_t peak, double limit)
{
    const auto records =
        static_cast<double>(size) * static_cast<double>(sizeof(_GFX_ALLOCATION_INFO));
    const auto bytes = static_cast<double>(peak);
    const Row row = memory_row(std::string{"peak memory of "} + measured, size, bytes);
    return limited(held_against(row, "the records", bytes / records), bytes / records, limit);
}

}  // namespace

std::vector<Row> query_rows(const Samples& samples, int size)
{
    const double bare = samples.median(name::kBare, size);
    const double plain = samples.median(name::kPlain, size);
    std::vector<Row> rows{
        time_row(name::kBare, size, bare),
        held_against(time_row(name::kPlain, size, plain), "bare", plain / bare),
        reader_row(samples, size),
        raw_list_row(samples, size),
        copy_row(samples, size),
        later_page_row(samples, size),
        against_reader(samples, name::kSummary, size),
        against_reader(samples, name::kWideSummary, size),
        against_reader(samples, name::kLeakQuery, size),
        merge_and_grouping_row(samples, size, ""),
        against_reader(samples, name::kMerge, size),
    };
    if (samples.has(name::kPlainLeaks, size)) {
        rows.push_back(against_reader(samples, name::kPlainLeaks, size));
    }
    return rows;
}

std::vector<Row> growth_rows(const Samples& samples, const Sizes& sizes,
                             const std::string& condition)
{
    const std::string behind = ", " + condition;
    std::vector<Row> rows;
    for (const int size : sizes) {
        rows.push_back(merge_and_grouping_row(samples, size, behind));
    }
    for (const char* const measured : {name::kLeakQuery, name::kMerge}) {
        const double first = samples.median(measured, sizes[0]);
        rows.push_back(time_row(measured + behind, sizes[0], first));
        for (std::size_t i = 1; i < sizes.size(); ++i) {
            rows.push_back(doubling_row(samples, measured, sizes[i - 1], sizes[i], behind));
        }
    }
    return rows;
}

std::vector<Row> memory_rows(const PeakMemory& peak, int size)
{
    return {peak_row(name::kReader, size, peak.reader, kReaderMemoryLimit),
            peak_row(name::kRawList, size, peak.raw_list, kQueryMemoryLimit),
            peak_row(name::kLeakQuery, size, peak.leak_query, kQueryMemoryLimit)};
}

std::string verdict(const std::vector<Row>& rows)
{
    const auto limits =
        std::count_if(rows.begin(), rows.end(), [](const Row& row) { return row.met.has_value(); });
    const auto met = std::count_if(rows.begin(), rows.end(),
                                   [](const Row& row) { return row.met.value_or(false); });
    return fmt::format("{} of {} limits are met.\n", met, limits);
}

}  // namespace nimba::bench
