// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi {

using Row = std::vector<std::string>;

// Rows of cells as lines with aligned columns, two blanks between them and none at a line's end.
// Every row has as many cells as the first. Cells are made printable. The columns in `right`, such
// as those of sizes, end at the same place instead of beginning there.
std::string aligned(const std::vector<Row>& rows, const std::vector<std::size_t>& right = {});

// A table whose rows come bit by bit. A column is as wide as its widest cell so far.
class GrowingTable final {
  public:
    explicit GrowingTable(std::vector<std::size_t> right) : right_{std::move(right)} {}

    // The next rows, like `aligned`.
    std::string lines(const std::vector<Row>& rows);

  private:
    std::vector<std::size_t> right_;
    std::vector<std::size_t> widths_;
};

}  // namespace nimba::smi
