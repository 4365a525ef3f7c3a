// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/memory/adapter_choice.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace nimba::smi {

enum class PreferAction : uint8_t { kNone, kList, kSet, kRemove };

struct PreferOptions {
    PreferAction action = PreferAction::kNone;
    std::string application{};           // to set or to remove, as it was typed
    std::optional<AdapterChoice> gpu{};  // to set
    int32_t value = 1;                   // to set
};

}  // namespace nimba::smi
