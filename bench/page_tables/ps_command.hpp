// SPDX-License-Identifier: MIT
#pragma once

namespace nimba::bench {

// Which "ps" the library finds.
enum class Ps {
    kStub,    // the program beside this one that writes one name and ends
    kSystem,  // that of the system
};

void select_ps(Ps ps);

}  // namespace nimba::bench
