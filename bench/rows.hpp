// SPDX-License-Identifier: MIT
#pragma once

#include "bench/table.hpp"

#include <string>

namespace nimba::bench {

// A time in nanoseconds of `count` things, held against nothing yet.
Row time_row(const std::string& measured, int count, double total);

// Bytes that `count` things take, likewise.
Row memory_row(const std::string& measured, int count, double bytes);

// What `row` measured is `ratio` times what `against` names.
Row held_against(Row row, const std::string& against, double ratio);

// The ratio may be up to `limit`.
Row limited(Row row, double ratio, double limit);

}  // namespace nimba::bench
