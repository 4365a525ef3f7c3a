// SPDX-License-Identifier: MIT
#include "tools/smi/text/colour.hpp"

#include <unistd.h>

#include <fmt/core.h>

#include <cstdlib>

namespace nimba::smi {
namespace {

// The parameter of the sequence that selects a colour; the default one for none.
int colour_code(Colour colour)
{
    switch (colour) {
        case Colour::kRed:
            return 31;
        case Colour::kGreen:
            return 32;
        case Colour::kYellow:
            return 33;
        case Colour::kGrey:
            return 90;
        case Colour::kNone:
            break;
    }
    return 39;
}

}  // namespace

bool is_colour_wanted(const ColourSetting& setting)
{
    const bool refused = setting.no_color != nullptr && *setting.no_color != '\0';
    const bool able = setting.term == nullptr || std::string_view{setting.term} != "dumb";
    return setting.terminal && able && !refused;
}

bool is_colour_wanted(int fd)
{
    return is_colour_wanted({::isatty(fd) == 1, std::getenv("NO_COLOR"), std::getenv("TERM")});
}

std::string coloured(std::string_view text, Colour colour, bool wanted)
{
    return wanted && colour != Colour::kNone
               ? fmt::format("\x1b[{}m{}\x1b[0m", colour_code(colour), text)
               : std::string{text};
}

}  // namespace nimba::smi
