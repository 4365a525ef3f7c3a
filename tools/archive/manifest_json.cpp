// SPDX-License-Identifier: MIT
#include "tools/archive/entry_name.hpp"
#include "tools/archive/json_text.hpp"
#include "tools/archive/json_value.hpp"
#include "tools/archive/limits.hpp"
#include "tools/archive/name_forms.hpp"
#include "tools/archive/record_json.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace nimba::archive {
namespace {

// In the order of its members, as a reader wants them.
using Json = nlohmann::ordered_json;

constexpr const char* kFormat = "nimba-capture";
constexpr std::array<std::pair<DrmNodeType, std::string_view>, 3> kNodeTypes{{
    {DrmNodeType::kPrimary, "primary"},
    {DrmNodeType::kControl, "control"},
    {DrmNodeType::kRender, "render"},
}};

template <typename Value, typename Make>
Json nullable(const std::optional<Value>& value, Make make)
{
    return value ? Json(make(*value)) : Json(nullptr);
}

template <typename Value>
Json nullable(const std::optional<Value>& value)
{
    return value ? Json(*value) : Json(nullptr);
}

template <typename Values, typename Make>
Json list(const Values& values, Make make)
{
    Json result = Json::array();
    for (const auto& value : values) {
        result.push_back(make(value));
    }
    return result;
}

// What a reader takes as a line, of a text that may be anything: a strange one costs itself alone.
std::string as_line(const std::string& text)
{
    constexpr std::size_t kLongest = 4096;
    constexpr std::size_t kCut = 1000;  // each byte may become three
    std::string line = text.size() > kLongest ? text.substr(0, kCut) : text;
    std::ranges::replace_if(
        line,
        [](char c) {
            return !is_line({&c, 1});
        },
        '?');
    return line;
}

Json to_json(const DrmNode& node)
{
    const auto* const type =
        std::ranges::find(kNodeTypes, node.type, [](const auto& row) { return row.first; });
    return {{"type", type->second}, {"path", node.path}, {"error", nullable(node.error)}};
}

Json to_json(const DrmVersion& version)
{
    return {{"name", as_line(version.name)}, {"major", version.major},
            {"minor", version.minor},        {"patch", version.patch},
            {"date", as_line(version.date)}, {"description", as_line(version.description)}};
}

Json to_json(const DrmDevice& device)
{
    Json json = {{"bus", device.pci ? "pci" : "other"}};
    if (device.pci) {
        json.update({{"address", device.pci->address},
                     {"vendor", device.pci->vendor},
                     {"device", device.pci->device},
                     {"subvendor", device.pci->subvendor},
                     {"subdevice", device.pci->subdevice},
                     {"revision", device.pci->revision}});
    }
    json["nodes"] = list(device.nodes, [](const DrmNode& node) { return to_json(node); });
    json["version"] =
        nullable(device.version, [](const auto& version) { return to_json(version); });
    return json;
}

Json to_json(const KernelInterface& library)
{
    return {{"file", library.file},
            {"functions", library.functions},
            {"struct_size", library.struct_size},
            {"init_result", nullable(library.init_result)}};
}

Json to_json(const Adapter& adapter)
{
    return {{"slot", adapter.slot},
            {"bus_id", adapter.bus_id},
            {"card", nullable(adapter.card)},
            {"name", nullable(adapter.name)},
            {"vendor", adapter.vendor},
            {"device", adapter.device},
            {"va_driver", adapter.va_driver},
            {"kernel_interface", nullable(adapter.kernel_interface,
                                          [](const auto& library) { return to_json(library); })}};
}

DrmNodeType node_type(const JsonValue& value)
{
    const std::string text = value.text();
    const auto* const type =
        std::ranges::find(kNodeTypes, text, [](const auto& row) { return row.second; });
    if (type == kNodeTypes.end()) {
        value.fail("no type of node");
    }
    return type->first;
}

std::string formed(const JsonValue& value, bool (*has_form)(std::string_view), const char* what)
{
    std::string text = value.text();
    if (!has_form(text)) {
        value.fail(std::string{"no "} + what);
    }
    return text;
}

std::string error_name(const JsonValue& value)
{
    return formed(value, is_error_name, "error");
}

std::string line(const JsonValue& value)
{
    return formed(value, is_line, "line of text");
}

DrmNode read_node(const JsonValue& value)
{
    DrmNode node{node_type(value.member("type")), value.member("path").text(),
                 value.member("error").optional(error_name)};
    if (!is_drm_node_path(node.type, node.path)) {
        value.member("path").fail("no such node's path");
    }
    return node;
}

DrmVersion read_version(const JsonValue& value)
{
    return {line(value.member("name")),          value.member("major").number<int>(),
            value.member("minor").number<int>(), value.member("patch").number<int>(),
            line(value.member("date")),          line(value.member("description"))};
}

std::string bus_id(const JsonValue& value)
{
    return formed(value, is_bus_id, "PCI bus id");
}

DrmDevice read_device(const JsonValue& value)
{
    DrmDevice device;
    const std::string bus = value.member("bus").text();
    if (bus == "pci") {
        device.pci = PciIdentity{bus_id(value.member("address")),
                                 value.member("vendor").number<uint16_t>(),
                                 value.member("device").number<uint16_t>(),
                                 value.member("subvendor").number<uint16_t>(),
                                 value.member("subdevice").number<uint16_t>(),
                                 value.member("revision").number<uint8_t>()};
    } else if (bus != "other") {
        value.member("bus").fail("no bus");
    }
    device.nodes = value.member("nodes").list(read_node);
    device.version = value.member("version").optional(read_version);
    return device;
}

// That devices can be there together: what names one names no other.
void check_devices(const JsonValue& value, const std::vector<DrmDevice>& devices)
{
    std::vector<std::string> names;
    for (const DrmDevice& device : devices) {
        if (device.nodes.empty()) {
            value.fail("a list with a device without nodes");
        }
        if (device.pci) {
            names.push_back(device.pci->address);
        }
        std::vector<DrmNodeType> types;
        for (const DrmNode& node : device.nodes) {
            types.push_back(node.type);
            names.push_back(node.path);
        }
        std::ranges::sort(types);
        if (std::ranges::adjacent_find(types) != types.end()) {
            value.fail("a list with a device that has two nodes of a type");
        }
    }
    std::ranges::sort(names);
    if (std::ranges::adjacent_find(names) != names.end()) {
        value.fail("a list with two devices of a name");
    }
}

Drm read_drm(const JsonValue& value)
{
    value.member("devices").check_length(Limits{}.devices);
    Drm drm{value.member("library").optional(line), value.member("devices").list(read_device)};
    check_devices(value.member("devices"), drm.devices);
    return drm;
}

KernelInterface read_kernel_interface(const JsonValue& value)
{
    value.member("functions").check_length(Limits{}.functions);
    return {formed(value.member("file"), is_library_file, "library's file name"),
            value.member("functions").list([](const JsonValue& name) {
                return formed(name, is_function_name, "function's name");
            }),
            value.member("struct_size").number<uint32_t>(),
            value.member("init_result").optional([](const JsonValue& result) {
                return result.number<int32_t>();
            })};
}

int card_number(const JsonValue& value)
{
    return value.number<int>(0, kGreatestCard);
}

Adapter read_adapter(const JsonValue& value)
{
    return {value.member("slot").number<int>(0, kGreatestCard),
            bus_id(value.member("bus_id")),
            value.member("card").optional(card_number),
            value.member("name").optional(line),
            value.member("vendor").number<uint32_t>(),
            value.member("device").number<uint32_t>(),
            value.member("va_driver").boolean(),
            value.member("kernel_interface").optional(read_kernel_interface)};
}

std::vector<Adapter> read_adapters(const JsonValue& value)
{
    value.check_length(Limits{}.devices);
    return value.list(read_adapter);
}

std::vector<SampleTime> read_samples(const JsonValue& value)
{
    auto samples = value.list([](const JsonValue& sample) {
        return SampleTime{line(sample.member("time")), sample.member("seconds").seconds()};
    });
    if (samples.empty() || samples.size() > Limits{}.samples) {
        value.fail("a list of no fitting length");
    }
    const auto falls = std::ranges::adjacent_find(
        samples, [](const auto& one, const auto& next) { return next.seconds <= one.seconds; });
    if (samples.front().seconds != 0 || falls != samples.end()) {
        value.fail("a list whose seconds do not rise from 0");
    }
    return samples;
}

Library read_library(const JsonValue& value)
{
    return {line(value.member("path")), line(value.member("version"))};
}

ReadError read_error(const JsonValue& value)
{
    return {value.member("sample").number<std::size_t>(), line(value.member("path")),
            error_name(value.member("error"))};
}

}  // namespace

std::string manifest_json(const Manifest& manifest)
{
    const Json json = {
        {"format", kFormat},
        {"version", kLayoutVersion},
        {"tool", manifest.tool},
        {"time", manifest.time},
        {"redacted", manifest.redacted},
        {"library", nullable(manifest.library,
                             [](const Library& library) {
                                 return Json{{"path", library.path}, {"version", library.version}};
                             })},
        {"samples", list(manifest.samples,
                         [](const SampleTime& sample) {
                             return Json{{"time", sample.time}, {"seconds", sample.seconds}};
                         })},
        {"drm",
         {{"library", nullable(manifest.drm.library)},
          {"devices",
           list(manifest.drm.devices, [](const auto& device) { return to_json(device); })}}},
        {"adapters", list(manifest.adapters, [](const auto& adapter) { return to_json(adapter); })},
        {"errors", list(manifest.errors,
                        [](const ReadError& error) {
                            return Json{{"sample", error.sample},
                                        {"path", error.path},
                                        {"error", error.error}};
                        })},
        {"problems", manifest.problems}};
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

Manifest parse_manifest(std::string_view text)
{
    const auto json = parse_json(text, "manifest.json");
    const JsonValue value{json, "manifest.json: "};
    if (value.member("format").text() != kFormat) {
        value.member("format").fail(std::string{"not "} + kFormat);
    }
    if (const int version = value.member("version").number<int>(); version != kLayoutVersion) {
        value.member("version").fail(std::to_string(version) +
                                     ", which this program does not know");
    }
    return {line(value.member("tool")),
            line(value.member("time")),
            value.member("redacted").boolean(),
            value.member("library").optional(read_library),
            read_samples(value.member("samples")),
            read_drm(value.member("drm")),
            read_adapters(value.member("adapters")),
            value.member("errors").list(read_error),
            value.member("problems").list(line)};
}

}  // namespace nimba::archive
