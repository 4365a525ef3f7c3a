// SPDX-License-Identifier: MIT
#include "tools/smi/capture/redaction.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <random>
#include <utility>

namespace nimba::smi {
namespace {

constexpr std::size_t kLongestProcessName = 15;
// What is shorter, and more than a word, could be anything.
constexpr std::size_t kShortestPhrase = 4;

// The driver's own words; a program may be called the same.
constexpr std::array<std::string_view, 14> kDriverWords{
    "balance", "lowpower", "performance", "VGA",  "DVI",    "HDMI", "DP",
    "EDP",     "PCIE",     "entry",       "info", "buffer", "addr", "unknown"};

bool is_word_character(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           static_cast<unsigned char>(c) >= 0x80 ||
           std::string_view{"._+-@"}.find(c) != std::string_view::npos;
}

bool is_word(std::string_view text)
{
    return std::ranges::all_of(text, is_word_character);
}

// What a driver prints as a number is none of a name, whatever it means.
bool is_number(std::string_view text)
{
    return text.find_first_not_of("0123456789abcdefABCDEFx.-") == std::string_view::npos;
}

bool can_be_value(std::string_view word)
{
    return !is_number(word) && std::ranges::find(kDriverWords, word) == kDriverWords.end();
}

// Whether what comes behind says that a word before it is a key.
bool makes_key(std::string_view behind)
{
    const auto next = behind.find_first_not_of(" \t");
    return next != std::string_view::npos && (behind[next] == '=' || behind[next] == ':');
}

// Hands over each line with its newline.
template <typename Take>
void for_each_line(std::string_view text, Take take)
{
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
        take(text.substr(0, size));
        text.remove_prefix(size);
    }
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    const auto begin = text.find_first_not_of(kBlanks);
    return begin == std::string_view::npos
               ? std::string_view{}
               : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

// What stands behind the key and the sign, without blanks around it.
std::optional<std::string_view> value_of(std::string_view line, std::string_view key, char sign)
{
    const auto end = line.find(sign);
    if (end == std::string_view::npos || trimmed(line.substr(0, end)) != key) {
        return std::nullopt;
    }
    return trimmed(line.substr(end + 1));
}

// The line with another text in the place of a part of it.
std::string with(std::string_view line, std::string_view part, std::string_view text)
{
    const auto begin = static_cast<std::size_t>(part.data() - line.data());
    return std::string{line.substr(0, begin)}.append(text).append(line.substr(begin + part.size()));
}

}  // namespace

uint32_t random_number()
{
    return std::random_device{}();
}

Redactor::Redactor(std::function<uint32_t()> draw) : draw_{std::move(draw)} {}

std::string Redactor::name(std::string_view name)
{
    if (const auto known = stand_ins_.find(std::string{name}); known != stand_ins_.end()) {
        return known->second;
    }
    std::string stand_in;
    do {
        stand_in = fmt::format("name-{:08x}", draw_());
    } while (!taken_.insert(stand_in).second);
    if (!is_word(name) && name.size() >= kShortestPhrase) {
        phrases_.emplace(name);
    }
    stand_ins_.emplace(name, stand_in);
    return stand_in;
}

std::string Redactor::path(std::string_view path)
{
    std::string result;
    while (!path.empty()) {
        const std::size_t size = std::min(path.find('/'), path.size());
        if (size > 0) {
            result += name(path.substr(0, size));
            path.remove_prefix(size);
        } else {
            result += '/';
            path.remove_prefix(1);
        }
    }
    return result;
}

std::string Redactor::process_name(std::string_view name, std::string_view program)
{
    const std::string_view file = program.substr(program.rfind('/') + 1);
    if (name.size() == kLongestProcessName && file.starts_with(name)) {
        stand_ins_.emplace(name, this->name(file));
    }
    return this->name(name);
}

std::string Redactor::words(std::string_view line) const
{
    std::string result;
    for (std::size_t i = 0; i < line.size();) {
        if (!is_word_character(line[i])) {
            result += line[i++];
            continue;
        }
        std::size_t end = i;
        while (end < line.size() && is_word_character(line[end])) {
            ++end;
        }
        const std::string_view word = line.substr(i, end - i);
        const auto known = stand_ins_.find(std::string{word});
        const bool replaced =
            known != stand_ins_.end() && can_be_value(word) && !makes_key(line.substr(end));
        result += replaced ? std::string_view{known->second} : word;
        i = end;
    }
    return result;
}

void Redactor::learn(std::string_view text)
{
    for_each_line(text, [&](std::string_view line) {
        if (const auto pname = value_of(line, "device_pname", '=')) {
            path(*pname);
        }
    });
}

std::string Redactor::text(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for_each_line(text, [&](std::string_view line) {
        if (const auto pname = value_of(line, "device_pname", '='); pname && !pname->empty()) {
            result += with(line, *pname, path(*pname));
            return;
        }
        std::string rest{line};
        for (const std::string& phrase : phrases_) {
            for (auto at = rest.find(phrase); at != std::string::npos; at = rest.find(phrase, at)) {
                const std::string& stand_in = stand_ins_.at(phrase);
                rest.replace(at, phrase.size(), stand_in);
                at += stand_in.size();
            }
        }
        result += words(rest);
    });
    return result;
}

std::string Redactor::preferences(std::string_view text)
{
    constexpr std::array<std::string_view, 3> kKept{"PreferGpuName", "PreferGpuBusID", "GpuPrefer"};
    std::string result;
    for_each_line(text, [&](std::string_view line) {
        const std::string_view shown = trimmed(line);
        if (shown.starts_with('[') && shown.ends_with(']')) {
            result += fmt::format("[{}]\n", name(shown.substr(1, shown.size() - 2)));
        } else if (const auto full = value_of(line, "FullPath", '=')) {
            result += with(line, *full, path(*full));
        } else if (std::ranges::any_of(kKept, [&](std::string_view key) {
                       return value_of(line, key, '=').has_value();
                   })) {
            result += line;
        }
    });
    return result;
}

std::string Redactor::memory_modules(std::string_view text)
{
    std::string result;
    for_each_line(text, [&](std::string_view line) {
        auto value = value_of(line, "Serial Number", ':');
        value = value ? value : value_of(line, "Asset Tag", ':');
        result += value && !value->empty() ? with(line, *value, name(*value)) : std::string{line};
    });
    return result;
}

}  // namespace nimba::smi
