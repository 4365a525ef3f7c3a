// SPDX-License-Identifier: MIT
// A trial: one call of an entry point during which one call of the C library fails, and what comes
// of it.
#pragma once

#include "entry_point.hpp"

#include <string>

namespace nimba::test {

struct Trial {
    Answer answer{};
    Answer next{};                  // of the call behind it, if there was one
    std::size_t calls = 0;          // of the kind that fails
    std::size_t interruptible = 0;  // see interruptible_calls
    std::string harm{};             // what the failure left behind; empty: none
};

// Makes the call `number` of that kind fail, and none with 0. Then the entry point is called again:
// what differs from the answer of `usual`, if there is one, is harm. Without one it is not called
// again.
Trial try_once(const EntryPoint& entry, Kind kind, std::size_t number, const Trial* usual);

// The same in a process of its own, for what is done once in the life of a process: the next call
// is made on what the first has left, and its answer is told rather than harm.
Trial try_in_process(const EntryPoint& entry, Kind kind, std::size_t number);

// The answer in one line, as what is usual is written down.
std::string in_one_line(const Answer& answer);

// What came of it in one line: "right" or how it differs from the usual answers.
std::string outcome_of(const Trial& trial, const Trial& usual);

}  // namespace nimba::test
