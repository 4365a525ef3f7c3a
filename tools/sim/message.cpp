// SPDX-License-Identifier: MIT
#include "message.hpp"

#include <fmt/core.h>

#include <cstdio>

namespace nimba::sim {
namespace {

struct ControlCharacter {
    unsigned int code;
    std::size_t length;  // in bytes; 0: the text does not start with a control character
};

ControlCharacter control_character_at_start(std::string_view text)
{
    const auto byte = [&](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
    };
    if (byte(0) < 0x20 || byte(0) == 0x7F) {
        return {byte(0), 1};
    }
    const bool is_of_second_set = byte(0) == 0xC2 && byte(1) >= 0x80 && byte(1) < 0xA0;
    return is_of_second_set ? ControlCharacter{byte(1), 2} : ControlCharacter{0, 0};
}

}  // namespace

bool has_control_characters(std::string_view text)
{
    for (; !text.empty(); text.remove_prefix(1)) {
        if (control_character_at_start(text).length != 0) {
            return true;
        }
    }
    return false;
}

std::string without_control_characters(std::string_view text)
{
    std::string shown;
    while (!text.empty()) {
        const auto [code, length] = control_character_at_start(text);
        if (length != 0) {
            shown += fmt::format("\\u{:04x}", code);
            text.remove_prefix(length);
        } else {
            shown += text.front();
            text.remove_prefix(1);
        }
    }
    return shown;
}

void complain(std::string_view text)
{
    const std::string line = fmt::format("nimba-sim: {}\n", without_control_characters(text));
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace nimba::sim
