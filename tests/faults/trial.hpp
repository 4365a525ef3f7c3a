// SPDX-License-Identifier: MIT
// A trial: one call of an entry point during which one call of the C library fails, and what comes
// of it.
#pragma once

#include "entry_point.hpp"

#include <string>

namespace nimba::test {

struct Trial {
    Answer answer{};
    std::size_t calls = 0;          // of the kind that fails
    std::size_t interruptible = 0;  // see interruptible_calls
    std::string harm{};             // what the failure left behind; empty: none
};

// Makes the call `number` of that kind fail, and none with 0. Then the entry point is called again:
// what differs from `usual`, if there is one, is harm.
Trial try_once(const EntryPoint& entry, Kind kind, std::size_t number, const Answer* usual);

// The same in a process of its own, which does not call again.
Trial try_in_process(const EntryPoint& entry, Kind kind, std::size_t number);

// What came of it in one line: "right" or how it differs from the usual answer.
std::string outcome_of(const Trial& trial, const Answer& usual);

}  // namespace nimba::test
