// SPDX-License-Identifier: MIT
// Why the library could not read a directory of the driver's: it tells only that it could not.
#pragma once

#include "tools/smi/exit_status.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace nimba::smi {

// A file that cannot be read.
struct FileFault {
    std::string path;
    int error = 0;  // the error number

    bool operator==(const FileFault&) const = default;
};

// The name of a node that is named like its entry.
inline constexpr const char* kLikeEntry = "";

// What keeps this user from reading <directory>/<entry>/<node> of all entries: the directory
// itself, or the first such node that is there and cannot be read to its end. Nothing when all can
// be.
std::optional<FileFault> first_fault(const std::string& directory, std::string_view node);

// The entries of a directory; 0 when it cannot be listed.
std::size_t entries_in(const std::string& directory);

// What a reading fault is to the user: the exit status and a sentence. `fault`: what first_fault
// found. `what`: "allocations".
struct FaultSentence {
    ExitStatus status = ExitStatus::kNoAdapter;
    std::string text;
};
FaultSentence describe_fault(const std::optional<FileFault>& fault, const std::string& directory,
                             const char* what);

}  // namespace nimba::smi
