// SPDX-License-Identifier: MIT
// What a report tells, wherever it comes from: documents of other commands, as --json prints them.
#pragma once

#include "tools/smi/text/json.hpp"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi::page {

// The documents that are asked for once, by the names that they have in an archive.
inline constexpr const char* kVersion = "version";
inline constexpr const char* kDvfs = "dvfs";
inline constexpr const char* kAllocations = "alloc";
inline constexpr const char* kLeaks = "leaks";
inline constexpr const char* kPageTables = "pagetable";
inline constexpr const char* kDoctor = "doctor";

using Documents = std::map<std::string, Document>;  // what could not be asked is not there

struct TimedFigures {
    double seconds = 0.0;  // since the first
    Document adapters;     // a list, of each adapter of an overview what can be plotted
};

// Something that could not be read in a capture.
struct UnreadNode {
    std::size_t sample = 0;
    std::string path;
    std::string error;
};

struct Content {
    std::optional<std::string> capture{};  // the archive's name; none: of the machine itself
    std::string tool;                      // version of the tool that asked
    std::string time;                      // of the first sample, UTC
    bool redacted = false;
    std::vector<TimedFigures> samples;  // at least one
    Document overview;                  // the newest, "nimba-smi.overview.1"
    Documents documents;
    std::vector<std::string> problems;
    std::vector<UnreadNode> unread;

    // Adds a sample, whose overview is the newest.
    void add_sample(double seconds, Document newest);

    // A document, or null.
    [[nodiscard]] const Document& document(const char* name) const;
};

}  // namespace nimba::smi::page
