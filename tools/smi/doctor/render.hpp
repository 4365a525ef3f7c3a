// SPDX-License-Identifier: MIT
// The faces of "doctor".
#pragma once

#include "tools/smi/doctor/check.hpp"

#include <span>
#include <string>

namespace nimba::smi {

// A line for each check under the heading of its group, how to mend it below, and a last line for
// all of them.
std::string doctor_text(std::span<const Section> sections, bool colours);

// The document "nimba-smi.doctor.1".
std::string doctor_json(std::span<const Section> sections);

// "all that matters works", or how many checks failed.
std::string summary_line(std::span<const Section> sections);

}  // namespace nimba::smi
