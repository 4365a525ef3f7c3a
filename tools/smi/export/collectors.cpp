// SPDX-License-Identifier: MIT
#include "tools/smi/export/collectors.hpp"

#include <algorithm>

namespace nimba::smi::exporting {

std::optional<CollectorSet> parse_collectors(std::string_view text)
{
    CollectorSet collectors;
    while (true) {
        const auto comma = text.find(',');
        const auto* const name = std::ranges::find(kCollectorNames, text.substr(0, comma));
        if (name == kCollectorNames.end()) {
            return std::nullopt;
        }
        collectors.set(static_cast<std::size_t>(name - kCollectorNames.begin()));
        if (comma == std::string_view::npos) {
            return collectors;
        }
        text.remove_prefix(comma + 1);
    }
}

}  // namespace nimba::smi::exporting
