// SPDX-License-Identifier: MIT
// The faces of a version report.
#pragma once

#include "tools/smi/version/snapshot.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace nimba::smi {

// What a handshake's result code says, as a word for scripts and in a sentence for people.
struct MatchMeaning {
    std::string_view word;
    std::string_view sentence;
};
MatchMeaning match_meaning(uint32_t code);

std::string version_text(const VersionSnapshot& snapshot);

// The document "nimba-smi.version.1".
std::string version_json(const VersionSnapshot& snapshot);

}  // namespace nimba::smi
