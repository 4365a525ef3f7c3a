// SPDX-License-Identifier: MIT
#include "tools/archive/json_text.hpp"

#include "tools/archive/archive_error.hpp"
#include "tools/archive/json_pass.hpp"

#include <string>

namespace nimba::archive {

nlohmann::json parse_json(std::string_view text, const char* file, std::size_t most_values)
{
    constexpr std::size_t kDeepest = 16;
    // A pass of its own: at the end of each value, a parser with a callback goes through all that
    // stand before it.
    JsonPass pass{kDeepest, most_values};
    const bool is_json = nlohmann::json::sax_parse(text, &pass);
    if (pass.is_too_deep()) {
        throw ArchiveError{std::string{file} + " is nested too deep"};
    }
    if (pass.has_too_many_values()) {
        throw ArchiveError{std::string{file} + " has too many values"};
    }
    if (!is_json) {
        throw ArchiveError{std::string{file} + " is no JSON"};
    }
    return nlohmann::json::parse(text);
}

}  // namespace nimba::archive
