// SPDX-License-Identifier: MIT
#include "tools/smi/seconds.hpp"

#include <charconv>
#include <cmath>

namespace nimba::smi {

std::optional<std::chrono::milliseconds> parse_seconds(const std::string& text, double shortest,
                                                       double longest)
{
    double seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool number = error == std::errc{} && end == text.data() + text.size();
    // "nan" and the like are numbers, too.
    if (!number || !std::isfinite(seconds) || seconds < shortest || seconds > longest) {
        return std::nullopt;
    }
    return std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

}  // namespace nimba::smi
