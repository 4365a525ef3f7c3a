// SPDX-License-Identifier: MIT
#include "tools/smi/version/render.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/table.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>

namespace nimba::smi {
namespace {

struct MatchRow {
    uint32_t code;
    MatchMeaning meaning;
};

constexpr std::array kMatches{
    MatchRow{NIMBA_VERSION_MAJOR_MISMATCH, {"major-mismatch", "the major versions differ"}},
    MatchRow{NIMBA_VERSION_MATCH, {"match", "the versions match"}},
    MatchRow{NIMBA_VERSION_CLIENT_OLDER, {"compatible", "this tool is older, compatible"}},
    MatchRow{NIMBA_VERSION_CLIENT_NEWER,
             {"client-newer", "this tool is newer, the library may lack what it needs"}},
};

constexpr MatchMeaning kUnknownMatch{"unknown", "a code that this tool does not know"};

std::string library_text(const LibraryVersion& library)
{
    return library.package_version ? fmt::format("{} ({})", library.path, *library.package_version)
                                   : library.path;
}

Document library_json(const LibraryVersion& library)
{
    return {{"path", library.path}, {"version", or_null(library.package_version)}};
}

Document interface_json(const LibraryVersion& library)
{
    return {{"version", library.interface_version},
            {"client_version", library.client_version},
            {"match_code", library.match_code},
            {"match", match_meaning(library.match_code).word}};
}

}  // namespace

MatchMeaning match_meaning(uint32_t code)
{
    const auto* const row = std::ranges::find(kMatches, code, &MatchRow::code);
    return row == kMatches.end() ? kUnknownMatch : row->meaning;
}

std::string version_text(const VersionSnapshot& snapshot)
{
    std::vector<Row> rows{{"nimba-smi", snapshot.tool_version}};
    if (const auto& library = snapshot.library) {
        rows.push_back({"library", library_text(*library)});
        rows.push_back(
            {"interface", fmt::format("{} (this tool was built for {})", library->interface_version,
                                      library->client_version)});
        rows.push_back({"handshake", fmt::format("{}: {}", library->match_code,
                                                 match_meaning(library->match_code).sentence)});
    }
    return aligned(rows);
}

std::string version_json(const VersionSnapshot& snapshot)
{
    const auto& library = snapshot.library;
    return json_text({{"schema", "nimba-smi.version.1"},
                      {"tool", {{"version", snapshot.tool_version}}},
                      {"library", library ? library_json(*library) : Document(nullptr)},
                      {"interface", library ? interface_json(*library) : Document(nullptr)},
                      {"errors", json_errors(snapshot.problems)}});
}

}  // namespace nimba::smi
