// SPDX-License-Identifier: MIT
// What a change of the preferences asks of the library, and what has to come out.
#pragma once

#include "tools/smi/prefer/preference.hpp"

#include <optional>
#include <string_view>
#include <vector>

namespace nimba::smi {

struct PreferencePlan {
    std::string_view request{};  // to be made `times`
    int times = 0;
    Preference preference{};
    std::vector<Preference> expected{};  // what is held then

    bool operator==(const PreferencePlan&) const = default;
};

// Setting a preference replaces the first one of its application, or adds one.
PreferencePlan plan_setting(std::vector<Preference> held, const Preference& preference);

// Removing what an application has, however often it is there; nothing when it is not.
std::optional<PreferencePlan> plan_removal(std::vector<Preference> held,
                                           std::string_view application);

}  // namespace nimba::smi
