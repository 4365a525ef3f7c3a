// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>

namespace nimba {

// Writes the text, in one write unless the file takes less, and is not interrupted. Returns false
// when not all of it was taken.
inline bool write_all(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return false;
        }
        text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

}  // namespace nimba
