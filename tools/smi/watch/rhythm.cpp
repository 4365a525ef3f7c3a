// SPDX-License-Identifier: MIT
#include "tools/smi/watch/rhythm.hpp"

#include <algorithm>

namespace nimba::smi {

void keep_rhythm(const Rhythm& rhythm, const StopSignals& stop,
                 const std::function<bool(uint64_t number)>& round)
{
    using Clock = std::chrono::steady_clock;
    const uint64_t count = rhythm.count.value_or(UINT64_MAX);
    auto next = Clock::now();
    uint64_t number = 0;
    do {
        ++number;
        if (!round(number)) {
            return;
        }
        if (number == 1) {
            next = Clock::now();  // the first round starts the processes, too
        }
        next = std::max(next + rhythm.interval, Clock::now());
    } while (number < count && !stop.wait_until(next));
}

}  // namespace nimba::smi
