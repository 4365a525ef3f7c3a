// SPDX-License-Identifier: MIT
#include "adapter_reader.hpp"

#include "device_reader.hpp"
#include "product.hpp"
#include "video_memory_reader.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <regex>
#include <utility>

namespace nimba::sim {
namespace {

constexpr std::array<std::string_view, 3> kDriverKinds{"va", "legacy", "none"};

constexpr std::size_t kLongestName = 255;  // of a file, in bytes
constexpr std::size_t kLongestPath = 1024;

// The keys of an adapter that describe directories.
constexpr std::array<std::pair<std::string_view, NodeDirectory>, 3> kDirectories{{
    {"debug", NodeDirectory::kDebug},
    {"info", NodeDirectory::kInfo},
    {"hwmon", NodeDirectory::kHwmon},
}};

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

// What the directory holds when the machine file does not say otherwise.
Nodes default_nodes(NodeDirectory directory, const std::string& driver_kind,
                    const std::string& driver_dir)
{
    switch (directory) {
        case NodeDirectory::kDebug:
            if (driver_kind == "none") {
                return {};
            }
            return {{"info", driver_kind == "va" ? "VA=1\n" : "VA=0\n"}};
        case NodeDirectory::kInfo:
            return {{"enable_usage", "0\n"}};
        case NodeDirectory::kHwmon:
            break;
    }
    return {{"name", driver_dir + "\n"}, {"temp1_input", "45 *C\n"}};
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

NodeDirectories read_directories(const TableReader& reader, const std::string& driver_kind,
                                 const std::string& driver_dir)
{
    NodeDirectories directories;
    for (const auto& [key, directory] : kDirectories) {
        auto nodes = reader.texts_by_name_or(key, {});
        if (!nodes) {
            continue;
        }
        for (const auto& [path, text] : *nodes) {
            check_node_path(reader, key, path);
        }
        nodes->merge(default_nodes(directory, driver_kind, driver_dir));
        check_directories_of_nodes(reader, key, *nodes);
        if (!nodes->empty()) {
            directories.emplace(directory, std::move(*nodes));
        }
    }
    return directories;
}

// Reads places such as "info" (a directory) and "info/enable_usage" (a node in it).
std::vector<NodePlace> read_unreadable(const TableReader& reader,
                                       const NodeDirectories& directories)
{
    std::vector<NodePlace> places;
    if (!reader.has("unreadable")) {
        return places;
    }
    const auto texts = reader.texts("unreadable");
    for (std::size_t index = 0; index < texts.size(); ++index) {
        const std::string& text = texts[index];
        const auto slash = std::min(text.find('/'), text.size());
        const std::string path = slash < text.size() ? text.substr(slash + 1) : "";
        const auto* const row = std::ranges::find_if(kDirectories, [&](const auto& candidate) {
            return candidate.first == text.substr(0, slash);
        });
        const auto found =
            row == kDirectories.end() ? directories.end() : directories.find(row->second);
        if (found == directories.end() || (slash < text.size() && !found->second.contains(path))) {
            reader.reject_item("unreadable", index,
                               "a directory that the adapter has (\"debug\", \"info\", \"hwmon\") "
                               "or a node in it (\"info/enable_usage\")");
        }
        places.push_back({row->second, path});
    }
    return places;
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
    const std::string driver_kind =
        reader.has("driver") ? reader.choice("driver", kDriverKinds) : "va";
    adapter.va_driver = driver_kind == "va";
    adapter.directories = read_directories(reader, driver_kind, adapter.driver_dir);
    adapter.video_memory = read_video_memory(
        reader, processes, driver_kind != "none",
        has_virtual_memory_beside(adapter) ? AllocationNames::kEntries : AllocationNames::kHandles);
    adapter.unreadable = read_unreadable(reader, adapter.directories);
    return adapter;
}

}  // namespace nimba::sim
