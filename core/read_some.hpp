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

}  // namespace nimba
