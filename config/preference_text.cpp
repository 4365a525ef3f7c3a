// SPDX-License-Identifier: MIT
#include "config/preference_text.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <span>

namespace nimba {
namespace {

using Node = _UTIL_GPU_PREFERENCE_NODE;

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

// At most the field's size is copied, a NUL only when there is room; the rest is cleared.
void copy_bounded(std::span<char> field, std::string_view text)
{
    std::ranges::fill(field, '\0');
    std::memcpy(field.data(), text.data(), std::min(field.size(), text.size()));
}

void set_full_path(Node& node, const std::string& value)
{
    copy_bounded(node.FullPath, value);
}

void set_prefer(Node& node, const std::string& value)
{
    int prefer = 0;
    if (std::sscanf(value.c_str(), "%d", &prefer) == 1) {
        node.GpuPrefer = prefer;
    }
}

void set_gpu_name(Node& node, const std::string& value)
{
    copy_bounded(node.PreferGpuName, value);
}

// The low bits of each number count.
void set_bus_id(Node& node, const std::string& value)
{
    int domain = node.domain;
    int bus = node.bus;
    int device = node.device;
    int function = node.function;
    std::sscanf(value.c_str(), "%d:%d:%d.%d", &domain, &bus, &device, &function);
    node.domain = static_cast<uint16_t>(domain);
    node.bus = static_cast<uint8_t>(bus);
    node.device = static_cast<uint8_t>(device);
    node.function = static_cast<uint8_t>(function);
}

struct Key {
    std::string_view name;
    void (*set)(Node& node, const std::string& value);
};

constexpr std::array kKeys{
    Key{"FullPath", set_full_path},
    Key{"GpuPrefer", set_prefer},
    Key{"PreferGpuName", set_gpu_name},
    Key{"PreferGpuBusID", set_bus_id},
};

}  // namespace

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kWhiteSpace);
    if (first == std::string_view::npos) {
        return text.substr(0, 0);
    }
    return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

std::string_view running_text(const Node& node, std::size_t offset)
{
    const char* text = reinterpret_cast<const char*>(&node) + offset;
    return {text, ::strnlen(text, sizeof node - offset)};
}

std::string preference_section(const Node& node)
{
    std::string section;
    const auto append_line = [&](std::string_view before, std::size_t offset,
                                 std::string_view after) {
        section.append(before).append(running_text(node, offset)).append(after);
    };
    append_line("[", offsetof(Node, FileName), "]\n");
    append_line("FullPath = ", offsetof(Node, FullPath), "\n");
    append_line("PreferGpuName = ", offsetof(Node, PreferGpuName), "\n");

    char numbers[80];
    std::snprintf(numbers, sizeof numbers,
                  "PreferGpuBusID = %04d:%02d:%02d.%d\nGpuPrefer = %d\n\n\n", node.domain, node.bus,
                  node.device, node.function, node.GpuPrefer);
    return section.append(numbers);
}

PreferenceLine read_preference_line(std::string_view line)
{
    const std::string_view text = trimmed(line.substr(0, line.find(';')));
    const std::size_t bracket = text.find(']');
    if (text.starts_with('[') && bracket != std::string_view::npos) {
        return {LineKind::kSection, text.substr(1, bracket - 1), {}};
    }
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) {
        return {};
    }
    return {LineKind::kValue, trimmed(text.substr(0, equals)), trimmed(text.substr(equals + 1))};
}

void set_file_name(Node& node, std::string_view name)
{
    copy_bounded(node.FileName, name);
}

void set_preference_value(Node& node, std::string_view key, std::string_view value)
{
    const auto row = std::ranges::find(kKeys, key, &Key::name);
    if (row != kKeys.end()) {
        row->set(node, std::string{value});
    }
}

}  // namespace nimba
