// SPDX-License-Identifier: MIT
#include "tools/smi/monitor/printer.hpp"

namespace nimba::smi {

std::vector<std::size_t> moved_columns(std::vector<std::size_t> columns, std::size_t before)
{
    std::ranges::transform(columns, columns.begin(),
                           [before](std::size_t column) { return column + before; });
    return columns;
}

Row joined_row(Row before, const Row& behind)
{
    std::ranges::copy(behind, std::back_inserter(before));
    return before;
}

}  // namespace nimba::smi
