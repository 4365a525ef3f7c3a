// SPDX-License-Identifier: MIT
#include "connection_reader.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cstdint>
#include <regex>
#include <set>
#include <variant>

namespace nimba::sim {
namespace {

constexpr std::string_view kWidth = "link_width";
constexpr std::string_view kSpeed = "link_speed";
constexpr std::string_view kConnectors = "connectors";
constexpr int64_t kGreatestWidth = 65535;
constexpr std::size_t kLongestAttribute = 4096;  // of one page, as the kernel has it
constexpr std::size_t kLongestConnector = 64;

// What the default board tells in /proc.
const std::vector<std::string> kDefaultConnectors{"VGA-1", "HDMI-A-1", "DP-1"};

void check_attribute(const TableReader& adapter, std::string_view key, const std::string& text)
{
    if (text.size() > kLongestAttribute) {
        adapter.reject(key, fmt::format("a text of {} bytes at most", kLongestAttribute));
    }
}

void check_names(const TableReader& adapter, const std::vector<std::string>& names)
{
    static const std::regex kShape{"[A-Za-z0-9_][A-Za-z0-9_.-]*"};
    std::set<std::string> taken;
    for (std::size_t index = 0; index < names.size(); ++index) {
        const std::string& name = names[index];
        if (name.size() > kLongestConnector || !std::regex_match(name, kShape)) {
            adapter.reject_item(
                kConnectors, index,
                fmt::format("a name of letters, digits, \"_\", \"-\", \".\", {} at most",
                            kLongestConnector));
        }
        if (!taken.insert(name).second) {
            adapter.reject_item(kConnectors, index, "a name that no other connector has");
        }
    }
}

}  // namespace

PcieLink read_link(const TableReader& adapter)
{
    PcieLink link{"8\n", "16.0 GT/s PCIe\n"};
    if (adapter.has(kWidth)) {
        const auto width = adapter.integer_or_text(kWidth, 0, kGreatestWidth);
        const auto* const number = std::get_if<int64_t>(&width);
        link.width =
            number == nullptr ? std::get<std::string>(width) : fmt::format("{}\n", *number);
    }
    link.speed = adapter.any_text(kSpeed).value_or(link.speed);
    check_attribute(adapter, kWidth, link.width);
    check_attribute(adapter, kSpeed, link.speed);
    return link;
}

std::optional<std::vector<std::string>> read_connectors(const TableReader& adapter,
                                                        const DrmDevice& drm)
{
    if (!adapter.has(kConnectors)) {
        return kDefaultConnectors;
    }
    if (!drm.nodes.contains(DrmNode::kPrimary)) {
        adapter.reject(kConnectors, "no such key without a primary node");
    }
    auto names = adapter.texts_or_false(kConnectors);
    if (names) {
        check_names(adapter, *names);
    }
    return names;
}

}  // namespace nimba::sim
