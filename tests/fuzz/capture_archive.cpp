// SPDX-License-Identifier: MIT
// Captures from elsewhere: whatever is wrong with one is told in one line, and one that can be
// loaded makes a machine whose drivers show all of their nodes. An input is the archive itself, or,
// behind a first byte "m" or "s", a manifest or a sample's record.
#include "fuzz/support/check.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"
#include "tools/archive/archive_error.hpp"
#include "tools/archive/load.hpp"
#include "tools/archive/record_json.hpp"
#include "tools/sim/driver/snapshot.hpp"
#include "tools/sim/replay/captured_machine.hpp"
#include "tools/sim/replay/recorded_driver.hpp"

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

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

}  // namespace

void try_input(std::string_view input)
{
    try {
        if (input.starts_with('m')) {
            try_manifest(input.substr(1));
        } else if (input.starts_with('s')) {
            try_sample(input.substr(1));
        } else {
            check_machine(archive::load_capture_bytes(input, kLimits));
        }
    } catch (const archive::ArchiveError& error) {
        check_message(error.what());
    }
}

}  // namespace nimba::fuzz
