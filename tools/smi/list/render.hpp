// SPDX-License-Identifier: MIT
// The faces of a listing.
#pragma once

#include "tools/smi/list/snapshot.hpp"

#include <string>

namespace nimba::smi {

// A table, at most 80 columns wide for names of the product's length; empty when nothing was found.
std::string list_text(const ListSnapshot& snapshot);

// The document "nimba-smi.list.1".
std::string list_json(const ListSnapshot& snapshot);

}  // namespace nimba::smi
