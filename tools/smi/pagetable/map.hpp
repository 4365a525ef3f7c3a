// SPDX-License-Identifier: MIT
// The faces of "pagetable --map".
#pragma once

#include "tools/smi/pagetable/process_space.hpp"

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace nimba::smi {

struct MapStyle {
    bool coloured = false;                 // bars in the colour of their segment
    std::optional<std::size_t> columns{};  // of the terminal, for which long bars are shortened
};

// A row with a bar for each patch of mapped addresses and for each gap between them, to scale;
// large gaps are folded.
std::string map_text(std::span<const ProcessSpace> processes, const MapStyle& style);

// The document "nimba-smi.pagetable-map.1".
std::string map_json(const AddressSplit& split, std::span<const ProcessSpace> processes,
                     std::span<const Problem> problems);

}  // namespace nimba::smi
