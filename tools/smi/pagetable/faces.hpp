// SPDX-License-Identifier: MIT
// What the faces of "pagetable" have in common.
#pragma once

#include "tools/smi/pagetable/process_space.hpp"
#include "tools/smi/text/document.hpp"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace nimba::smi {

std::string address_text(uint64_t address);             // "0x1f000"
std::string range_text(const AddressRange& range);      // "0x1000-0x1fff", with the last byte
std::string kind_text(const PageKind& kind);            // "segment 0, 4 KiB pages, snooped"
std::string hexadecimal_text(std::string_view digits);  // "0x1f" for "1F"; other texts as they are

// Appends a line at a depth of a tree, as printable as the driver's texts are made to be.
void append_line(std::string& text, int depth, std::string_view line);

// The process id as a number, null when it is none.
Document json_pid(const std::string& pid);
Document json_name(const std::string& name);

// A number in hexadecimal as "0x1f"; null for texts that are none.
Document json_hexadecimal(std::string_view digits);

// "begin", "end" (behind the last byte) and "bytes".
Document json_range(const AddressRange& range);
Document json_kind(const PageKind& kind);
Document json_allocation(const VmAllocation& allocation);

// The document of a view: `describe` gives what it has of each process beside pid and name.
std::string view_json(const char* schema, const AddressSplit& split,
                      std::span<const ProcessSpace> processes,
                      const std::function<Document(const ProcessSpace&)>& describe,
                      std::span<const Problem> problems);

}  // namespace nimba::smi
