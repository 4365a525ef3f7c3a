// SPDX-License-Identifier: MIT
// Values of documents that may be of any form: what is not as expected is as if it were not there.
#pragma once

#include "tools/smi/text/json.hpp"

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi::page {

// What a table shows in the place of a value that is not known.
inline constexpr const char* kUnknown = "–";

// A member of a member; null where there is none.
const Document& member(const Document& value, std::initializer_list<const char*> path);

// The same when it is a list; else an empty one.
const Document& list(const Document& value, std::initializer_list<const char*> path);

// How many elements that list of an object had before it was cut.
std::size_t whole_size(const Document& object, const char* name);

// The adapters of a document, as far as a machine can have them.
std::vector<const Document*> adapters_of(const Document& document);

// A text of 500 characters at most, a number, or "yes" and "no"; kUnknown of anything else.
std::string text_of(const Document& value);

std::optional<double> number_of(const Document& value);
std::optional<uint64_t> bytes_of(const Document& value);

// "1.5 MiB", or kUnknown.
std::string size_of(const Document& value);

// "Gpu0:Nimba-K1 (0000:01:00.0)" of an adapter.
std::string adapter_title(const Document& adapter);

// "/usr/bin/game (4100003), ..." of what has a list of processes, of which some are named.
std::string processes_text(const Document& owner);

}  // namespace nimba::smi::page
