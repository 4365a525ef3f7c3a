// SPDX-License-Identifier: MIT
// The imports of a loaded object: the places where it keeps the addresses of functions of others.
#pragma once

#include <span>

namespace nimba::test {

struct Replacement {
    const char* name;  // of the function as the linker knows it
    void* function;    // what is called in its place
};

// Replaces imports of the object whose file name begins with `name`; "" is the program.
void replace_imports(const char* name, std::span<const Replacement> replacements);

}  // namespace nimba::test
