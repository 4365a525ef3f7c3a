// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/worker/library.hpp"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace nimba::smi {

// A shared library that was loaded by one of several names.
struct LoadedFile {
    std::unique_ptr<void, LibraryCloser> handle;  // empty when none could be loaded
    std::string name;
    std::string path;                 // without links
    std::vector<std::string> errors;  // why the names before it could not be loaded

    // The address of an entry point; null when there is none.
    [[nodiscard]] void* symbol(const char* entry_point) const;
};

// Loads the first of the names that can be, with dlopen's `flags`.
LoadedFile load_first(std::span<const char* const> names, int flags);

}  // namespace nimba::smi
