// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <cstdint>

namespace nimba {

// Makes up to ten passes over the driver's nodes, with a pause of so many microseconds after each
// that returns a negative status, the last included. Returns the status of the last pass.
template <typename Pass>
int32_t try_passes(useconds_t pause, Pass&& pass)
{
    int32_t status = -1;
    for (int attempt = 0; attempt < 10 && status < 0; ++attempt) {
        status = pass();
        if (status < 0) {
            ::usleep(pause);
        }
    }
    return status;
}

}  // namespace nimba
