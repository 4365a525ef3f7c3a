// SPDX-License-Identifier: MIT
#include "tools/smi/capture/redaction.hpp"

#include "tools/smi/capture/driver_words.hpp"

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

// Where the system keeps what is everybody's; a program in there has a name all the same.
constexpr std::array<std::string_view, 9> kSystemPlaces{
    "/usr/lib/",   "/usr/lib64/", "/usr/bin/", "/usr/sbin/", "/usr/libexec/",
    "/usr/share/", "/lib/",       "/lib64/",   "/sbin/"};

// Files whose names the commands know, wherever they are.
constexpr std::array<std::string_view, 4> kKnownFiles{"dmidecode", "ps", "wmt_gfx_util.ini",
                                                      "wmt_gfx_util.ini.bad"};

// What dmidecode writes where nothing is known.
constexpr std::array<std::string_view, 9> kUnknownToFirmware{
    "Not Specified", "Not Provided",  "Unknown",
    "None",          "N/A",           "Default string",
    "<BAD INDEX>",   "<OUT OF SPEC>", "To Be Filled By O.E.M."};

template <std::size_t kSize>
bool is_one_of(std::string_view text, const std::array<std::string_view, kSize>& texts)
{
    return std::ranges::find(texts, text) != texts.end();
}

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
    return !is_number(word) && !is_one_of(word, kDriverWords);
}

// The size of the driver's key that a text begins with, up to its sign; 0 when it begins with none.
std::size_t driver_key_size(std::string_view text)
{
    for (const std::string_view key : kDriverKeys) {
        if (!text.starts_with(key)) {
            continue;
        }
        const auto sign = text.find_first_not_of(" \t", key.size());
        if (sign != std::string_view::npos && (text[sign] == '=' || text[sign] == ':')) {
            return sign + 1;
        }
    }
    return 0;
}

// Whether a name that is more than a word can be told from what the driver says itself.
bool can_be_phrase(std::string_view name)
{
    const bool has_word = std::ranges::any_of(name, [](char c) {
        return is_word_character(c) && !is_number({&c, 1});
    });
    bool has_key = false;
    for (std::size_t i = 0; i < name.size() && !has_key; ++i) {
        has_key = driver_key_size(name.substr(i)) > 0;
    }
    return name.size() >= kShortestPhrase && has_word && !has_key;
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
    constexpr std::string_view kBlanks = " \t\n\v\f\r";
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

// What the library reads of a value that is numbers.
std::string_view numbers_of(std::string_view value)
{
    return value.substr(0, value.find_first_not_of("0123456789:.+-"));
}

// The line with another text in the place of a part of it.
std::string with(std::string_view line, std::string_view part, std::string_view text)
{
    const auto begin = static_cast<std::size_t>(part.data() - line.data());
    return std::string{line.substr(0, begin)}.append(text).append(line.substr(begin + part.size()));
}

// Whether a path begins at a slash of a sentence.
bool begins_path(std::string_view text, std::size_t slash)
{
    return (slash == 0 || (!is_word_character(text[slash - 1]) && text[slash - 1] != '/')) &&
           slash + 1 < text.size() && is_word_character(text[slash + 1]);
}

// Where a path that begins at `begin` ends: at the quotation mark when it is in such, else behind
// the last word with a slash of its own.
std::size_t path_end(std::string_view text, std::size_t begin)
{
    constexpr std::string_view kEnds = "\"'()<>;\n";
    std::size_t end = std::min(text.find_first_of(kEnds, begin), text.size());
    if (begin > 0 && text[begin - 1] == '"') {
        return std::min(text.find('"', begin), text.size());
    }
    for (const std::string_view mark : {": ", ", ", ". "}) {
        end = std::min(end, text.find(mark, begin));
    }
    const std::string_view all = text.substr(begin, end - begin);
    std::size_t size = std::min(all.find(' '), all.size());
    for (std::size_t blank = size; blank < all.size();) {
        const std::size_t next = std::min(all.find(' ', blank + 1), all.size());
        const auto slash = all.substr(blank + 1, next - blank - 1).find('/');
        if (slash == 0) {
            break;
        }
        size = slash == std::string_view::npos ? size : next;
        blank = next;
    }
    return begin + size - (size > 1 && (all[size - 1] == '.' || all[size - 1] == ':') ? 1 : 0);
}

// The nodes that a capture is of, and what else has no names of people and programs.
bool is_machine_path(std::string_view path)
{
    return path.starts_with("/sys/") || path.starts_with("/proc/") ||
           (path.starts_with("/dev/") && !path.starts_with("/dev/shm/"));
}

bool is_known_file(std::string_view name)
{
    return is_one_of(name, kKnownFiles) ||
           (name.starts_with("lib") && name.find(".so") != std::string_view::npos);
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
    if (!is_word(name) && can_be_phrase(name)) {
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

// The phrase that a text begins with, or an empty one.
std::string_view Redactor::phrase_at(std::string_view text) const
{
    const auto found = std::ranges::find_if(
        phrases_, [&](const std::string& phrase) { return text.starts_with(phrase); });
    return found == phrases_.end() ? std::string_view{} : std::string_view{*found};
}

std::string Redactor::words(std::string_view line) const
{
    std::string result;
    while (!line.empty()) {
        std::size_t size = is_word_character(line.front()) ? driver_key_size(line) : 0;
        if (size > 0) {
            result += line.substr(0, size);
        } else if (const std::string_view phrase = phrase_at(line); !phrase.empty()) {
            size = phrase.size();
            result += stand_ins_.at(std::string{phrase});
        } else {
            const auto* const end = std::ranges::find_if_not(line, is_word_character);
            size = std::max<std::size_t>(static_cast<std::size_t>(end - line.begin()), 1);
            const std::string_view word = line.substr(0, size);
            const auto known = stand_ins_.find(std::string{word});
            const bool is_name = known != stand_ins_.end() && can_be_value(word);
            result += is_name ? std::string_view{known->second} : word;
        }
        line.remove_prefix(size);
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
        result += words(line);
    });
    return result;
}

std::string Redactor::sentence(std::string_view text)
{
    std::string result;
    std::size_t done = 0;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] != '/' || !begins_path(text, i)) {
            ++i;
            continue;
        }
        const std::size_t end = path_end(text, i);
        result += this->text(text.substr(done, i - done));
        result += told_path(text.substr(i, end - i));
        done = i = end;
    }
    return result + this->text(text.substr(done));
}

std::string Redactor::told_path(std::string_view told)
{
    if (is_machine_path(told)) {
        return std::string{told};
    }
    for (const std::string_view place : kSystemPlaces) {
        if (told.starts_with(place)) {
            return std::string{place} + text(told.substr(place.size()));
        }
    }
    const std::size_t file = told.rfind('/') + 1;
    const std::string_view name = told.substr(file);
    return path(told.substr(0, file)) + (is_known_file(name) ? text(name) : path(name));
}

// Each line is made anew of what the library makes of it.
std::string Redactor::preferences(std::string_view text, std::span<const std::string> gpus)
{
    std::string result;
    for_each_line(text, [&](std::string_view line) {
        const std::string_view shown = trimmed(line.substr(0, line.find(';')));
        const auto bracket = shown.find(']');
        if (shown.starts_with('[') && bracket != std::string_view::npos) {
            result += fmt::format("[{}]\n", section_name(shown.substr(1, bracket - 1)));
        } else if (const auto full = value_of(shown, "FullPath", '=')) {
            result += fmt::format("FullPath = {}\n", path(*full));
        } else if (const auto gpu = value_of(shown, "PreferGpuName", '=')) {
            const bool is_known = std::ranges::find(gpus, *gpu) != gpus.end();
            result +=
                fmt::format("PreferGpuName = {}\n", is_known ? std::string{*gpu} : path(*gpu));
        } else if (const auto bus_id = value_of(shown, "PreferGpuBusID", '=')) {
            result += fmt::format("PreferGpuBusID = {}\n", numbers_of(*bus_id));
        } else if (const auto prefer = value_of(shown, "GpuPrefer", '=')) {
            result += fmt::format("GpuPrefer = {}\n", numbers_of(*prefer));
        }
    });
    return result;
}

// A section's name is one, whatever is in it.
std::string Redactor::section_name(std::string_view name)
{
    return name.empty() ? "" : this->name(name);
}

std::string Redactor::memory_modules(std::string_view text)
{
    std::string result;
    for_each_line(text, [&](std::string_view line) {
        auto value = value_of(line, "Serial Number", ':');
        value = value ? value : value_of(line, "Asset Tag", ':');
        const bool is_name = value && !value->empty() && !is_one_of(*value, kUnknownToFirmware);
        result += is_name ? with(line, *value, name(*value)) : std::string{line};
    });
    return result;
}

}  // namespace nimba::smi
