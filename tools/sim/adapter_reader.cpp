// SPDX-License-Identifier: MIT
#include "adapter_reader.hpp"

#include "adapter_power_reader.hpp"
#include "connection_reader.hpp"
#include "device_reader.hpp"
#include "driver/model_nodes.hpp"
#include "product.hpp"
#include "video_memory_reader.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <regex>
#include <utility>

namespace nimba::sim {
namespace {

constexpr std::array<std::string_view, 3> kDriverKinds{"va", "legacy", "none"};

constexpr std::size_t kLongestName = 255;  // of a file, in bytes
constexpr std::size_t kLongestPath = 1024;

void read_identity(const TableReader& reader, PciDevice& pci)
{
    if (!reader.has("chip") && (reader.has("vendor") || reader.has("device"))) {
        pci.vendor = read_vendor(reader, product_vendors());
        if (find_vendor(product_vendors(), pci.vendor) == nullptr) {
            reader.reject("vendor", "a vendor of the product, \"nimba\" or \"qv\"");
        }
        pci.device = read_device_id(reader);
        return;
    }
    for (const char* key : {"vendor", "device"}) {
        if (reader.has(key)) {
            reader.reject(key, "no such key beside 'chip'");
        }
    }
    std::vector<std::string_view> names;
    for (const Chip& chip : chips()) {
        names.push_back(chip.name);
    }
    const auto chip = std::ranges::find(chips(), reader.choice("chip", names), &Chip::name);
    pci.vendor = chip->vendor;
    pci.device = chip->device;
}

// The texts that are in the debug directory when the machine file does not say otherwise.
Nodes default_debug_nodes(const std::string& driver_kind)
{
    if (driver_kind == "none") {
        return {};
    }
    return {{"info", driver_kind == "va" ? "VA=1\n" : "VA=0\n"}};
}

void check_node_path(const TableReader& reader, std::string_view key, const std::string& path)
{
    static const std::regex kShape{"[A-Za-z0-9_-][A-Za-z0-9_.-]*(/[A-Za-z0-9_-][A-Za-z0-9_.-]*)*"};
    std::size_t part = 0;
    for (const char letter : path) {
        part = letter == '/' ? 0 : part + 1;
        if (part > kLongestName || path.size() > kLongestPath) {
            reader.reject_name(key, path,
                               fmt::format("a path of {} bytes at most, {} between two \"/\"",
                                           kLongestPath, kLongestName));
        }
    }
    if (!std::regex_match(path, kShape)) {
        reader.reject_name(key, path, "a path of letters, digits, \"_\", \"-\", \".\"");
    }
}

// A node is not a directory: no other node can be below it. The nodes that are there without being
// mentioned are at the top.
void check_directories_of_nodes(const TableReader& reader, std::string_view key, const Nodes& nodes)
{
    for (const auto& [path, text] : nodes) {
        for (auto slash = path.find('/'); slash != std::string::npos;
             slash = path.find('/', slash + 1)) {
            if (const auto other = nodes.find(path.substr(0, slash)); other != nodes.end()) {
                reader.reject_name(
                    key, path,
                    fmt::format("a path that is not below the file \"{}\"", other->first));
            }
        }
    }
}

// What is in /proc is one file; it has the path "".
std::optional<Nodes> read_proc(const TableReader& reader)
{
    constexpr std::string_view kKey = to_text(NodeDirectory::kProc);
    if (!reader.has(kKey)) {
        return Nodes{};
    }
    if (const auto text = reader.is_text(kKey) ? reader.any_text(kKey) : std::nullopt) {
        return Nodes{{"", *text}};
    }
    if (reader.flag_or(kKey, false)) {
        reader.reject(kKey, "a text or false");
    }
    return std::nullopt;
}

// Reads the table of a directory's texts; nothing if it is the word `false`.
std::optional<Nodes> read_texts(const TableReader& reader, std::string_view key)
{
    auto nodes = reader.texts_by_name_or(key, {});
    if (nodes) {
        for (const auto& [path, text] : *nodes) {
            check_node_path(reader, key, path);
        }
    }
    return nodes;
}

NodeDirectories read_directories(const TableReader& reader, const std::string& driver_kind)
{
    NodeDirectories directories;
    for (const auto& [key, directory] : kNodeDirectories) {
        auto nodes =
            directory == NodeDirectory::kProc ? read_proc(reader) : read_texts(reader, key);
        if (!nodes) {
            continue;
        }
        if (directory == NodeDirectory::kDebug) {
            nodes->merge(default_debug_nodes(driver_kind));
        }
        check_directories_of_nodes(reader, key, *nodes);
        if (!nodes->empty() || directory != NodeDirectory::kDebug) {
            directories.emplace(directory, std::move(*nodes));
        }
    }
    return directories;
}

// Whether the adapter has the directory, or the node in it, or a directory of such nodes there.
bool has_place(const Adapter& adapter, const NodePlace& place)
{
    const auto found = adapter.directories.find(place.directory);
    if (found == adapter.directories.end() || place.path.empty()) {
        return found != adapter.directories.end();
    }
    const auto is_in_place = [&](const std::string& node) { return is_at_or_below(node, place); };
    return std::ranges::any_of(found->second, is_in_place, &Nodes::value_type::first) ||
           std::ranges::any_of(shown_model_nodes(adapter, place.directory), is_in_place,
                               &ModelNode::name);
}

// Reads a list of places such as "info" (a directory) and "info/enable_usage" (a node in it).
std::vector<NodePlace> read_places(const TableReader& reader, std::string_view key,
                                   const Adapter& adapter)
{
    std::vector<NodePlace> places;
    if (!reader.has(key)) {
        return places;
    }
    const auto texts = reader.texts(key);
    for (std::size_t index = 0; index < texts.size(); ++index) {
        const std::string& text = texts[index];
        const auto slash = std::min(text.find('/'), text.size());
        const std::string path = slash < text.size() ? text.substr(slash + 1) : "";
        const auto* const row = std::ranges::find(kNodeDirectories, text.substr(0, slash),
                                                  &decltype(kNodeDirectories)::value_type::first);
        if (row == kNodeDirectories.end() || (slash < text.size() && path.empty()) ||
            !has_place(adapter, {row->second, path})) {
            reader.reject_item(key, index,
                               "a directory that the adapter has (\"debug\", \"info\", \"hwmon\", "
                               "\"proc\") or a node in it (\"info/enable_usage\")");
        }
        places.push_back({row->second, path});
    }
    return places;
}

// Takes texts away, too.
void take_away(Adapter& adapter, const std::vector<NodePlace>& places)
{
    for (const NodePlace& place : places) {
        if (!place.path.empty()) {
            std::erase_if(adapter.directories.at(place.directory),
                          [&](const auto& node) { return is_at_or_below(node.first, place); });
            adapter.missing.push_back(place);
        }
    }
    for (const NodePlace& place : places) {
        if (place.path.empty()) {
            adapter.directories.erase(place.directory);
            adapter.video_memory.shown &= place.directory != NodeDirectory::kDebug;
        }
    }
}

}  // namespace

Adapter read_adapter(const TableReader& reader, Claims& claims,
                     const std::vector<Process>& processes)
{
    Adapter adapter;
    read_identity(reader, adapter.pci);
    adapter.driver_dir = find_vendor(product_vendors(), adapter.pci.vendor)->driver;
    adapter.pci.address = read_address(reader, claims);
    adapter.drm = read_drm(reader, claims, adapter.driver_dir);
    adapter.link = read_link(reader);
    adapter.drm.connectors = read_connectors(reader, adapter.drm);
    const std::string driver_kind =
        reader.has("driver") ? reader.choice("driver", kDriverKinds) : "va";
    adapter.va_driver = driver_kind == "va";
    adapter.directories = read_directories(reader, driver_kind);
    adapter.video_memory = read_video_memory(
        reader, processes, driver_kind != "none",
        has_virtual_memory_beside(adapter) ? AllocationNames::kEntries : AllocationNames::kHandles);
    adapter.power = read_adapter_power(reader, !has_virtual_memory_beside(adapter));
    take_away(adapter, read_places(reader, "missing", adapter));
    adapter.unreadable = read_places(reader, "unreadable", adapter);
    return adapter;
}

}  // namespace nimba::sim
