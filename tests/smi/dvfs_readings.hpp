// SPDX-License-Identifier: MIT
// Readings of settings for tests.
#pragma once

#include "tools/smi/dvfs/reading.hpp"

#include <initializer_list>
#include <string_view>
#include <utility>

namespace nimba::smi {

// A reading of a Nimba-K1 at 0000:01:00.0 whose driver gives these fields and no others. Every node
// can be read and written.
inline DvfsReading reading_of(std::initializer_list<std::pair<std::string_view, int64_t>> given)
{
    DvfsReading reading;
    reading.bus_id = "0000:01:00.0";
    reading.chip = 0x1001;
    reading.values.resize(dvfs_fields().size());
    for (const auto& [name, value] : given) {
        reading.values[index_of(*find_field(name))] = value;
    }
    for (const char* node : {"power_mode", "pwm_wait_count", "dvfs_mode", "dvfs_level",
                             "dvfs_control_params", "dvfs_clk_voltage", "vclk", "mclk"}) {
        reading.nodes.push_back({node, std::string{"/info/"} + node, 0, 0});
    }
    return reading;
}

}  // namespace nimba::smi
