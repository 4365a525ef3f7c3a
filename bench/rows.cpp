// SPDX-License-Identifier: MIT
#include "bench/rows.hpp"

#include <fmt/format.h>

namespace nimba::bench {

Row time_row(const std::string& measured, int count, double total)
{
    return {measured, grouped(count), duration_text(total), duration_text(total / count), "", "",
            ""};
}

Row memory_row(const std::string& measured, int count, double bytes)
{
    return {measured,
            grouped(count),
            fmt::format("{:.2f} MB", bytes / 1e6),
            fmt::format("{:.0f} bytes", bytes / count),
            "",
            "",
            ""};
}

Row held_against(Row row, const std::string& against, double ratio)
{
    row.against = against;
    row.ratio = fmt::format("{:.3f}", ratio);
    return row;
}

Row limited(Row row, double ratio, double limit)
{
    row.limit = fmt::format("{}", limit);
    row.met = ratio <= limit;
    return row;
}

}  // namespace nimba::bench
