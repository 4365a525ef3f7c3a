// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/text/table.hpp"

#include <string>
#include <vector>

namespace nimba::smi {

// Rows of cells as comma-separated values, a line each. Cells are made printable; those with a
// comma or a quotation mark, and those that a spreadsheet would take for a formula, stand in
// quotation marks.
std::string csv_text(const std::vector<Row>& rows);

}  // namespace nimba::smi
