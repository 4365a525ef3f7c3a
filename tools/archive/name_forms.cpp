// SPDX-License-Identifier: MIT
#include "tools/archive/name_forms.hpp"

#include "tools/archive/entry_name.hpp"

#include <algorithm>
#include <charconv>
#include <string>

namespace nimba::archive {
namespace {

constexpr std::size_t kLongestName = 128;
constexpr int kControlBase = 64;
constexpr int kRenderBase = 128;

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

bool is_letter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool is_lower_hexadecimal(char c)
{
    return is_digit(c) || (c >= 'a' && c <= 'f');
}

// Not empty, not too long, and of such characters alone.
template <typename IsCharacter>
bool consists_of(std::string_view text, IsCharacter is_character)
{
    return !text.empty() && text.size() <= kLongestName && std::ranges::all_of(text, is_character);
}

}  // namespace

bool is_line(std::string_view text)
{
    return std::ranges::none_of(
        text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

bool is_error_name(std::string_view text)
{
    return consists_of(text, [](char c) { return is_letter(c) || is_digit(c); });
}

bool is_bus_id(std::string_view text)
{
    constexpr std::string_view kShape = "hhhh:hh:hh.o";
    if (text.size() != kShape.size()) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool fits = kShape[i] == 'h'   ? is_lower_hexadecimal(c)
                          : kShape[i] == 'o' ? c >= '0' && c <= '7'
                                             : c == kShape[i];
        if (!fits) {
            return false;
        }
    }
    return text[8] <= '1';  // a bus has 32 devices
}

bool is_drm_node_path(DrmNodeType type, std::string_view path)
{
    const std::string_view prefix = type == DrmNodeType::kPrimary   ? "/dev/dri/card"
                                    : type == DrmNodeType::kControl ? "/dev/dri/controlD"
                                                                    : "/dev/dri/renderD";
    if (!path.starts_with(prefix)) {
        return false;
    }
    const std::string_view digits = path.substr(prefix.size());
    int minor = -1;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), minor);
    if (error != std::errc{} || end != digits.data() + digits.size() ||
        std::to_string(minor) != digits) {
        return false;
    }
    const int least = type == DrmNodeType::kPrimary   ? 0
                      : type == DrmNodeType::kControl ? kControlBase
                                                      : kRenderBase;
    return minor >= least && minor <= kGreatestCard + least;
}

bool is_library_file(std::string_view text)
{
    return text.starts_with("lib") && consists_of(text, [](char c) {
               return is_letter(c) || is_digit(c) || c == '.' || c == '_' || c == '-' || c == '+';
           });
}

bool is_function_name(std::string_view text)
{
    return consists_of(text, [](char c) { return is_letter(c) || is_digit(c) || c == '_'; });
}

bool is_entry(std::string_view text)
{
    return text.find('/') == std::string_view::npos && is_node_path(std::string{'/'}.append(text));
}

}  // namespace nimba::archive
