// SPDX-License-Identifier: MIT
#include "tools/archive/entry_name.hpp"

#include "tools/archive/document.hpp"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <utility>

namespace nimba::archive {
namespace {

// More than any node's; what a reader makes of a path takes memory for each directory in it.
constexpr std::size_t kLongestPath = 1024;
constexpr std::ptrdiff_t kDeepestPath = 16;

constexpr std::string_view kSamples = "samples/";
constexpr std::string_view kSampleFile = "sample.json";
constexpr std::string_view kOverviewFile = "overview.json";
constexpr std::string_view kNodes = "nodes/";
constexpr std::string_view kDocuments = "documents/";
constexpr std::string_view kJson = ".json";
constexpr std::string_view kHexadecimal = "0123456789ABCDEF";

bool is_plain(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           std::string_view{"/._:+@-"}.find(c) != std::string_view::npos;
}

// Without leading zeros, so that a number has one name.
std::optional<std::size_t> sample_number(std::string_view text)
{
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size() ||
        (text.starts_with('0') && text.size() > 1)) {
        return std::nullopt;
    }
    return number;
}

// Whether none of the components is empty, "." or "..".
bool leads_down(std::string_view path)
{
    while (true) {
        const std::string_view component = path.substr(0, path.find('/'));
        if (component.empty() || component == "." || component == "..") {
            return false;
        }
        if (component.size() == path.size()) {
            return true;
        }
        path.remove_prefix(component.size() + 1);
    }
}

std::optional<EntryName> parse_in_sample(std::size_t sample, std::string_view name)
{
    if (name == kSampleFile) {
        return EntryName{EntryKind::kSample, sample};
    }
    if (name == kOverviewFile) {
        return EntryName{EntryKind::kOverview, sample};
    }
    if (!name.starts_with(kNodes)) {
        return std::nullopt;
    }
    // With the "/" of "nodes/".
    std::string path{name.substr(kNodes.size() - 1)};
    if (!is_node_path(path)) {
        return std::nullopt;
    }
    return EntryName{EntryKind::kNode, sample, std::move(path)};
}

std::optional<EntryName> parse_document(std::string_view name)
{
    if (!name.ends_with(kJson)) {
        return std::nullopt;
    }
    name.remove_suffix(kJson.size());
    return is_document(name) ? std::optional{EntryName{EntryKind::kDocument, 0, std::string{name}}}
                             : std::nullopt;
}

}  // namespace

bool is_node_path(std::string_view path)
{
    return path.size() <= kLongestPath && path.starts_with('/') &&
           std::ranges::count(path, '/') <= kDeepestPath && leads_down(path.substr(1)) &&
           decode_path(path).has_value();
}

std::string encode_path(std::string_view path)
{
    std::string text;
    for (const char c : path) {
        if (is_plain(c)) {
            text += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            text += {'%', kHexadecimal[byte >> 4U], kHexadecimal[byte & 0xFU]};
        }
    }
    return text;
}

std::optional<std::string> decode_path(std::string_view text)
{
    std::string path;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            path += text[i];
            continue;
        }
        const auto digits = text.substr(i + 1, 2);
        const auto high = kHexadecimal.find(digits.empty() ? '\0' : digits.front());
        const auto low = kHexadecimal.find(digits.size() < 2 ? '\0' : digits.back());
        if (high == std::string_view::npos || low == std::string_view::npos) {
            return std::nullopt;
        }
        path += static_cast<char>(high * 16 + low);
        i += 2;
    }
    // Any other spelling would be a second name of the same node.
    return encode_path(path) == text && path.find('\0') == std::string::npos ? std::optional{path}
                                                                             : std::nullopt;
}

std::string sample_entry(std::size_t sample)
{
    return std::string{kSamples}.append(std::to_string(sample)).append("/").append(kSampleFile);
}

std::string node_entry(std::size_t sample, std::string_view path)
{
    return std::string{kSamples}.append(std::to_string(sample)).append("/nodes").append(path);
}

std::string document_entry(std::string_view name)
{
    return std::string{kDocuments}.append(name).append(kJson);
}

std::string overview_entry(std::size_t sample)
{
    return std::string{kSamples}.append(std::to_string(sample)).append("/").append(kOverviewFile);
}

std::optional<EntryName> parse_entry_name(std::string_view name)
{
    if (name == kManifestEntry) {
        return EntryName{EntryKind::kManifest};
    }
    if (name == kDmidecodeEntry) {
        return EntryName{EntryKind::kDmidecode};
    }
    if (name == kPreferencesEntry) {
        return EntryName{EntryKind::kPreferences};
    }
    if (name.starts_with(kDocuments)) {
        return parse_document(name.substr(kDocuments.size()));
    }
    if (!name.starts_with(kSamples)) {
        return std::nullopt;
    }
    name.remove_prefix(kSamples.size());
    const auto slash = std::min(name.find('/'), name.size());
    const auto sample = sample_number(name.substr(0, slash));
    if (!sample || slash == name.size()) {
        return std::nullopt;
    }
    return parse_in_sample(*sample, name.substr(slash + 1));
}

}  // namespace nimba::archive
