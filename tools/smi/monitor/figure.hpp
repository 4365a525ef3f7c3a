// SPDX-License-Identifier: MIT
// Figures of an adapter, one beside the other in a row.
#pragma once

#include "tools/smi/monitor/view.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace nimba::smi {

// Nothing: the figure is not available. A fraction is always a finite number.
using Figure = std::optional<std::variant<int64_t, double, std::string>>;
using Figures = std::vector<Figure>;

// Columns of one key that follow each other are the words of a record, numbered from 0: one cell in
// text, an array in JSON.
struct FigureColumn {
    const char* key;
    const char* heading;
    const char* unit = "";  // behind the figure, in text
};

// A number that may be none, as a figure.
Figure figure(const std::optional<int64_t>& number);
Figure figure(const std::optional<double>& number);

// The view of a command whose adapters have a figure for each of the columns.
MonitorView<Figures> figure_view(std::string schema, std::span<const FigureColumn> columns);

}  // namespace nimba::smi
