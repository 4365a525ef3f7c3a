// SPDX-License-Identifier: MIT
// The faces of "prefer".
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/prefer/preference.hpp"
#include "tools/smi/worker/payload.hpp"

#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

// What the preference file holds.
struct PreferenceSnapshot {
    std::string file{};                                    // empty when HOME tells of none
    std::optional<std::vector<Preference>> preferences{};  // in file order; nothing when unknown
    std::optional<Discovery> discovery{};
    std::vector<Problem> problems{};
    std::vector<Problem> told{};  // were printed already
};

// A table; empty without preferences.
std::string preferences_text(const PreferenceSnapshot& snapshot);

std::string preferences_csv(const PreferenceSnapshot& snapshot);

// The document "nimba-smi.prefer.1".
std::string preferences_json(const PreferenceSnapshot& snapshot);

}  // namespace nimba::smi
