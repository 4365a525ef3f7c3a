// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/leaks/result.hpp"
#include "tools/smi/options.hpp"

#include <cstdint>
#include <functional>
#include <span>

namespace nimba::smi {

// Hears after each snapshot how many have been taken, or tried, and what they have shown.
using SnapshotListener = std::function<void(uint64_t, std::span<const AdapterHistory>)>;

// Takes snapshots of the adapters that the options choose, as many as they tell or until a stop
// signal. An adapter that cannot be read is tried again at the next snapshot; one whose worker is
// lost is left out from then on, since the library's memory of it is lost, too.
LeaksResult watch_for_leaks(const Options& options, const SnapshotListener& listener);

}  // namespace nimba::smi
