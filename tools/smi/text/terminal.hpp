// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>

namespace nimba::smi {

// The columns of the terminal that a descriptor is for; nothing when it is for none, or when the
// terminal does not tell.
std::optional<std::size_t> terminal_columns(int fd);

}  // namespace nimba::smi
