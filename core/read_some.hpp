// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace nimba {

// As read(2), but never interrupted.
inline ssize_t read_some(int descriptor, char* buffer, std::size_t size)
{
    ssize_t count = -1;
    do {
        count = ::read(descriptor, buffer, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

// Reads until the end, an error or `size` bytes. Returns their number.
inline std::size_t read_until_full(int descriptor, char* buffer, std::size_t size)
{
    std::size_t held = 0;
    while (held < size) {
        const ssize_t count = read_some(descriptor, buffer + held, size - held);
        if (count <= 0) {
            break;
        }
        held += static_cast<std::size_t>(count);
    }
    return held;
}

}  // namespace nimba
