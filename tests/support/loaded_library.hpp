// SPDX-License-Identifier: MIT
#pragma once

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace nimba::test {

// The shared library under test, loaded anew as a host loads it: with all of its globals as they
// are at load. There is one at a time.
class LoadedLibrary final {
  public:
    LoadedLibrary()
    {
        if (loaded()) {
            throw std::runtime_error{NIMBA_LIBRARY " was not unloaded by an earlier test"};
        }
        handle_ = ::dlopen(NIMBA_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (handle_ == nullptr) {
            throw std::runtime_error{::dlerror()};
        }
    }
    ~LoadedLibrary() { unload(); }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    void unload()
    {
        if (handle_ != nullptr) {
            ::dlclose(handle_);
            handle_ = nullptr;
        }
    }

    // Whether the library is in the process, whoever holds it.
    static bool loaded()
    {
        void* handle = ::dlopen(NIMBA_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
        if (handle == nullptr) {
            return false;
        }
        ::dlclose(handle);
        return true;
    }

    // The exported function or global `name`; `Type` is the one that the public header declares.
    template <class Type>
    Type& symbol(const char* name) const
    {
        void* address = ::dlsym(handle_, name);
        if (address == nullptr) {
            throw std::runtime_error{std::string{"the library does not export "} + name};
        }
        return *reinterpret_cast<Type*>(address);
    }

  private:
    void* handle_ = nullptr;
};

}  // namespace nimba::test
