// SPDX-License-Identifier: MIT
// The GPUs that preferences name, and those that discovery found.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/memory/adapter_choice.hpp"
#include "tools/smi/prefer/preference.hpp"
#include "tools/smi/worker/payload.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::smi {

struct PreferredGpu {
    std::string bus_id;
    std::optional<std::string> name;  // none for an adapter whose name a foreign GPU hides

    bool operator==(const PreferredGpu&) const = default;
};

// The GPU that is meant: an adapter by its slot or bus id, or the GPU of another vendor by its bus
// id. Nothing, and why, when there is none.
std::optional<PreferredGpu> chosen_gpu(const Discovery& discovery, const AdapterChoice& choice,
                                       std::vector<Problem>& problems);

// As much of a GPU's name as a preference carries: 15 bytes, none of them half a character, a blank
// at an end, or from a ";" on.
std::string carried_name(std::string_view name);

// Whether the machine has the GPU; nothing when discovery does not tell.
std::optional<bool> is_present(const std::optional<Discovery>& discovery, const PciLocation& gpu);

}  // namespace nimba::smi
