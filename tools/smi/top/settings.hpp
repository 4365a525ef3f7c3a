// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/top/plot.hpp"

#include <chrono>

namespace nimba::smi::top {

// How the live view asks and draws.
struct Settings {
    std::chrono::milliseconds interval{1000};
    Marks marks = Marks::kBraille;
    bool ascii = false;  // the terminal shows nothing else
};

// The interval goes to its next step in that direction; at the last one it stays.
void lengthen_interval(Settings& settings);
void shorten_interval(Settings& settings);

// Other marks come in turn, unless the terminal shows only some.
void take_next_marks(Settings& settings);

}  // namespace nimba::smi::top
