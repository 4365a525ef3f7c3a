// SPDX-License-Identifier: MIT
#include "tools/smi/top/unicode.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace nimba::smi::top {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Block {
    char32_t first;
    char32_t last;
};

constexpr std::array kWide{
    Block{0x1100, 0x115F},   Block{0x2E80, 0x303E},   Block{0x3041, 0x33FF},
    Block{0x3400, 0x4DBF},   Block{0x4E00, 0x9FFF},   Block{0xA000, 0xA4CF},
    Block{0xAC00, 0xD7A3},   Block{0xF900, 0xFAFF},   Block{0xFE30, 0xFE6F},
    Block{0xFF00, 0xFF60},   Block{0xFFE0, 0xFFE6},   Block{0x1F300, 0x1F64F},
    Block{0x1F680, 0x1F6FF}, Block{0x1F900, 0x1F9FF}, Block{0x20000, 0x3FFFD},
};

constexpr std::array kWithoutWidth{
    Block{0x0300, 0x036F}, Block{0x0483, 0x0489}, Block{0x0591, 0x05BD},   Block{0x0610, 0x061A},
    Block{0x064B, 0x065F}, Block{0x200B, 0x200F}, Block{0x20D0, 0x20FF},   Block{0xFE00, 0xFE0F},
    Block{0xFE20, 0xFE2F}, Block{0xFEFF, 0xFEFF}, Block{0xE0000, 0xE01EF},
};

struct Pair {
    char32_t character;
    char32_t ascii;
};

constexpr std::array kNearest{
    Pair{U'─', '-'}, Pair{U'│', '|'}, Pair{U'╭', '+'}, Pair{U'╮', '+'}, Pair{U'╰', '+'},
    Pair{U'╯', '+'}, Pair{U'█', '#'}, Pair{U'━', '#'}, Pair{U'┄', '.'}, Pair{U'▲', '^'},
    Pair{U'▼', 'v'}, Pair{U'…', '.'}, Pair{U'·', '|'}, Pair{U'°', ' '}, Pair{U'–', '-'},
};

bool is_in(const auto& blocks, char32_t character)
{
    return std::ranges::any_of(blocks, [character](const Block& block) {
        return block.first <= character && character <= block.last;
    });
}

// The bytes that the first byte of a character announces; 0 when it is not a first one.
std::size_t length_from(uint8_t first)
{
    const int ones = std::countl_one(first);
    return ones == 0 ? 1 : ones >= 2 && ones <= 4 ? static_cast<std::size_t>(ones) : 0;
}

bool continues(char byte)
{
    return (static_cast<uint8_t>(byte) & 0xC0U) == 0x80U;
}

// The bytes of the text that are on its first line, which has at least one character.
std::size_t length_of_line(std::string_view text, int width)
{
    if (width_of(text) <= width) {
        return text.size();
    }
    std::size_t fits = 0;
    int taken = 0;
    for (const char32_t character : characters(text)) {
        taken += width_of(character);
        if (taken > width && fits > 0) {
            break;
        }
        std::string bytes;
        append_utf8(bytes, character);
        fits += bytes.size();
    }
    const std::size_t space = text.rfind(' ', fits);
    return space == std::string_view::npos || space == 0 ? fits : space;
}

}  // namespace

std::u32string characters(std::string_view text)
{
    std::u32string all;
    while (!text.empty()) {
        const auto first = static_cast<uint8_t>(text.front());
        const std::size_t length = length_from(first);
        const bool whole =
            length > 0 && length <= text.size() &&
            std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(length),
                        continues);
        if (!whole) {
            all += kReplacement;
            text.remove_prefix(1);
            continue;
        }
        char32_t character = length == 1 ? first : first & (0x7FU >> length);
        for (const char byte : text.substr(1, length - 1)) {
            character = character << 6U | (static_cast<uint8_t>(byte) & 0x3FU);
        }
        all += character;
        text.remove_prefix(length);
    }
    return all;
}

void append_utf8(std::string& text, char32_t character)
{
    if (character < 0x80) {
        text += static_cast<char>(character);
        return;
    }
    const unsigned more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    text += static_cast<char>((0xFF00U >> (more + 1) & 0xFFU) | character >> 6U * more);
    for (unsigned left = more; left-- > 0;) {
        text += static_cast<char>(0x80U | (character >> 6U * left & 0x3FU));
    }
}

int width_of(char32_t character)
{
    if (is_in(kWithoutWidth, character)) {
        return 0;
    }
    return is_in(kWide, character) ? 2 : 1;
}

int width_of(std::string_view text)
{
    int width = 0;
    for (const char32_t character : characters(text)) {
        width += width_of(character);
    }
    return width;
}

std::string cut(std::string_view text, int width)
{
    if (width_of(text) <= width) {
        return std::string{text};
    }
    std::string kept;
    int left = width - 1;
    for (const char32_t character : characters(text)) {
        left -= width_of(character);
        if (left < 0) {
            break;
        }
        append_utf8(kept, character);
    }
    return width > 0 ? kept + "…" : std::string{};
}

std::vector<std::string> in_lines(std::string_view text, int width, int indent)
{
    std::vector<std::string> lines;
    std::string_view rest = text;
    while (lines.empty() || !rest.empty()) {
        const int margin = lines.empty() ? 0 : indent;
        const std::size_t length = length_of_line(rest, width - margin);
        lines.push_back(std::string(static_cast<std::size_t>(margin), ' ') +
                        std::string{rest.substr(0, length)});
        rest.remove_prefix(std::min(rest.size(), rest.find_first_not_of(' ', length)));
    }
    return lines;
}

char32_t nearest_ascii(char32_t character)
{
    if (character < 0x80) {
        return character;
    }
    const auto pair = std::ranges::find(kNearest, character, &Pair::character);
    return pair == kNearest.end() ? U'?' : pair->ascii;
}

}  // namespace nimba::smi::top
