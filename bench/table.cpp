// SPDX-License-Identifier: MIT
#include "bench/table.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace nimba::bench {
namespace {

constexpr std::size_t kColumns = 8;
using Cells = std::array<std::string, kColumns>;

Cells headings(const std::string& counted)
{
    return {"measured", counted, "total", "each", "against", "ratio", "limit", "met"};
}

constexpr bool is_text(std::size_t column)
{
    return column == 0 || column == 4 || column == 7;
}

std::string met_text(std::optional<bool> met)
{
    if (!met) {
        return "";
    }
    return *met ? "yes" : "NO";
}

Cells cells_of(const Row& row)
{
    return {row.measured, row.count, row.total, row.each,
            row.against,  row.ratio, row.limit, met_text(row.met)};
}

std::string line(const Cells& cells, const std::array<std::size_t, kColumns>& widths)
{
    std::string text = "|";
    for (std::size_t i = 0; i < kColumns; ++i) {
        text += is_text(i) ? fmt::format(" {:<{}} |", cells[i], widths[i])
                           : fmt::format(" {:>{}} |", cells[i], widths[i]);
    }
    return text + "\n";
}

}  // namespace

std::string render_table(const std::vector<Row>& rows, const std::string& counted)
{
    std::array<std::size_t, kColumns> widths{};
    const auto widen = [&](const Cells& cells) {
        for (std::size_t i = 0; i < kColumns; ++i) {
            widths[i] = std::max(widths[i], cells[i].size());
        }
    };
    const Cells heading = headings(counted);
    widen(heading);
    for (const Row& row : rows) {
        widen(cells_of(row));
    }

    std::string text = line(heading, widths) + "|";
    for (std::size_t i = 0; i < kColumns; ++i) {
        const std::string dashes(widths[i], '-');
        text += is_text(i) ? fmt::format(" {} |", dashes) : fmt::format(" {}:|", dashes);
    }
    text += "\n";
    for (const Row& row : rows) {
        text += line(cells_of(row), widths);
    }
    return text;
}

std::string grouped(long long number)
{
    std::string text = std::to_string(number);
    for (std::size_t i = text.size(); i > 3;) {
        i -= 3;
        text.insert(i, 1, ',');
    }
    return text;
}

std::string duration_text(double nanoseconds)
{
    double value = nanoseconds;
    const char* unit = "ns";
    for (const char* const larger : {"us", "ms", "s"}) {
        if (std::abs(value) < 1000) {
            break;
        }
        value /= 1000;
        unit = larger;
    }
    if (std::abs(value) >= 100) {
        return fmt::format("{:.0f} {}", value, unit);
    }
    return fmt::format("{:.{}f} {}", value, std::abs(value) < 10 ? 2 : 1, unit);
}

}  // namespace nimba::bench
