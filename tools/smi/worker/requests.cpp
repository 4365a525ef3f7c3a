// SPDX-License-Identifier: MIT
#include "tools/smi/worker/requests.hpp"

#include "tools/smi/capture/requests.hpp"
#include "tools/smi/worker/doctor_requests.hpp"
#include "tools/smi/worker/driver_files.hpp"
#include "tools/smi/worker/drm_nodes.hpp"
#include "tools/smi/worker/dvfs_requests.hpp"
#include "tools/smi/worker/memory_requests.hpp"
#include "tools/smi/worker/monitor_requests.hpp"
#include "tools/smi/worker/own_adapter.hpp"
#include "tools/smi/worker/page_table_requests.hpp"
#include "tools/smi/worker/prefer_requests.hpp"
#include "tools/smi/worker/summary_requests.hpp"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace nimba::smi {
namespace {

// Records of another major version may have other layouts: then nothing is asked of the library.
std::optional<Failure> mismatch(const Session& session)
{
    if (session.handshake().version_match_result != NIMBA_VERSION_MAJOR_MISMATCH) {
        return std::nullopt;
    }
    return Failure{ExitStatus::kNoLibrary, "get_interface_version_ext1",
                   major_mismatch_message(session.library().path)};
}

// Whether libdrm served discovery. It did when devices were listed; if not, it is tried once more,
// since a machine without DRM devices looks the same.
bool libdrm_usable(Session& session)
{
    const EntryPoints& entry = session.library().entry;
    return *entry.gpuinfo_control_enable != 0 ||
           session.call("gpuinfo_nimba_init", [&] { return entry.gpuinfo_nimba_init(); }) != 0;
}

bool is_listed(const Discovery& discovery, const std::string& bus_id)
{
    return std::ranges::find(discovery.slots, bus_id, &SlotIdentity::bus_id) !=
           discovery.slots.end();
}

// What the DRM nodes tell of adapters that the library did not find.
void describe_drm(Discovery& discovery)
{
    const auto nodes = drm_nodes();
    discovery.denied_directory = denied_directory();
    discovery.denied_nodes = denied_devices(nodes);
    discovery.drm_devices = device_count(nodes);
    discovery.unlisted = product_devices(nodes);
    std::erase_if(discovery.unlisted,
                  [&](const std::string& bus_id) { return is_listed(discovery, bus_id); });
}

Message discover(Session& session)
{
    const DiscoveryRecords& records = session.discover();
    Discovery discovery;
    discovery.libdrm_usable = libdrm_usable(session);
    discovery.slots = slot_identities(records);
    discovery.foreign_gpu = foreign_gpu(records);
    describe_drm(discovery);
    return Answer{to_json_value(discovery)};
}

Message describe(Session& session)
{
    std::optional<Adapter> found = own_adapter(session);
    if (!found) {
        return Answer{to_json_value(Description{})};
    }
    Adapter& adapter = *found;
    Description description;
    if (adapter.driver == DriverKind::kUnknown && has_primary_node(adapter)) {
        const std::string info = driver_info_path(*adapter.card, adapter.vendor_id);
        const Access access = session.call("open " + info, [&] { return read_access(info); });
        adapter.driver = driver_kind_without_va(access);
        if (access == Access::kDenied) {
            description.denied_info = info;
        }
    }
    description.adapter = std::move(found);
    return Answer{to_json_value(description)};
}

Message version(Session& session)
{
    const Library& library = session.library();
    LibraryVersion version;
    version.path = library.path;
    version.package_version = version_in_file_name(library.path);
    version.interface_version = session.call("get_interface_version",
                                             [&] { return library.entry.get_interface_version(); });
    version.client_version = session.handshake().client_interface_version;
    version.match_code = session.handshake().version_match_result;
    return Answer{to_json_value(version)};
}

// A request without arguments.
template <Message (*Function)(Session&)>
Message plain(Session& session, std::string_view /*arguments*/)
{
    return Function(session);
}

enum class Needs : uint8_t {
    kNothing,
    kAnyLibrary,  // also one of another major version
    kLibrary,
};

struct Request {
    std::string_view name;
    Message (*answer)(Session&, std::string_view arguments);
    Needs needs = Needs::kLibrary;
};

constexpr Request kRequests[] = {
    {kDiscoverRequest, plain<discover>},
    {kDescribeRequest, plain<describe>},
    {kVersionRequest, plain<version>, Needs::kAnyLibrary},
    {kMemoryRequest, plain<answer_memory>},
    {kMemorySampleRequest, plain<answer_memory_sample>},
    {kLeaksRequest, plain<answer_leaks>},
    {kTidyRequest, plain<answer_tidy>},
    {kPageTablesRequest, plain<answer_page_tables>},
    {kSummaryRequest, plain<answer_summary>},
    {kSegmentsRequest, plain<answer_segments>},
    {kClocksRequest, plain<answer_clocks>},
    {kSensorsRequest, plain<answer_sensors>},
    {kCountersRequest, plain<answer_counters>},
    {kTableEntriesRequest, answer_table_entries},
    {kPagesRequest, answer_pages},
    {kVmAllocationsRequest, answer_vm_allocations},
    {kDvfsRequest, plain<answer_dvfs>},
    {kDvfsWriteRequest, answer_dvfs_write},
    {kFlagRequest, plain<answer_flag>},
    {kFlagWriteRequest, answer_flag_write},
    {kDoctorMachineRequest, answer_doctor_machine, Needs::kNothing},
    {kDoctorAdapterRequest, answer_doctor_adapter},
    {kPreferGetRequest, answer_prefer_get},
    {kPreferSetRequest, answer_prefer_set},
    {kPreferRemoveRequest, answer_prefer_remove},
    {kCaptureDrmRequest, plain<answer_capture_drm>, Needs::kNothing},
    {kCaptureDmidecodeRequest, plain<answer_capture_dmidecode>, Needs::kNothing},
    {kCaptureAdapterRequest, plain<answer_capture_adapter>},
    {kCaptureCountersRequest, plain<answer_capture_counters>},
};

// What is wrong with the library, if the request needs it.
std::optional<Failure> missing_library(Session& session, Needs needs)
{
    if (needs == Needs::kNothing) {
        return std::nullopt;
    }
    if (auto failure = session.ensure_library()) {
        return failure;
    }
    return needs == Needs::kAnyLibrary ? std::nullopt : mismatch(session);
}

}  // namespace

Message answer_request(Session& session, std::string_view request)
{
    const auto blank = request.find(' ');
    const auto* const known =
        std::ranges::find(kRequests, request.substr(0, blank), &Request::name);
    if (known == std::end(kRequests)) {
        return Failure{ExitStatus::kFailed, session.current_call(),
                       fmt::format("unknown request \"{}\"", request)};
    }
    if (auto failure = missing_library(session, known->needs)) {
        return *std::move(failure);
    }
    return known->answer(
        session, blank == std::string_view::npos ? std::string_view{} : request.substr(blank + 1));
}

}  // namespace nimba::smi
