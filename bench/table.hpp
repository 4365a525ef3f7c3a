// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace nimba::bench {

// One measured value, and what it is held against.
struct Row {
    std::string measured;
    std::string count;  // of what was measured
    std::string total;
    std::string each;  // one of these
    std::string against;
    std::string ratio;
    std::string limit;
    std::optional<bool> met = std::nullopt;  // none: there is no limit
};

// The rows as one Markdown table whose columns line up in a terminal, too. `counted` says what the
// counts are of.
std::string render_table(const std::vector<Row>& rows, const std::string& counted);

// 1234567 as "1,234,567".
std::string grouped(long long number);

// A time with three digits and its unit, from nanoseconds to seconds. Differences may be negative.
std::string duration_text(double nanoseconds);

}  // namespace nimba::bench
