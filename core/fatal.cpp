// SPDX-License-Identifier: MIT
#include "core/fatal.hpp"

#include <cstdio>
#include <cstdlib>

namespace nimba {

void stop_process(const char* breach)
{
    std::fprintf(stderr, "libnimba_mgmt_interface: %s\n", breach);
    std::abort();
}

}  // namespace nimba
