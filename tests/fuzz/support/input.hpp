// SPDX-License-Identifier: MIT
// How the bytes of a fuzzer become texts and numbers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::fuzz {

// Takes the first byte off; 0 when there is none.
inline uint8_t take_byte(std::string_view& input)
{
    if (input.empty()) {
        return 0;
    }
    const auto byte = static_cast<uint8_t>(input.front());
    input.remove_prefix(1);
    return byte;
}

// Takes a number's bytes off; 0 when there are too few.
template <typename Number>
Number take_number(std::string_view& input)
{
    Number number{};
    if (input.size() >= sizeof number) {
        std::memcpy(&number, input.data(), sizeof number);
        input.remove_prefix(sizeof number);
    } else {
        input = {};
    }
    return number;
}

// What a line buffer's text is: a NUL ends it.
inline std::string up_to_nul(std::string_view text)
{
    return std::string{text.substr(0, text.find('\0'))};
}

// Takes the first line off; it is given without its newline.
inline std::string_view take_line(std::string_view& input)
{
    const std::string_view line = input.substr(0, input.find('\n'));
    input.remove_prefix(std::min(line.size() + 1, input.size()));
    return line;
}

// The texts between lines "%%", `most` at most; the last has what is left.
inline std::vector<std::string_view> split(std::string_view input, std::size_t most)
{
    constexpr std::string_view kBetween = "%%\n";
    std::vector<std::string_view> texts;
    while (texts.size() + 1 < most) {
        const std::size_t end = input.find(kBetween);
        if (end == std::string_view::npos) {
            break;
        }
        texts.push_back(input.substr(0, end));
        input.remove_prefix(end + kBetween.size());
    }
    texts.push_back(input);
    return texts;
}

// The texts, and empty ones up to so many.
inline std::vector<std::string_view> split_into(std::string_view input, std::size_t count)
{
    std::vector<std::string_view> texts = split(input, count);
    texts.resize(count);
    return texts;
}

// The text over and over: readers' buffers are larger than what a fuzzer likes to try. How often is
// told by `control`, for nearly all values once, as a long text takes as long as hundreds of
// others, and limited by `most` bytes.
inline std::string repeated(std::string_view text, uint8_t control, std::size_t most)
{
    const unsigned form = control & ~4U;  // bit 2 is the fuzzer's own
    const std::size_t wanted = form == 0xF0 ? 2000 : form == 0xE0 ? 30 : 1;
    const std::size_t fit = std::max<std::size_t>(most / std::max<std::size_t>(text.size(), 1), 1);
    std::string whole;
    for (std::size_t time = std::min(wanted, fit); time > 0; --time) {
        whole += text;
    }
    return whole;
}

}  // namespace nimba::fuzz
