// SPDX-License-Identifier: MIT
#include "device_reader.hpp"

#include "key_problem.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace nimba::sim {
namespace {

constexpr int kGreatestCard = 63;
constexpr int kLeastRender = 128;
constexpr int kGreatestRender = 191;

constexpr std::array<std::pair<std::string_view, DrmNode>, 3> kDrmNodes{{
    {"primary", DrmNode::kPrimary},
    {"control", DrmNode::kControl},
    {"render", DrmNode::kRender},
}};

std::set<DrmNode> read_nodes(const TableReader& reader, std::string_view key,
                             const std::set<DrmNode>& fallback)
{
    if (!reader.has(key)) {
        return fallback;
    }
    std::set<DrmNode> nodes;
    const auto names = reader.texts(key);
    for (std::size_t index = 0; index < names.size(); ++index) {
        const auto* const row = std::ranges::find_if(
            kDrmNodes, [&](const auto& candidate) { return candidate.first == names[index]; });
        if (row == kDrmNodes.end()) {
            reader.reject_item(key, index, "one of \"primary\", \"control\", \"render\"");
        }
        nodes.insert(row->second);
    }
    return nodes;
}

}  // namespace

const Vendor* find_vendor(std::span<const Vendor> vendors, uint16_t id)
{
    const auto found = std::ranges::find(vendors, id, &Vendor::id);
    return found == vendors.end() ? nullptr : &*found;
}

uint16_t read_vendor(const TableReader& reader, std::span<const Vendor> vendors)
{
    if (reader.has("vendor") && !reader.is_text("vendor")) {
        return static_cast<uint16_t>(reader.integer("vendor", 0, 0xFFFF));
    }
    const std::string name = reader.is_text("vendor") ? reader.text("vendor") : "";
    const auto found = std::ranges::find(vendors, name, &Vendor::name);
    if (found == vendors.end()) {
        std::vector<std::string_view> names;
        for (const Vendor& vendor : vendors) {
            names.push_back(vendor.name);
        }
        reader.reject("vendor", one_of(names) + " or a number");
    }
    return found->id;
}

uint16_t read_device_id(const TableReader& reader)
{
    return static_cast<uint16_t>(reader.integer("device", 0, 0xFFFF));
}

PciAddress read_address(const TableReader& reader, Claims& claims)
{
    const auto address =
        reader.is_text("bus_id") ? parse_pci_address(reader.text("bus_id")) : std::nullopt;
    if (!address) {
        reader.reject("bus_id", "\"dddd:bb:dd.f\"");
    }
    claims.take("bus id", to_text(*address), reader, "bus_id");
    return *address;
}

DrmDevice read_drm(const TableReader& reader, Claims& claims, std::string_view driver)
{
    DrmDevice drm;
    drm.card = static_cast<int>(reader.integer("card", 0, kGreatestCard));
    claims.take("card number", std::to_string(drm.card), reader, "card");
    drm.render = static_cast<int>(
        reader.integer_or("render", kLeastRender, kGreatestRender, kLeastRender + drm.card));
    claims.take("render number", std::to_string(drm.render), reader,
                reader.has("render") ? "render" : "card");

    drm.nodes = read_nodes(reader, "nodes", {DrmNode::kPrimary, DrmNode::kRender});
    if (drm.nodes.empty()) {
        reader.reject("nodes", "at least one node");
    }
    drm.unopenable = read_nodes(reader, "unopenable", {});
    if (!std::ranges::includes(drm.nodes, drm.unopenable)) {
        reader.reject("unopenable", "only nodes that the device has");
    }
    drm.answers_version = reader.flag_or("version", true);
    drm.driver = driver;
    return drm;
}

}  // namespace nimba::sim
