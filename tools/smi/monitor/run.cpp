// SPDX-License-Identifier: MIT
#include "tools/smi/monitor/run.hpp"

namespace nimba::smi {

Rhythm monitor_rhythm(const MonitorOptions& options, bool from_first)
{
    constexpr std::chrono::milliseconds kUsualInterval{1000};
    const auto interval = options.watch.value_or(options.interval.value_or(kUsualInterval));
    const uint64_t in_front = from_first ? 1 : 0;
    if (!options.watch) {
        return {interval, 1 + in_front};
    }
    return {interval, options.count ? std::optional(*options.count + in_front) : std::nullopt};
}

}  // namespace nimba::smi
