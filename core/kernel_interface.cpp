// SPDX-License-Identifier: MIT
#include "core/kernel_interface.hpp"

#include "core/never_destroyed.hpp"

#include <dlfcn.h>

#include <cstdlib>

// Written by allocate_device_block and free_device_block alone.
void* pdev = nullptr;

namespace nimba {
namespace {

using SizeFunction = uint32_t (*)(int32_t drm_fd);

constexpr int kLoadFlags = RTLD_LAZY | RTLD_GLOBAL;

NeverDestroyed<SharedLibrary> module_storage;

SizeFunction find_size_function()
{
    const auto found = hwbridge_module_handle.function<SizeFunction>("gfx_get_struct_size");
    return found != nullptr ? found
                            : hwbridge_module_handle.function<SizeFunction>("qv_get_struct_size");
}

}  // namespace

SharedLibrary& hwbridge_module_handle = module_storage.value;

SharedLibrary load_kernel_interface(const Chip& chip)
{
    SharedLibrary library{chip.kernel_interface, kLoadFlags};
    if (!library && chip.kernel_interface_fallback != nullptr) {
        library = SharedLibrary{chip.kernel_interface_fallback, kLoadFlags};
    }
    return library;
}

bool allocate_device_block()
{
    const SizeFunction size_of_block = find_size_function();
    if (size_of_block == nullptr) {
        lib_print_func("get pfn_gfx_get_struct_size fail. \n ");
        return false;
    }
    free_device_block();
    const uint32_t size = size_of_block(__perf_event_fd);
    if (size == 0) {
        lib_print_func("get_struct_size err\n ");
        return false;
    }
    pdev = std::malloc(size);
    if (pdev == nullptr) {
        lib_print_func("pdev alloc mem fail.\n ");
        return false;
    }
    return true;
}

void free_device_block()
{
    std::free(pdev);
    pdev = nullptr;
}

}  // namespace nimba
