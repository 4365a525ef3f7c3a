// SPDX-License-Identifier: MIT
// Captures from elsewhere: whatever is wrong with one is told in one line, and one that can be
// loaded makes a machine whose drivers show all of their nodes. An input is the archive itself, or,
// behind a first byte "m" or "s", a manifest or a sample's record, or, behind "t", what an archive
// is made of: what is loaded of that is what was put in, and nothing is that a rule forbids.
#include "fuzz/support/check.hpp"
#include "fuzz/support/described_archive.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"
#include "tools/archive/archive_error.hpp"
#include "tools/archive/load.hpp"
#include "tools/archive/record_json.hpp"
#include "tools/sim/driver/snapshot.hpp"
#include "tools/sim/replay/captured_machine.hpp"
#include "tools/sim/replay/recorded_driver.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::fuzz {
namespace {

// Small, so that no input takes long.
constexpr archive::Limits kLimits{.entry_bytes = 1U << 20U,
                                  .record_bytes = 1U << 20U,
                                  .total_bytes = 4U << 20U,
                                  .ratio = 1000,
                                  .free_bytes = 1U << 20U,
                                  .entries = 1000,
                                  .name_bytes = 1024,
                                  .samples = 1000};

// For archives that are described, so that descriptions reach them.
constexpr archive::Limits kTightLimits{.entry_bytes = 8'000,
                                       .record_bytes = 2'000,
                                       .document_bytes = 3'000,
                                       .total_bytes = 16'000,
                                       .ratio = 10,
                                       .free_bytes = 6'000,
                                       .entries = 12,
                                       .name_bytes = 120,
                                       .all_names_bytes = 400,
                                       .samples = 3,
                                       .document_values = 60,
                                       .nodes = 12};

bool is_control(char c)
{
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

void check_message(std::string_view message)
{
    check(!message.empty() && std::ranges::none_of(message, is_control), "a message is one line");
}

void check_driver(const std::shared_ptr<const archive::Capture>& capture,
                  const sim::Machine& machine)
{
    std::chrono::nanoseconds now{0};
    sim::RecordedDriver driver{capture, machine, 1, [&] { return now; }};
    for (const auto time :
         {std::chrono::hours{0}, std::chrono::hours{1}, std::chrono::hours{9999}}) {
        now = time;
        for (const auto& node : sim::take_snapshot(driver, "")) {
            check((node.path + "/").find("/../") == std::string::npos,
                  "nodes stay in their directory");
        }
        for (const sim::Adapter& adapter : machine.adapters) {
            driver.counters(adapter.drm.card);
        }
    }
}

void check_machine(const archive::Capture& capture)
{
    const auto shared = std::make_shared<const archive::Capture>(capture);
    const sim::Machine machine = sim::captured_machine(*shared);
    std::set<int> cards;
    for (const sim::Adapter& adapter : machine.adapters) {
        check(cards.insert(adapter.drm.card).second, "a card is that of one adapter");
        check(!adapter.drm.nodes.empty(), "an adapter has nodes");
    }
    for (const sim::KernelInterface& library : machine.kernel_interfaces) {
        check(library.file.find('/') == std::string::npos && library.file.starts_with("lib"),
              "a library is a file in its directory");
    }
    check_driver(shared, machine);
}

void try_manifest(std::string_view text)
{
    const archive::Manifest manifest = archive::parse_manifest(text);
    check(archive::parse_manifest(archive::manifest_json(manifest)) == manifest,
          "a manifest is read as it is written");
    archive::Capture capture;
    capture.manifest = manifest;
    for (const archive::SampleTime& time : manifest.samples) {
        capture.samples.push_back({time, {}, {}});
    }
    check_machine(capture);
}

// Each node that is told has a text, and the adapter is one of the first that a record could name.
void try_sample(std::string_view text)
{
    const archive::SampleRecord record = archive::parse_sample(text);
    check(archive::parse_sample(archive::sample_json(record)) == record,
          "a sample is read as it is written");
    archive::Capture capture;
    capture.manifest.drm.devices = {
        {archive::PciIdentity{"0000:01:00.0", NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, 0, 0, 0},
         {{archive::DrmNodeType::kPrimary, "/dev/dri/card0", std::nullopt}},
         archive::DrmVersion{}}};
    archive::Sample& sample = capture.samples.emplace_back();
    for (const archive::Node& node : record.nodes) {
        if (node.kind == archive::NodeKind::kFile) {
            sample.texts[node.path] = std::make_shared<const std::string>(node.path);
        }
    }
    sample.record = record;
    check_machine(capture);
}

bool has_suffix_beside_nodes(std::string_view name, std::string_view suffix)
{
    return name.ends_with(suffix) && name.find("/nodes/") == std::string_view::npos;
}

bool is_record(std::string_view name)
{
    return name == "manifest.json" || has_suffix_beside_nodes(name, "/sample.json");
}

std::size_t most_bytes(std::string_view name)
{
    if (is_record(name)) {
        return kTightLimits.record_bytes;
    }
    return name.starts_with("documents/") || has_suffix_beside_nodes(name, "/overview.json")
               ? kTightLimits.document_bytes
               : kTightLimits.entry_bytes;
}

constexpr std::string_view kPlain =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/._:+@-";

// Whether it encodes what stands for itself, which would be a second name.
bool encodes_plain(const std::string& name)
{
    return std::ranges::any_of(kPlain, [&](char c) {
        std::array<char, 4> code{};
        std::snprintf(code.data(), code.size(), "%%%02X", static_cast<unsigned char>(c));
        return name.find(code.data()) != std::string::npos;
    });
}

// Whether it leads elsewhere than down, or is not encoded as names are.
bool is_hostile(const std::string& name)
{
    const std::string path = "/" + name + "/";
    const auto has = [&](const char* part) { return path.find(part) != std::string::npos; };
    const auto is_allowed = [](char c) {
        return c == '%' || kPlain.find(c) != std::string_view::npos;
    };
    return has("//") || has("/./") || has("/../") || !std::ranges::all_of(name, is_allowed) ||
           encodes_plain(name);
}

// Whether the archive is none that may be loaded, whatever its entries mean.
bool is_forbidden(const std::vector<DescribedEntry>& entries, std::size_t archive_bytes)
{
    std::set<std::string> names;
    std::size_t total = 0;
    std::size_t all_names = 0;
    for (const DescribedEntry& entry : entries) {
        if (!entry.is_file() || !names.insert(entry.name).second ||
            entry.name.size() > kTightLimits.name_bytes || is_hostile(entry.name) ||
            entry.bytes.size() > most_bytes(entry.name)) {
            return true;
        }
        total += entry.bytes.size();
        all_names += entry.name.size();
    }
    return all_names > kTightLimits.all_names_bytes || entries.size() > kTightLimits.entries ||
           total > kTightLimits.total_bytes ||
           total > kTightLimits.free_bytes + archive_bytes * kTightLimits.ratio;
}

std::size_t values_in(const nlohmann::json& value)
{
    std::size_t count = 1;
    if (value.is_structured()) {
        for (const auto& part : value) {
            count += values_in(part);
        }
    }
    return count;
}

// Whether there are not too many samples, nodes with their names, and values of documents.
bool is_within_bounds(const archive::Capture& capture)
{
    std::size_t nodes = 0;
    std::size_t values = 0;
    for (const archive::Sample& sample : capture.samples) {
        for (const archive::Node& node : sample.record.nodes) {
            nodes += 1 + node.entries.size();
        }
    }
    for (const auto& [name, text] : capture.documents) {
        values += values_in(nlohmann::json::parse(text));
    }
    return capture.samples.size() <= kTightLimits.samples && nodes <= kTightLimits.nodes &&
           values <= kTightLimits.document_values;
}

using Taken = std::map<std::string, std::string>;

// What was loaded as it is, by the names of entries. Manifest and records are told by their JSON.
Taken taken_from(const archive::Capture& capture)
{
    Taken taken{{"manifest.json", archive::manifest_json(capture.manifest)}};
    for (const auto& [name, text] : capture.documents) {
        taken["documents/" + name + ".json"] = text;
    }
    if (capture.dmidecode) {
        taken["dmidecode.txt"] = *capture.dmidecode;
    }
    if (capture.preferences) {
        taken["preferences.ini"] = *capture.preferences;
    }
    for (std::size_t number = 0; number < capture.samples.size(); ++number) {
        const archive::Sample& sample = capture.samples[number];
        const std::string directory = "samples/" + std::to_string(number) + "/";
        taken[directory + "sample.json"] = archive::sample_json(sample.record);
        if (sample.overview) {
            taken[directory + "overview.json"] = *sample.overview;
        }
        for (const auto& [path, text] : sample.texts) {
            taken[std::string{directory}.append("nodes").append(path)] = *text;
        }
    }
    return taken;
}

Taken put_in(const std::vector<DescribedEntry>& entries)
{
    Taken put;
    for (const auto& [type, name, bytes] : entries) {
        if (name == "manifest.json") {
            put[name] = archive::manifest_json(archive::parse_manifest(bytes));
        } else if (is_record(name)) {
            put[name] = archive::sample_json(archive::parse_sample(bytes));
        } else {
            put[name] = bytes;
        }
    }
    return put;
}

void try_description(std::string_view input)
{
    const uint8_t form = take_byte(input);
    std::vector<DescribedEntry> entries = described_entries(input);
    const std::string bytes = archive_of(entries, form);
    const archive::Capture capture = archive::load_capture_bytes(bytes, kTightLimits);
    check(is_within_bounds(capture), "there are not too many samples, nodes and values");
    check(!is_forbidden(entries, bytes.size()), "what is forbidden is not loaded");
    check(taken_from(capture) == put_in(entries), "what is loaded is what was put in");
    check_machine(capture);
}

}  // namespace

void try_input(std::string_view input)
{
    try {
        if (input.starts_with('m')) {
            try_manifest(input.substr(1));
        } else if (input.starts_with('s')) {
            try_sample(input.substr(1));
        } else if (input.starts_with('t')) {
            try_description(input.substr(1));
        } else {
            check_machine(archive::load_capture_bytes(input, kLimits));
        }
    } catch (const archive::ArchiveError& error) {
        check_message(error.what());
    }
}

}  // namespace nimba::fuzz
