// SPDX-License-Identifier: MIT
#pragma once

#include "core/kernel_interface.hpp"

namespace nimba {

// The function of the kernel-interface library that is loaded now; null when it has none of that
// name, or none is loaded.
template <typename Function>
Function find_kernel_function(const char* name)
{
    return hwbridge_module_handle ? hwbridge_module_handle.function<Function>(name) : nullptr;
}

// A function of the kernel-interface library, known by its name: the library that has it may be
// closed, and be replaced by another, after it was chosen.
template <typename Function>
class KernelFunction final {
  public:
    // Chooses the function, or none when the library lacks it.
    void choose(const char* name)
    {
        name_ = find_kernel_function<Function>(name) == nullptr ? nullptr : name;
    }

    explicit operator bool() const { return name_ != nullptr; }

    // Null when none was chosen, or it is gone.
    [[nodiscard]] Function get() const
    {
        return name_ == nullptr ? nullptr : find_kernel_function<Function>(name_);
    }

  private:
    const char* name_ = nullptr;
};

}  // namespace nimba
