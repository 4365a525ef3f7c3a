// SPDX-License-Identifier: MIT
#include "tools/smi/text/csv.hpp"

#include "tools/smi/text/printable.hpp"

namespace nimba::smi {
namespace {

bool is_number(std::string_view text)
{
    return text.find_first_not_of("0123456789", text.starts_with('-') ? 1 : 0) ==
           std::string_view::npos;
}

bool needs_marks(std::string_view text)
{
    constexpr std::string_view kFormula = "=+-@";
    return text.find_first_of("\",") != std::string_view::npos ||
           (!text.empty() && kFormula.find(text.front()) != std::string_view::npos &&
            !is_number(text));
}

std::string cell_text(const std::string& cell)
{
    std::string text = printable(cell);
    if (!needs_marks(text)) {
        return text;
    }
    std::string quoted{'"'};
    for (const char c : text) {
        quoted.append(c == '"' ? 2 : 1, c);
    }
    return quoted + '"';
}

}  // namespace

std::string csv_text(const std::vector<Row>& rows)
{
    std::string text;
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            text += i == 0 ? "" : ",";
            text += cell_text(row[i]);
        }
        text += '\n';
    }
    return text;
}

}  // namespace nimba::smi
