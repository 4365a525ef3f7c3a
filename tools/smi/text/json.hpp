// SPDX-License-Identifier: MIT
// What the JSON documents of all commands have in common.
#pragma once

#include "tools/smi/adapter.hpp"
#include "tools/smi/exit_status.hpp"
#include "tools/smi/text/document.hpp"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <span>
#include <string>

namespace nimba::smi {

// The value, or null.
template <typename T>
Document or_null(const std::optional<T>& value)
{
    return value ? Document(*value) : Document(nullptr);
}

Document json_id(uint32_t id);  // "0x1001"
Document json_luid(const Luid& luid);
Document json_errors(std::span<const Problem> problems);

// The document as it is printed: indented, with a newline at its end, and with U+FFFD in place of
// bytes that are no UTF-8.
std::string json_text(const Document& document);

// The same as one line, for a document in a row of others.
std::string json_line(const Document& document);

}  // namespace nimba::smi
