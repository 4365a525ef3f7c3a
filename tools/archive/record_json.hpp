// SPDX-License-Identifier: MIT
// manifest.json and sample.json.
#pragma once

#include "tools/archive/capture.hpp"

#include <string>
#include <string_view>

namespace nimba::archive {

std::string manifest_json(const Manifest& manifest);
std::string sample_json(const SampleRecord& record);

// Throw ArchiveError when the text is not what the two above make of some value that makes sense:
// all that names something has the form that it must have, so that it can be used as a name.
Manifest parse_manifest(std::string_view text);
SampleRecord parse_sample(std::string_view text);

}  // namespace nimba::archive
