// SPDX-License-Identifier: MIT
// From where on a figure deserves attention.
#pragma once

#include <cstdint>

namespace nimba::smi {

enum class Load : uint8_t { kUsual, kHigh, kCritical };

// Of memory or an engine: high from 70 per cent on, critical from 90 on.
Load load_of_percent(int64_t percent);

// High from 70 degrees Celsius on, critical from 85 on.
Load load_of_temperature(int64_t celsius);

}  // namespace nimba::smi
