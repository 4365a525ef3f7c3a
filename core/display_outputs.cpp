// SPDX-License-Identifier: MIT
#include "core/display_outputs.hpp"

#include "core/entries.hpp"
#include "nimba_mgmt_interface.h"

#include <array>
#include <cstdio>
#include <cstring>

// The types whose names are looked for in the driver's file and in the names of DRM's connectors.
const connect_type support_CONNECT_type_list[NIMBA_CONNECT_TYPE_NUM] = {
    {"VGA", 1}, {"DVI", 2}, {"HDMI", 4}, {"DP", 8}, {"EDP", 16},
};

namespace nimba {
namespace {

constexpr std::size_t kPathSize = 128;
constexpr std::size_t kPrefixSize = 50;

void count_entry(const char* entry, int card, DisplayOutputs& outputs)
{
    for (const connect_type& type : support_CONNECT_type_list) {
        std::array<char, kPrefixSize> prefix{};
        std::snprintf(prefix.data(), prefix.size(), "card%d-%.*s-", card,
                      static_cast<int>(sizeof type.name), type.name);
        if (std::strstr(entry, prefix.data()) != nullptr) {
            ++outputs.count;
            outputs.types |= type.bit;
        }
    }
}

}  // namespace

DisplayOutputs listed_outputs(int card)
{
    std::array<char, kPathSize> path{};
    std::snprintf(path.data(), path.size(), "%s/drm/card%d/", sys_bus_pci_devices_BUSID_path, card);
    Directory directory{::opendir(path.data())};
    DisplayOutputs outputs;
    if (!directory) {
        std::puts("Error opening drm directory");
        return outputs;
    }
    Entries entries{std::move(directory)};
    while (const char* entry = entries.next()) {
        count_entry(entry, card, outputs);
    }
    return outputs;
}

}  // namespace nimba
