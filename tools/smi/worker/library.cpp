// SPDX-License-Identifier: MIT
#include "tools/smi/worker/library.hpp"

#include "tools/smi/worker/symbols.hpp"

#include <dlfcn.h>
#include <link.h>

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace nimba::smi {
namespace {

constexpr Symbol<EntryPoints> kSymbols[] = {
    {"set_print_callback", store<&EntryPoints::set_print_callback>},
    {"get_interface_version", store<&EntryPoints::get_interface_version>},
    {"get_interface_version_ext1", store<&EntryPoints::get_interface_version_ext1>},
    {"gfx_find_adapter", store<&EntryPoints::gfx_find_adapter>},
    {"gfx_find_adapter_ext1", store<&EntryPoints::gfx_find_adapter_ext1>},
    {"gpuinfo_nimba_init", store<&EntryPoints::gpuinfo_nimba_init>},
    {"gpuinfo_control_enable", store<&EntryPoints::gpuinfo_control_enable>},
    {"gfx_global_init", store<&EntryPoints::gfx_global_init>},
    {"gfx_global_exit", store<&EntryPoints::gfx_global_exit>},
    {"sys_kernel_debug_ID_dri_ADAPTER_path", store<&EntryPoints::debug_directory>},
    {"get_allocation_raw_list", store<&EntryPoints::get_allocation_raw_list>},
    {"get_device_pid_maps", store<&EntryPoints::get_device_pid_maps>},
    {"get_memleak_info", store<&EntryPoints::get_memleak_info>},
    {"vec_memleak_result", store<&EntryPoints::vec_memleak_result>},
};

}  // namespace

void LibraryCloser::operator()(void* handle) const
{
    ::dlclose(handle);
}

std::string file_of(void* handle)
{
    link_map* map = nullptr;
    if (::dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0) {
        return {};
    }
    std::error_code error;
    const auto resolved = std::filesystem::canonical(map->l_name, error);
    return error ? map->l_name : resolved.string();
}

std::variant<Library, std::string> load_library(const std::string& name)
{
    Library library;
    library.handle.reset(::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!library.handle) {
        return fmt::format(
            "cannot load the management library ({}): install it, or name it with --library",
            ::dlerror());
    }
    library.path = file_of(library.handle.get());
    if (auto fault = find_symbols<EntryPoints>(library.handle.get(), library.path, kSymbols,
                                               library.entry)) {
        return *std::move(fault);
    }
    return library;
}

std::string major_mismatch_message(const std::string& path)
{
    return fmt::format(
        "{} has another major interface version: install the nimba-smi that belongs to it", path);
}

std::optional<std::string> version_in_file_name(const std::string& path)
{
    constexpr std::string_view kSuffix = ".so.";
    const std::string file = std::filesystem::path(path).filename();
    const auto suffix = file.rfind(kSuffix);
    if (suffix == std::string::npos) {
        return std::nullopt;
    }
    std::string version = file.substr(suffix + kSuffix.size());
    const bool numeric =
        !version.empty() && version.find_first_not_of("0123456789.") == std::string::npos;
    return numeric ? std::optional(std::move(version)) : std::nullopt;
}

}  // namespace nimba::smi
