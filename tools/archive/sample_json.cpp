// SPDX-License-Identifier: MIT
#include "tools/archive/entry_name.hpp"
#include "tools/archive/json_text.hpp"
#include "tools/archive/json_value.hpp"
#include "tools/archive/limits.hpp"
#include "tools/archive/name_forms.hpp"
#include "tools/archive/record_json.hpp"

#include <algorithm>
#include <set>
#include <utility>

namespace nimba::archive {
namespace {

using Json = nlohmann::ordered_json;

constexpr mode_t kPermissions = 0777;

// A counters' member, its words and how many.
struct WordsRow {
    const char* key;
    std::optional<Words> Counters::*words;
    std::size_t count;
};

constexpr WordsRow kWords[] = {
    {"hardware", &Counters::hardware, kHardwareWords},
    {"hardware_extended", &Counters::hardware_extended, kHardwareWords},
    {"usage", &Counters::usage, kUsageWords},
    {"usage_extended", &Counters::usage_extended, kExtendedUsageWords},
    {"queues", &Counters::queues, kUsageWords},
};

Json to_json(const Node& node)
{
    Json json = {{"path", node.path}};
    if (node.kind == NodeKind::kUnread) {
        json["error"] = node.error;
        return json;
    }
    json["mode"] = node.mode;
    if (node.kind == NodeKind::kDirectory) {
        json["entries"] = node.entries;
        return json;
    }
    json["bytes"] = node.bytes;
    if (node.cut) {
        json["cut"] = true;
    }
    return json;
}

Json to_json(const Flips& flips)
{
    return {{"time", flips.time}, {"count", flips.count}};
}

Json to_json(const FrameNodes& frames)
{
    return {{"seconds", frames.seconds},
            {"fps_count", frames.fps_count},
            {"rxa_blt_scn_cnt", frames.rxa_blt_scn_cnt}};
}

template <typename Value>
Json pair_json(const std::optional<std::array<Value, 2>>& pair)
{
    return pair ? Json::array({to_json(pair->front()), to_json(pair->back())}) : Json(nullptr);
}

Json to_json(const Counters& counters)
{
    Json json = {{"bus_id", counters.bus_id},
                 {"flips", pair_json(counters.flips)},
                 {"frames", pair_json(counters.frames)}};
    for (const WordsRow& row : kWords) {
        const std::optional<Words>& words = counters.*row.words;
        json[row.key] = words ? Json(*words) : Json(nullptr);
    }
    return json;
}

std::string path(const JsonValue& value)
{
    std::string text = value.text();
    if (!is_node_path(text)) {
        value.fail("no node's path");
    }
    return text;
}

std::string entry(const JsonValue& value)
{
    std::string text = value.text();
    if (!is_entry(text)) {
        value.fail("no name in a directory");
    }
    return text;
}

Node read_node(const JsonValue& value)
{
    Node node{path(value.member("path")), NodeKind::kFile, 0, 0, false, {}, ""};
    if (value.has("error")) {
        node.kind = NodeKind::kUnread;
        node.error = value.member("error").text();
        if (!is_error_name(node.error)) {
            value.member("error").fail("no error");
        }
        return node;
    }
    node.mode = value.member("mode").number<mode_t>(0, kPermissions);
    if (value.has("entries")) {
        node.kind = NodeKind::kDirectory;
        node.entries = value.member("entries").list(entry);
        const std::set<std::string> names{node.entries.begin(), node.entries.end()};
        if (names.size() != node.entries.size()) {
            value.member("entries").fail("a list with a name twice");
        }
        return node;
    }
    node.bytes = value.member("bytes").number<uint64_t>();
    node.cut = value.has("cut") && value.member("cut").boolean();
    return node;
}

Flips read_flips(const JsonValue& value)
{
    return {value.member("time").number<int64_t>(), value.member("count").number<int64_t>()};
}

FrameNodes read_frames(const JsonValue& value)
{
    return {value.member("seconds").seconds(), value.member("fps_count").text(),
            value.member("rxa_blt_scn_cnt").text()};
}

template <typename Read>
auto read_pair(const JsonValue& value, Read read)
{
    auto elements = value.list(read);
    if (elements.size() != 2) {
        value.fail("no pair");
    }
    return std::array{std::move(elements[0]), std::move(elements[1])};
}

Counters read_counters(const JsonValue& value)
{
    Counters counters;
    counters.bus_id = value.member("bus_id").text();
    if (!is_bus_id(counters.bus_id)) {
        value.member("bus_id").fail("no PCI bus id");
    }
    counters.flips = value.member("flips").optional(
        [](const JsonValue& pair) { return read_pair(pair, read_flips); });
    counters.frames = value.member("frames").optional(
        [](const JsonValue& pair) { return read_pair(pair, read_frames); });
    for (const WordsRow& row : kWords) {
        counters.*row.words = value.member(row.key).optional([&](const JsonValue& list) {
            Words words = list.list([](const JsonValue& word) { return word.number<uint32_t>(); });
            if (words.size() != row.count) {
                list.fail("no list of " + std::to_string(row.count) + " words");
            }
            return words;
        });
    }
    return counters;
}

int slash_first(char c)
{
    return c == '/' ? -1 : static_cast<unsigned char>(c);
}

// Paths are of one thing each, and what others are in is no file.
void check_tree(const JsonValue& value, const std::vector<Node>& nodes)
{
    // So sorted, what is in a file comes right behind it.
    const auto comes_before = [](const Node* one, const Node* other) {
        return std::ranges::lexicographical_compare(one->path, other->path, {}, slash_first,
                                                    slash_first);
    };
    std::vector<const Node*> sorted;
    sorted.reserve(nodes.size());
    for (const Node& node : nodes) {
        sorted.push_back(&node);
    }
    std::ranges::sort(sorted, comes_before);
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        const Node& before = *sorted[i - 1];
        if (before.path == sorted[i]->path) {
            value.fail("a list with a path twice");
        }
        if (before.kind == NodeKind::kFile && sorted[i]->path.starts_with(before.path + "/")) {
            value.fail("a list with a node in a file");
        }
    }
}

}  // namespace

std::string sample_json(const SampleRecord& record)
{
    Json nodes = Json::array();
    for (const Node& node : record.nodes) {
        nodes.push_back(to_json(node));
    }
    Json counters = Json::array();
    for (const Counters& one : record.counters) {
        counters.push_back(to_json(one));
    }
    const Json json = {{"nodes", std::move(nodes)}, {"counters", std::move(counters)}};
    return json.dump(1, ' ', false, Json::error_handler_t::replace) + '\n';
}

SampleRecord parse_sample(std::string_view text)
{
    const auto json = parse_json(text, "sample.json");
    const JsonValue value{json, "sample.json: "};
    value.member("counters").check_length(Limits{}.devices);
    SampleRecord record{value.member("nodes").list(read_node),
                        value.member("counters").list(read_counters)};
    check_tree(value.member("nodes"), record.nodes);
    return record;
}

}  // namespace nimba::archive
