// SPDX-License-Identifier: MIT
#include "tools/smi/seconds.hpp"

#include <CLI/CLI.hpp>

#include <cmath>

namespace nimba::smi {

std::optional<std::chrono::milliseconds> parse_seconds(const std::string& text, double shortest,
                                                       double longest)
{
    double seconds = 0;
    const bool number = CLI::detail::lexical_cast(text, seconds);
    // "nan" and the like are numbers to the parser.
    if (!number || !std::isfinite(seconds) || seconds < shortest || seconds > longest) {
        return std::nullopt;
    }
    return std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

}  // namespace nimba::smi
