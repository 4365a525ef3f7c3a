// SPDX-License-Identifier: MIT
#pragma once

#include "tools/archive/capture.hpp"

#include <string_view>
#include <unordered_map>

namespace nimba::sim {

// What could not be read in any of the samples, each time with the same error: that error by
// encoded path. The views are of the capture.
std::unordered_map<std::string_view, std::string_view> lasting_errors(
    const archive::Capture& capture);

}  // namespace nimba::sim
