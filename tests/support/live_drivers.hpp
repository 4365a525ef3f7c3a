// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <string>

namespace nimba::test {

// Whether machines of this nimba-sim can have live drivers here: the user may mount FUSE file
// systems. Skip tests that need them where they cannot.
inline bool live_drivers_work(const std::string& nimba_sim)
{
    static const bool kWork =
        std::system((nimba_sim + " run --drivers live -- true >/dev/null 2>&1").c_str()) == 0;
    return kWork;
}

}  // namespace nimba::test
