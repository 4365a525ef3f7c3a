// SPDX-License-Identifier: MIT
// Values over time as a picture.
#pragma once

#include "tools/smi/report/html.hpp"

#include <optional>
#include <string>
#include <vector>

namespace nimba::smi::page {

struct Line {
    std::string name;
    std::vector<std::optional<double>> values;  // one for each of the times
};

struct Plot {
    std::string title;
    std::string unit;             // behind the numbers; may be empty
    std::vector<double> seconds;  // rising
    std::vector<Line> lines;
};

// A picture of the lines that have a value, from 0 up, and a table of their least, greatest and
// last values. A value that is missing leaves a gap. Of many samples, each column of the picture
// has the least and the greatest value of its time. Nothing when no line has a value, or no time
// passed.
Html plot_html(const Plot& plot);

}  // namespace nimba::smi::page
