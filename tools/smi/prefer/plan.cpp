// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/plan.hpp"

#include "tools/smi/worker/requests.hpp"

#include <algorithm>
#include <utility>

namespace nimba::smi {

PreferencePlan plan_setting(std::vector<Preference> held, const Preference& preference)
{
    const auto first = std::ranges::find(held, preference.application, &Preference::application);
    if (first == held.end()) {
        held.push_back(preference);
    } else {
        *first = preference;
    }
    return {kPreferSetRequest, 1, preference, std::move(held)};
}

std::optional<PreferencePlan> plan_removal(std::vector<Preference> held,
                                           std::string_view application)
{
    const auto count = std::erase_if(
        held, [&](const Preference& preference) { return preference.application == application; });
    if (count == 0) {
        return std::nullopt;
    }
    Preference removed;
    removed.path = application;
    return PreferencePlan{kPreferRemoveRequest, static_cast<int>(count), std::move(removed),
                          std::move(held)};
}

}  // namespace nimba::smi
