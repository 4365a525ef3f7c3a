// SPDX-License-Identifier: MIT
// A whole state of settings in a file: a JSON document that people can read and edit.
#pragma once

#include "tools/smi/dvfs/assignment.hpp"
#include "tools/smi/dvfs/reading.hpp"
#include "tools/smi/worker/payload.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace nimba::smi {

struct SavedState {
    std::optional<uint32_t> chip;           // PCI device identifier of the adapter; none: not known
    std::vector<Assignment> assignments{};  // each field once, in order

    bool operator==(const SavedState&) const = default;
};

// The fields that can be written and that the driver gives, with their values.
std::vector<Assignment> state_of(const DvfsReading& reading);

// The text of a file with the state of an adapter.
std::string saved_text(const SlotIdentity& adapter, const SavedState& state);

// The state in such a text, or what is wrong with it. Everything in it has to make sense.
std::variant<SavedState, std::string> parse_saved_state(std::string_view text);

// The state in a file, or on standard input for "-", or what is wrong with it. A file of more than
// a megabyte is none.
std::variant<SavedState, std::string> read_saved_state(const std::string& file);

}  // namespace nimba::smi
