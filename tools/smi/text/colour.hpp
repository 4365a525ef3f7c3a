// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace nimba::smi {

enum class Colour { kNone, kRed, kGreen, kYellow, kGrey };

// What decides whether a text is coloured: null is a variable that is not set.
struct ColourSetting {
    bool terminal = false;
    const char* no_color = nullptr;  // NO_COLOR
    const char* term = nullptr;      // TERM
};

// On a terminal that is not "dumb", unless NO_COLOR is set and not empty.
bool is_colour_wanted(const ColourSetting& setting);

// The same for what is written to a descriptor, in this process's environment.
bool is_colour_wanted(int fd);

// The text between the sequences that turn a colour on and off; the bare text when no colour is
// wanted.
std::string coloured(std::string_view text, Colour colour, bool wanted);

}  // namespace nimba::smi
