// SPDX-License-Identifier: MIT
// Setting, listing and removing the GPU preference of an application.
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace nimba {
namespace {

using Node = _UTIL_GPU_PREFERENCE_NODE;

// Written by load_once alone and never reset: after an exit and a new initialisation the list is
// empty and the file is not read again. Hosts know it so.
bool config_loaded = false;

void load_once()
{
    if (config_loaded) {
        return;
    }
    const std::size_t held = interface_config_list.size();
    try {
        util_init_config_files();
    } catch (...) {
        // The file is loaded again the next time, and what is here already would be there twice.
        interface_config_list.resize(held);
        throw;
    }
    config_loaded = true;
}

void empty_list()
{
    std::vector<Node>{}.swap(interface_config_list);
}

template <std::size_t size>
std::string_view field_text(const char (&field)[size])
{
    return {field, ::strnlen(field, size)};
}

// The first record of the application that node.FullPath names.
auto find_application(const Node& node)
{
    const std::string key = get_filename(std::string{field_text(node.FullPath)});
    return std::ranges::find_if(interface_config_list, [&](const Node& candidate) {
        return field_text(candidate.FileName) == key;
    });
}

}  // namespace
}  // namespace nimba

int32_t initGPUPreference_config()
{
    nimba::empty_list();
    return lib_print_func("initGPUPreference_config.\n ");
}

int32_t uninitGPUPreference_config()
{
    nimba::empty_list();
    return lib_print_func("uninitGPUPreference_config.\n ");
}

int32_t SetGPUPreference_config(const _UTIL_GPU_PREFERENCE_NODE* node)
{
    nimba::load_once();
    const auto found = nimba::find_application(*node);
    if (found == interface_config_list.end()) {
        interface_config_list.push_back(*node);
    } else if (std::memcmp(&*found, node, sizeof *node) != 0) {
        *found = *node;
    } else {
        lib_print_func("SetGPUPreference_config, same data, skip save log file.\n");
        return 0;
    }
    savefile_INI(UTIL_CONFIG_PATH);
    return 0;
}

int32_t GetGPUPreference_config(_UTIL_GPU_PREFERENCE_NODE* buffer, int32_t* count)
{
    nimba::load_once();
    if (buffer == nullptr) {
        *count = static_cast<int32_t>(interface_config_list.size());
        return 0;
    }
    // The capacity is looked at behind each copy: one record is copied whatever it is, and callers
    // may keep it inside the buffer.
    int32_t copied = 0;
    for (const nimba::Node& record : interface_config_list) {
        buffer[copied] = record;
        ++copied;
        if (*count <= copied) {
            break;
        }
    }
    *count = copied;
    return 0;
}

int32_t RemoveGPUPreference_config(const _UTIL_GPU_PREFERENCE_NODE* node)
{
    const auto found = nimba::find_application(*node);
    if (found != interface_config_list.end()) {
        interface_config_list.erase(found);
    }
    savefile_INI(UTIL_CONFIG_PATH);
    return 0;
}

int32_t set_gpu_preference(const _UTIL_GPU_PREFERENCE_NODE* node)
{
    SetGPUPreference_config(node);
    return 0;
}

int32_t get_gpu_preference(_UTIL_GPU_PREFERENCE_NODE* buffer, int32_t* count)
{
    GetGPUPreference_config(buffer, count);
    return 0;
}

int32_t remove_gpu_preference(const _UTIL_GPU_PREFERENCE_NODE* node)
{
    RemoveGPUPreference_config(node);
    return 0;
}
