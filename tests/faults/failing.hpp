// SPDX-License-Identifier: MIT
// What the functions that can fail ask, and tell.
#pragma once

#include "fault.hpp"

namespace nimba::test {

// Whether there is a fault now.
bool is_fault_on();

// Counts a call. Returns whether it is the one that fails.
bool fails(Kind kind);
// The same; a call that fails sets errno.
bool fails_with(Kind kind, int error);

// Keeps a text for Fault::output.
void keep_output(const char* text);

// Notes what is taken during a fault, if it is not null, and what is given back at any time.
void note_taken(const void* resource);
void note_given_back(const void* resource);

template <typename Resource>
Resource* hold(Resource* resource)
{
    note_taken(resource);
    return resource;
}

}  // namespace nimba::test
