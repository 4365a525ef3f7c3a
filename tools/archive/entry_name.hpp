// SPDX-License-Identifier: MIT
// The names of an archive's entries.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace nimba::archive {

inline constexpr std::string_view kManifestEntry = "manifest.json";
inline constexpr std::string_view kDmidecodeEntry = "dmidecode.txt";
inline constexpr std::string_view kPreferencesEntry = "preferences.ini";

enum class EntryKind {
    kManifest,
    kDmidecode,
    kPreferences,
    kSample,
    kNode,
    kDocument,
    kOverview,
};

struct EntryName {
    EntryKind kind = EntryKind::kManifest;
    std::size_t sample = 0;  // of kSample, kNode and kOverview
    std::string path{};      // of kNode, as node_path gives it; of kDocument, its name

    bool operator==(const EntryName&) const = default;
};

// Whether the path is absolute, leads nowhere but down, has at most 1024 bytes and 16 components,
// and only the characters that an encoded path has.
bool is_node_path(std::string_view path);

// The path of a node on its machine, in the characters that entries and records have: any other
// byte, and "%", becomes "%" and two hexadecimal digits.
std::string encode_path(std::string_view path);

// What was encoded; nothing when the text is not what encode_path makes of anything.
std::optional<std::string> decode_path(std::string_view text);

// "samples/3/sample.json", "samples/3/nodes/proc/gpuinfo_0". `path` is encoded and absolute.
std::string sample_entry(std::size_t sample);
std::string node_entry(std::size_t sample, std::string_view path);

// "documents/alloc.json", "samples/3/overview.json".
std::string document_entry(std::string_view name);
std::string overview_entry(std::size_t sample);

// What an entry of that name is; nothing when the layout has none such.
std::optional<EntryName> parse_entry_name(std::string_view name);

}  // namespace nimba::archive
