// SPDX-License-Identifier: MIT
// What a worker keeps between the samples of its adapter.
#pragma once

#include "tools/smi/worker/monitor_library.hpp"

namespace nimba::smi {

struct Monitor {
    MonitorEntryPoints entry;
    bool counting = false;   // what follows is known: counters were prepared
    bool bandwidth = false;  // the kernel-interface library tells bandwidth
    bool busy = false;       // it tells how busy the engines are
};

}  // namespace nimba::smi
