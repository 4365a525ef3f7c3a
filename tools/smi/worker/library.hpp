// SPDX-License-Identifier: MIT
// The management library, loaded at run time.
#pragma once

#include "nimba_mgmt_interface.h"

#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace nimba::smi {

// Every entry point that this tool uses.
struct EntryPoints {
    decltype(&::set_print_callback) set_print_callback = nullptr;
    decltype(&::get_interface_version) get_interface_version = nullptr;
    decltype(&::get_interface_version_ext1) get_interface_version_ext1 = nullptr;
    decltype(&::gfx_find_adapter) gfx_find_adapter = nullptr;
    decltype(&::gfx_find_adapter_ext1) gfx_find_adapter_ext1 = nullptr;
    decltype(&::gpuinfo_nimba_init) gpuinfo_nimba_init = nullptr;
    decltype(&::gpuinfo_control_enable) gpuinfo_control_enable = nullptr;
    decltype(&::gfx_global_init) gfx_global_init = nullptr;
    decltype(&::gfx_global_exit) gfx_global_exit = nullptr;
    decltype(&::sys_kernel_debug_ID_dri_ADAPTER_path) debug_directory = nullptr;
    decltype(&::get_allocation_raw_list) get_allocation_raw_list = nullptr;
    decltype(&::get_device_pid_maps) get_device_pid_maps = nullptr;
    decltype(&::get_memleak_info) get_memleak_info = nullptr;
    decltype(&::vec_memleak_result) vec_memleak_result = nullptr;
};

struct LibraryCloser {
    void operator()(void* handle) const;
};

struct Library {
    std::unique_ptr<void, LibraryCloser> handle;
    EntryPoints entry;
    std::string path;  // of the file that was loaded, without links
};

// The file behind what dlopen returned, without links where it can be resolved.
std::string file_of(void* handle);

// Loads the library named `name` and looks up its entry points. Runs the library's constructor,
// which writes to standard output. Returns the library, or what is wrong with it.
std::variant<Library, std::string> load_library(const std::string& name);

// Says that the library at `path` has another major interface version, and what to do.
std::string major_mismatch_message(const std::string& path);

// The version in a library's file name: "0.1.0" for ".../libname.so.0.1.0"; nothing without one.
std::optional<std::string> version_in_file_name(const std::string& path);

}  // namespace nimba::smi
