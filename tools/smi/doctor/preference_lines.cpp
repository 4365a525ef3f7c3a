// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/preference_lines.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace nimba::smi {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::array<std::string_view, 4> kKeys{"FullPath", "GpuPrefer", "PreferGpuName",
                                                "PreferGpuBusID"};

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\n\v\f\r";
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

bool is_section(std::string_view line)
{
    return line.starts_with('[') && line.find(']') != std::string_view::npos;
}

// Keys in front of the first section are not any application's.
bool is_value(std::string_view line, int sections)
{
    const std::size_t equals = line.find('=');
    return sections > 0 && equals != std::string_view::npos &&
           std::ranges::find(kKeys, trimmed(line.substr(0, equals))) != kKeys.end();
}

}  // namespace

PreferenceLines count_preference_lines(std::string_view text)
{
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    PreferenceLines lines;
    for (int number = 1; !text.empty(); ++number) {
        const std::string_view whole = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(whole.size() + 1, text.size()));
        const std::string_view line = trimmed(whole.substr(0, whole.find(';')));
        if (is_section(line)) {
            ++lines.applications;
        } else if (!line.empty() && !is_value(line, lines.applications)) {
            ++lines.bad;
            lines.first_bad = lines.first_bad == 0 ? number : lines.first_bad;
        }
    }
    return lines;
}

}  // namespace nimba::smi
