// SPDX-License-Identifier: MIT
#include "video_memory_reader.hpp"

#include "allocation_list_reader.hpp"
#include "allocation_source_reader.hpp"
#include "allocation_values_reader.hpp"
#include "claims.hpp"
#include "device_context_reader.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace nimba::sim {
namespace {

constexpr std::array<std::string_view, 7> kGeneratedKeys{
    "contexts", "pids", "allocations", "seed", "shapes", "devices", "segments"};
constexpr std::array<std::string_view, 7> kChangeKeys{"appear", "vanish",  "live",    "seed",
                                                      "shapes", "devices", "segments"};
constexpr std::array<std::string_view, 4> kLeakKeys{"shape", "device", "segment", "per_second"};

constexpr int64_t kMostAllocations = 200000;
constexpr int64_t kGreatestRate = 10000;  // per second
constexpr int64_t kGreatestWeight = 1000000;

std::vector<AllocationShape> read_shapes(const TableReader& adapter)
{
    std::vector<AllocationShape> shapes;
    Claims claims;
    for (const TableReader& table : adapter.tables("shape", kShapeKeys)) {
        AllocationShape shape;
        shape.name = table.text("name");
        claims.take("shape name", shape.name, table, "name");
        shape.weight = static_cast<uint64_t>(table.integer_or("weight", 1, kGreatestWeight, 1));
        shape.values = read_allocation_values(table);
        shapes.push_back(std::move(shape));
    }
    return shapes;
}

std::vector<int64_t> device_handles(const std::vector<DeviceContext>& contexts)
{
    std::vector<int64_t> handles;
    for (const DeviceContext& context : contexts) {
        if (const auto* handle = std::get_if<int64_t>(&context.handle)) {
            handles.push_back(*handle);
        }
    }
    return handles;
}

GeneratedAllocations read_generated(const TableReader& table, const AllocationParts& parts)
{
    GeneratedAllocations generated;
    generated.count =
        static_cast<uint64_t>(table.integer_or("allocations", 0, kMostAllocations, 0));
    if (generated.count > 0) {
        generated.source = read_allocation_source(table, parts);
    }
    return generated;
}

AllocationChange read_change(const TableReader& table, const AllocationParts& parts)
{
    const auto number = [&](std::string_view key, int64_t least, int64_t greatest,
                            int64_t fallback) {
        return static_cast<uint64_t>(table.integer_or(key, least, greatest, fallback));
    };
    return {number("appear", 0, kGreatestRate, 0), number("vanish", 0, kGreatestRate, 0),
            number("live", 1, kMostAllocations, kMostAllocations),
            read_allocation_source(table, parts)};
}

VideoMemory read_tables(const TableReader& adapter, const std::vector<Process>& processes,
                        AllocationNames names)
{
    VideoMemory memory;
    memory.shown = true;
    memory.names = names;
    const auto generated = adapter.table("generated", kGeneratedKeys);
    memory.contexts = read_device_contexts(adapter, generated, processes);
    memory.shapes = read_shapes(adapter);
    const AllocationParts parts{memory.shapes, device_handles(memory.contexts)};
    memory.allocations = read_allocations(adapter, parts, names);
    if (generated) {
        memory.generated = read_generated(*generated, parts);
    }
    if (const auto change = adapter.table("change", kChangeKeys)) {
        memory.change = read_change(*change, parts);
    }
    for (const TableReader& table : adapter.tables("leak", kLeakKeys)) {
        memory.leaks.push_back(
            {static_cast<uint64_t>(table.integer("per_second", 1, kGreatestRate)),
             read_single_source(table, parts)});
    }
    return memory;
}

// The nodes of allocations and device contexts are either texts of the machine file or made from
// its tables.
void check_debug_nodes(const TableReader& adapter, std::string_view table)
{
    const auto nodes = adapter.texts_by_name_or("debug", {});
    if (!nodes) {
        adapter.reject(table, "no such key beside a 'debug' that is false");
    }
    for (const auto& [path, text] : *nodes) {
        const std::string directory = path.substr(0, path.find('/'));
        if (directory == "allocations" || directory == "devices") {
            adapter.reject_name(
                "debug", path,
                fmt::format("no file in \"{}\" beside the key '{}'", directory, table));
        }
    }
}

}  // namespace

VideoMemory read_video_memory(const TableReader& adapter, const std::vector<Process>& processes,
                              bool has_driver, AllocationNames names)
{
    const auto key = std::ranges::find_if(kVideoMemoryKeys,
                                          [&](std::string_view name) { return adapter.has(name); });
    if (key == kVideoMemoryKeys.end()) {
        VideoMemory memory;
        memory.names = names;
        memory.shown = has_driver && adapter.texts_by_name_or("debug", {}).has_value();
        return memory;
    }
    check_debug_nodes(adapter, *key);
    return read_tables(adapter, processes, names);
}

}  // namespace nimba::sim
