// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/leaks/result.hpp"
#include "tools/smi/options.hpp"

namespace nimba::smi {

// Takes snapshots of the adapters that the options choose, as many as they tell or until SIGINT or
// SIGTERM. An adapter that cannot be read is tried again at the next snapshot; one whose worker is
// lost is left out from then on, since the library's memory of it is lost, too.
LeaksResult watch_for_leaks(const Options& options);

}  // namespace nimba::smi
