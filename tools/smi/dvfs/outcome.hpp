// SPDX-License-Identifier: MIT
// What became of settings that were to be changed.
#pragma once

#include "tools/smi/dvfs/assignment.hpp"
#include "tools/smi/dvfs/reading.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::smi {

enum class Verdict : uint8_t {
    kAccepted,   // it is what was asked for, and was not before
    kUnchanged,  // it was and is what was asked for; it was not written
    kRejected,   // it is as before
    kChanged,    // it is something else
    kUnknown,    // it cannot be read any more
};

// What to make of a value: asked for, and read before and after.
Verdict judge(int64_t asked, const std::optional<int64_t>& before,
              const std::optional<int64_t>& after);

// "accepted"
std::string_view word_of(Verdict verdict);

// "rejected: still 800"; the texts are the values as they are shown.
std::string sentence_of(Verdict verdict, const std::string& after);

struct Outcome {
    const DvfsField* field = nullptr;  // never null
    int64_t asked = 0;
    std::optional<int64_t> before;
    std::optional<int64_t> after;
    Verdict verdict = Verdict::kUnknown;

    bool operator==(const Outcome&) const = default;
};

// One for each assignment, in their order.
std::vector<Outcome> outcomes_of(std::span<const Assignment> assignments, const DvfsReading& before,
                                 const DvfsReading& after);

// Those assignments whose field has another value.
std::vector<Assignment> changes(std::span<const Assignment> assignments,
                                const DvfsReading& reading);

}  // namespace nimba::smi
