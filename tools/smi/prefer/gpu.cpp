// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/gpu.hpp"

#include "nimba_mgmt_interface.h"

#include <algorithm>

namespace nimba::smi {
namespace {

constexpr std::size_t kLongestName = sizeof(_UTIL_GPU_PREFERENCE_NODE::PreferGpuName) - 1;

bool continues_character(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

}  // namespace

std::optional<PreferredGpu> chosen_gpu(const Discovery& discovery, const AdapterChoice& choice,
                                       std::vector<Problem>& problems)
{
    const auto& foreign = discovery.foreign_gpu;
    if (foreign && choice == AdapterChoice{foreign->bus_id}) {
        return PreferredGpu{foreign->bus_id, foreign->name};
    }
    const auto slots = chosen_adapters(discovery, choice, problems);
    return slots.empty() ? std::nullopt
                         : std::optional(PreferredGpu{slots.front().bus_id, slots.front().name});
}

std::string carried_name(std::string_view name)
{
    constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
    name = name.substr(0, name.find_first_of(";\n"));
    std::size_t size = std::min(name.size(), kLongestName);
    while (size > 0 && size < name.size() && continues_character(name[size])) {
        --size;
    }
    name = name.substr(0, size);
    name.remove_prefix(std::min(name.find_first_not_of(kWhiteSpace), name.size()));
    return std::string{name.substr(0, name.find_last_not_of(kWhiteSpace) + 1)};
}

std::optional<bool> is_present(const std::optional<Discovery>& discovery, const PciLocation& gpu)
{
    if (!discovery) {
        return std::nullopt;
    }
    const std::string bus_id = bus_id_text(gpu);
    const auto& [usable, slots, foreign, denied, denied_nodes, devices, unlisted] = *discovery;
    if (std::ranges::find(slots, bus_id, &SlotIdentity::bus_id) != slots.end() ||
        (foreign && foreign->bus_id == bus_id) ||
        std::ranges::find(unlisted, bus_id) != unlisted.end()) {
        return true;
    }
    // Of other devices nothing is known but that they are there.
    const std::size_t known = slots.size() + unlisted.size() + (foreign ? 1 : 0);
    const bool all_known = !denied && static_cast<std::size_t>(devices) <= known;
    return all_known ? std::optional(false) : std::nullopt;
}

}  // namespace nimba::smi
