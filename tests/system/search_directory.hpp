// SPDX-License-Identifier: MIT
// The directory that the loader searches first, whose libraries each test chooses for itself.
#pragma once

#include <filesystem>
#include <string>

namespace nimba::test {

// The program's own directory, first on LD_LIBRARY_PATH since before it was started.
std::filesystem::path search_directory();

// Puts a copy of the built stub library `stub` under the file name `name` into the directory. Every
// copy is a file of its own, since the loader takes equal files for one library.
void install_stub(const std::string& stub, const std::string& name);

// Puts a file under the name into the directory that the loader refuses, so that it looks no
// further.
void install_garbage(const std::string& name);

// Whether a library is in the process under this file name.
bool in_process(const std::string& name);

// Whether a library that was loaded for everyone (RTLD_GLOBAL) defines the symbol.
bool visible_to_everyone(const char* symbol);

// Takes a library out of the process, whoever holds it; returns how often it was held.
int force_out(const std::string& name);

// Takes every file out of the directory and its library out of the process.
void empty_search_directory();

// A library of the search directory that the test itself holds.
class HeldLibrary final {
  public:
    explicit HeldLibrary(const std::string& name, int flags = 0);
    ~HeldLibrary();
    HeldLibrary(const HeldLibrary&) = delete;
    HeldLibrary& operator=(const HeldLibrary&) = delete;

    void release();

    // The address of the exported symbol `name`.
    void* symbol(const char* name) const;

  private:
    void* handle_;
};

}  // namespace nimba::test
