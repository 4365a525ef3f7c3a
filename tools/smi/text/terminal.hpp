// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>

namespace nimba::smi {

// The columns of the terminal that a descriptor is for; nothing when it is for none, or when the
// terminal does not tell.
std::optional<std::size_t> terminal_columns(int fd);

// What decides which characters a terminal shows: null is a variable that is not set.
struct LocaleSetting {
    const char* lc_all = nullptr;
    const char* lc_ctype = nullptr;
    const char* lang = nullptr;
};

// Whether the locale's characters are UTF-8, by the first of the variables that is not empty.
bool is_utf8(const LocaleSetting& setting);

// Whether a descriptor is for a terminal that shows UTF-8, in this process's environment.
bool shows_utf8(int fd);

}  // namespace nimba::smi
