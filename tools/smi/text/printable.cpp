// SPDX-License-Identifier: MIT
#include "tools/smi/text/printable.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace nimba::smi {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

struct Character {
    uint32_t code = 0;
    std::size_t bytes = 0;  // 0: no UTF-8
};

struct Form {
    unsigned char mask;
    unsigned char lead;
    std::size_t bytes;
    uint32_t smallest;  // a smaller code in this form is an overlong one
};

constexpr std::array kForms{
    Form{0x80, 0x00, 1, 0x0},
    Form{0xE0, 0xC0, 2, 0x80},
    Form{0xF0, 0xE0, 3, 0x800},
    Form{0xF8, 0xF0, 4, 0x10000},
};

// The first character of a text that is not empty.
Character first_character(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text.front());
    const auto* const form =
        std::ranges::find_if(kForms, [&](const Form& f) { return (lead & f.mask) == f.lead; });
    if (form == kForms.end() || text.size() < form->bytes) {
        return {};
    }
    uint32_t code = lead & static_cast<unsigned char>(~form->mask);
    for (const char c : text.substr(1, form->bytes - 1)) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0) != 0x80) {
            return {};
        }
        code = code << 6 | (byte & 0x3FU);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < form->smallest || code > 0x10FFFF || surrogate) {
        return {};
    }
    return {code, form->bytes};
}

struct CodeRange {
    uint32_t first;
    uint32_t last;
};

// Control characters, and those that change the direction or the line of what follows.
constexpr std::array kControls{
    CodeRange{0x00, 0x1F},     CodeRange{0x7F, 0x9F},     CodeRange{0x61C, 0x61C},
    CodeRange{0x200E, 0x200F}, CodeRange{0x2028, 0x202E}, CodeRange{0x2066, 0x2069},
};

bool is_control(uint32_t code)
{
    return std::ranges::any_of(
        kControls, [code](const CodeRange& r) { return code >= r.first && code <= r.last; });
}

std::string made_harmless(std::string_view text, bool keep_newlines)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Character c = first_character(text);
        if (c.bytes == 0) {
            result += kReplacement;
        } else if (is_control(c.code) && !(keep_newlines && c.code == '\n')) {
            result +=
                c.code < 0x80 ? fmt::format("\\x{:02x}", c.code) : fmt::format("\\u{:04x}", c.code);
        } else {
            result += text.substr(0, c.bytes);
        }
        text.remove_prefix(std::max<std::size_t>(c.bytes, 1));
    }
    return result;
}

}  // namespace

std::string printable(std::string_view text)
{
    return made_harmless(text, false);
}

std::string printable_lines(std::string_view text)
{
    return made_harmless(text, true);
}

std::size_t columns(std::string_view text)
{
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string cut(std::string_view text, std::size_t most, std::string_view end)
{
    if (columns(text) <= most) {
        return std::string{text};
    }
    const std::string_view mark = columns(end) <= most ? end : std::string_view{};
    const std::size_t kept = most - columns(mark);
    std::size_t bytes = 0;
    for (std::size_t taken = 0; taken < kept; ++taken) {
        bytes += first_character(text.substr(bytes)).bytes;
    }
    return std::string{text.substr(0, bytes)}.append(mark);
}

}  // namespace nimba::smi
