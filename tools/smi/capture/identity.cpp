// SPDX-License-Identifier: MIT
#include "tools/smi/capture/identity.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/archive/archive_error.hpp"
#include "tools/archive/record_json.hpp"
#include "tools/smi/capture/requests.hpp"
#include "tools/smi/decimal.hpp"
#include "tools/smi/doctor/chip_libraries.hpp"
#include "tools/smi/memory/adapter_choice.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/process/discover.hpp"
#include "tools/smi/worker/requests.hpp"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

namespace nimba::smi {
namespace {

// The text of an answer; what else it is is a problem, or nothing when it is null.
std::optional<std::string> answered_text(const Subject& subject, const Reply& reply,
                                         std::vector<Problem>& problems)
{
    if (auto problem = diagnose(subject, reply)) {
        problems.push_back(*std::move(problem));
        return std::nullopt;
    }
    const Json& value = std::get<Answer>(reply).value();
    return value.is_string() ? std::optional{value.get<std::string>()} : std::nullopt;
}

// The record behind a reply, as `parse` reads it.
template <typename Parse>
auto answered_record(const Subject& subject, const Reply& reply, std::vector<Problem>& problems,
                     Parse parse) -> std::optional<decltype(parse(std::string_view{}))>
{
    const auto text = answered_text(subject, reply, problems);
    if (!text) {
        return std::nullopt;
    }
    try {
        return parse(*text);
    } catch (const archive::ArchiveError& error) {
        problems.push_back({ExitStatus::kFailed, subject.bus_id, std::nullopt,
                            fmt::format("{}: cannot be captured: {}", subject.name, error.what())});
        return std::nullopt;
    }
}

Reply ask_alone(const Options& options, int stop, std::string_view request)
{
    WorkerProcess worker{{options.library, options.verbose, std::nullopt}};
    return ask_all({&worker, 1}, request, {options.timeout, stop}).front();
}

std::optional<archive::Library> read_library(const Options& options, int stop,
                                             std::vector<Problem>& problems)
{
    const auto version = accept<LibraryVersion>(
        {"library", std::nullopt}, ask_alone(options, stop, kVersionRequest), problems);
    if (!version) {
        return std::nullopt;
    }
    return archive::Library{version->path, std::to_string(version->interface_version)};
}

void read_adapters(const Options& options, int stop, Identity& identity)
{
    DiscoveryOutcome outcome = discover_adapters(options, stop);
    std::ranges::move(outcome.problems, std::back_inserter(identity.problems));
    if (!outcome.discovery) {
        return;
    }
    for (const SlotIdentity& slot :
         chosen_adapters(*outcome.discovery, std::nullopt, identity.problems)) {
        WorkerProcess worker{
            WorkerOptions{options.library, options.verbose, ServedAdapter{slot.slot, slot.bus_id}}};
        const Reply reply =
            ask_all({&worker, 1}, kCaptureAdapterRequest, {options.timeout, stop}).front();
        const auto told = answered_record(adapter_subject(slot), reply, identity.problems,
                                          archive::parse_manifest);
        if (told && !told->adapters.empty()) {
            identity.adapters.push_back(told->adapters.front());
            identity.workers.push_back({slot, std::move(worker)});
        }
    }
}

// The card of a device, from its primary node.
std::optional<int> card_of(const archive::DrmDevice& device)
{
    constexpr std::string_view kPrefix = "/dev/dri/card";
    const auto node =
        std::ranges::find(device.nodes, archive::DrmNodeType::kPrimary, &archive::DrmNode::type);
    return node == device.nodes.end()
               ? std::nullopt
               : parse_number<int>(std::string_view{node->path}.substr(kPrefix.size()), 0,
                                   std::numeric_limits<int>::max());
}

// Whether the management library takes it for an adapter, or would if it could open it.
bool is_adapter(const archive::DrmDevice& device)
{
    return device.pci &&
           (device.pci->vendor == NIMBA_VENDOR_ID || device.pci->vendor == QV_VENDOR_ID) &&
           !kernel_interface_files(device.pci->device).empty();
}

// The adapters that the library told, and those that it would have told.
void find_owners(Identity& identity)
{
    std::vector<NodeOwner> owners;
    for (const archive::Adapter& adapter : identity.adapters) {
        owners.push_back({adapter.bus_id, adapter.card, adapter.vendor});
    }
    for (const archive::DrmDevice& device : identity.drm.devices) {
        if (is_adapter(device) &&
            std::ranges::find(owners, device.pci->address, &NodeOwner::bus_id) == owners.end()) {
            owners.push_back({device.pci->address, card_of(device), device.pci->vendor});
        }
    }
    identity.owners = std::move(owners);
}

}  // namespace

Identity read_identity(const Options& options, int stop)
{
    Identity identity;
    if (const auto told =
            answered_record({"libdrm", std::nullopt}, ask_alone(options, stop, kCaptureDrmRequest),
                            identity.problems, archive::parse_manifest)) {
        identity.drm = told->drm;
    }
    identity.library = read_library(options, stop, identity.problems);
    if (identity.library) {
        read_adapters(options, stop, identity);
    }
    identity.dmidecode =
        answered_text({"dmidecode", std::nullopt},
                      ask_alone(options, stop, kCaptureDmidecodeRequest), identity.problems);
    find_owners(identity);
    return identity;
}

std::vector<archive::Counters> read_capture_counters(const Options& options, int stop,
                                                     Identity& identity)
{
    std::vector<archive::Counters> counters;
    std::erase_if(identity.workers, [&](CaptureWorker& worker) {
        const Reply reply =
            ask_all({&worker.process, 1}, kCaptureCountersRequest, {options.timeout, stop}).front();
        const auto told = answered_record(adapter_subject(worker.identity), reply,
                                          identity.problems, archive::parse_sample);
        if (told && !told->counters.empty()) {
            counters.push_back(told->counters.front());
        }
        return std::holds_alternative<Lost>(reply);
    });
    return counters;
}

}  // namespace nimba::smi
