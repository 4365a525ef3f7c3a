// SPDX-License-Identifier: MIT
#include "tools/smi/text/table.hpp"

#include "tools/smi/text/printable.hpp"

#include <algorithm>
#include <cstddef>

namespace nimba::smi {
namespace {

constexpr std::size_t kGap = 2;

std::vector<Row> printable_rows(const std::vector<Row>& rows)
{
    std::vector<Row> result = rows;
    for (Row& row : result) {
        std::ranges::transform(row, row.begin(), printable);
    }
    return result;
}

void widen(std::vector<std::size_t>& widths, const std::vector<Row>& rows)
{
    for (const Row& row : rows) {
        widths.resize(row.size());
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], columns(row[i]));
        }
    }
}

}  // namespace

std::string aligned(const std::vector<Row>& rows, const std::vector<std::size_t>& right)
{
    return GrowingTable{right}.lines(rows);
}

std::string GrowingTable::lines(const std::vector<Row>& rows)
{
    const std::vector<Row> cells = printable_rows(rows);
    widen(widths_, cells);
    std::string text;
    for (const Row& row : cells) {
        std::size_t blanks = 0;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::size_t rest = widths_[i] - columns(row[i]);
            const bool at_right = std::ranges::find(right_, i) != right_.end();
            if (!row[i].empty()) {
                text.append(blanks + (at_right ? rest : 0), ' ') += row[i];
                blanks = at_right ? 0 : rest;
            } else {
                blanks += rest;
            }
            blanks += kGap;
        }
        text += '\n';
    }
    return text;
}

}  // namespace nimba::smi
