// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace nimba::smi {

using Row = std::vector<std::string>;

// Rows of cells as lines with aligned columns, two blanks between them and none at a line's end.
// Every row has as many cells as the first. Cells are made printable.
std::string aligned(const std::vector<Row>& rows);

}  // namespace nimba::smi
