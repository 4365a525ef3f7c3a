// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace nimba::smi {

// What the lines of a preference file are.
struct PreferenceLines {
    int applications = 0;  // sections: each is the preference of one
    int bad = 0;           // lines that the library ignores, and drops when it rewrites the file
    int first_bad = 0;     // the first of them, counted from 1

    bool operator==(const PreferenceLines&) const = default;
};

// Comments, which begin with ";", and empty lines are not bad.
PreferenceLines count_preference_lines(std::string_view text);

}  // namespace nimba::smi
