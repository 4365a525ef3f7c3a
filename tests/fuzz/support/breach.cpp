// SPDX-License-Identifier: MIT
#include "fuzz/support/breach.hpp"

#include "core/fatal.hpp"

// Instead of the library's.
void nimba::stop_process(const char* /*breach*/)
{
    throw fuzz::Breach{};
}
