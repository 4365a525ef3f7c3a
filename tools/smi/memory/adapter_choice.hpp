// SPDX-License-Identifier: MIT
// The adapters that a command is about.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/worker/payload.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace nimba::smi {

// A slot, or a PCI bus id "dddd:bb:dd.f".
using AdapterChoice = std::variant<int, std::string>;

// "0" to "2", or a bus id with or without its domain, which is 0000 then. Nothing for other texts.
std::optional<AdapterChoice> parse_adapter_choice(std::string_view text);

// The adapters to ask: the chosen one, or all of them. `problems` gets why adapters are missing, as
// far as that concerns the choice.
std::vector<SlotIdentity> chosen_adapters(const Discovery& discovery,
                                          const std::optional<AdapterChoice>& choice,
                                          std::vector<Problem>& problems);

}  // namespace nimba::smi
