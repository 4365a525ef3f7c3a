// SPDX-License-Identifier: MIT
// What JSON documents are, for who passes them on: text/json.hpp makes them.
#pragma once

#include <nlohmann/json_fwd.hpp>

namespace nimba::smi {

// Keys come out in the order in which they are written.
using Document = nlohmann::ordered_json;

}  // namespace nimba::smi
