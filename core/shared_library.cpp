// SPDX-License-Identifier: MIT
#include "core/shared_library.hpp"

#include <dlfcn.h>

#include <utility>

namespace nimba {

SharedLibrary::SharedLibrary(const char* name, int flags) : handle_{::dlopen(name, flags)} {}

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept
    : handle_{std::exchange(other.handle_, nullptr)}
{
}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept
{
    std::swap(handle_, other.handle_);
    return *this;
}

SharedLibrary::~SharedLibrary()
{
    if (handle_ != nullptr) {
        ::dlclose(handle_);
    }
}

void* SharedLibrary::find(const char* name) const
{
    // For dlsym a null handle is RTLD_DEFAULT: every global symbol of the process.
    return ::dlsym(handle_, name);
}

}  // namespace nimba
