// SPDX-License-Identifier: MIT
#include "allocation_source_reader.hpp"

#include "allocation_values_reader.hpp"

#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>
#include <string>

namespace nimba::sim {
namespace {

constexpr const char* kShapeExpected = "the name of an [[adapter.shape]]";
constexpr int64_t kLeastSegment = std::numeric_limits<int32_t>::min();
constexpr int64_t kGreatestSegment = std::numeric_limits<int32_t>::max();

std::optional<std::size_t> find_shape(const AllocationParts& parts, const std::string& name)
{
    const auto shape = std::ranges::find(parts.shapes, name, &AllocationShape::name);
    return shape == parts.shapes.end()
               ? std::nullopt
               : std::optional{static_cast<std::size_t>(shape - parts.shapes.begin())};
}

std::vector<std::size_t> read_shapes(const TableReader& table, const AllocationParts& parts)
{
    std::vector<std::size_t> shapes;
    if (table.has("shapes")) {
        const auto names = table.texts("shapes");
        for (std::size_t index = 0; index < names.size(); ++index) {
            const auto shape = find_shape(parts, names[index]);
            if (!shape) {
                table.reject_item("shapes", index, kShapeExpected);
            }
            shapes.push_back(*shape);
        }
    } else {
        shapes.resize(parts.shapes.size());
        std::iota(shapes.begin(), shapes.end(), std::size_t{0});
    }
    if (shapes.empty()) {
        table.reject("shapes", "the names of one or more [[adapter.shape]]");
    }
    return shapes;
}

std::vector<int64_t> read_devices(const TableReader& table, const AllocationParts& parts)
{
    auto devices = parts.devices;
    if (table.has("devices")) {
        devices = table.integers("devices", 0, kGreatestHandle);
        for (std::size_t index = 0; index < devices.size(); ++index) {
            if (!parts.has_device(devices[index])) {
                table.reject_item("devices", index, std::string{kContextExpected});
            }
        }
    }
    if (devices.empty()) {
        table.reject("devices", "the handles of one or more device contexts of the adapter");
    }
    return devices;
}

std::vector<int64_t> read_segments(const TableReader& table)
{
    if (!table.has("segments")) {
        return {0};
    }
    auto segments = table.integers("segments", kLeastSegment, kGreatestSegment);
    if (segments.empty()) {
        table.reject("segments", "at least one segment");
    }
    return segments;
}

}  // namespace

bool AllocationParts::has_device(int64_t handle) const
{
    return std::ranges::find(devices, handle) != devices.end();
}

AllocationSource read_allocation_source(const TableReader& table, const AllocationParts& parts)
{
    const int64_t seed = table.integer_or("seed", 0, std::numeric_limits<int64_t>::max(), 1);
    return {static_cast<uint64_t>(seed), read_shapes(table, parts), read_devices(table, parts),
            read_segments(table)};
}

AllocationSource read_single_source(const TableReader& table, const AllocationParts& parts)
{
    const auto shape = find_shape(parts, table.text("shape"));
    if (!shape) {
        table.reject("shape", kShapeExpected);
    }
    const int64_t device = table.integer("device", 0, kGreatestHandle);
    if (!parts.has_device(device)) {
        table.reject("device", std::string{kContextExpected});
    }
    return {
        0, {*shape}, {device}, {table.integer_or("segment", kLeastSegment, kGreatestSegment, 0)}};
}

}  // namespace nimba::sim
