// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace nimba::smi {

enum class FlagAction : uint8_t { kNone, kGet, kSet, kClear };

struct FlagOptions {
    FlagAction action = FlagAction::kNone;
    uint32_t bits = 0;  // to set or clear
};

}  // namespace nimba::smi
