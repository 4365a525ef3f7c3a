// SPDX-License-Identifier: MIT
// Documents of an archive: what commands said in JSON when it was made.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace nimba::archive {

inline constexpr std::string_view kOverviewDocument = "overview";  // one of each sample

// Whether an archive can have a document of that name beside its samples.
bool is_document(std::string_view name);

// How many values the document has. Throws ArchiveError, which begins with `place`, when the text
// is no document of that name: JSON of another form, nested too deep, with too many values, or with
// so many members in one object that they could not be looked up in sensible time.
std::size_t check_document(std::string_view name, const std::string& place, std::string_view text);

}  // namespace nimba::archive
