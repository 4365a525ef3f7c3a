// SPDX-License-Identifier: MIT
#include "tools/smi/capture/requests.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/archive/record_json.hpp"
#include "tools/smi/capture/drm_identity.hpp"
#include "tools/smi/capture/kernel_interface.hpp"
#include "tools/smi/capture/node_table.hpp"
#include "tools/smi/worker/entered_adapter.hpp"

#include <dlfcn.h>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace nimba::smi {
namespace {

// A manifest that can be read, and says nothing.
archive::Manifest empty_manifest()
{
    archive::Manifest manifest;
    manifest.samples.emplace_back();
    return manifest;
}

Message answer(const archive::Manifest& manifest)
{
    return Answer{Json(archive::manifest_json(manifest))};
}

archive::Adapter record_of(const Adapter& adapter)
{
    return {adapter.slot,
            adapter.bus_id,
            adapter.card,
            adapter.name,
            adapter.vendor_id,
            adapter.device_id.value_or(0),
            adapter.driver == DriverKind::kVa,
            std::nullopt};
}

// The exit of any other tool may have switched it off since the sample before.
void switch_usage_accounting_on(Session& session)
{
    constexpr const char* kName = "gpuinfo_set_enable_usage";
    const auto switch_to = reinterpret_cast<decltype(&::gpuinfo_set_enable_usage)>(
        ::dlsym(session.library().handle.get(), kName));
    if (switch_to != nullptr) {
        session.call(kName, [&] { switch_to("1"); });
    }
}

struct CloseCommand {
    void operator()(std::FILE* command) const { ::pclose(command); }
};

// Nothing when the command cannot be run.
std::optional<std::string> output_of(const char* command)
{
    constexpr int kNotFound = 127 << 8;
    // NOLINTNEXTLINE(cert-env33-c): the library runs its commands through the shell, too.
    std::unique_ptr<std::FILE, CloseCommand> running{::popen(command, "re")};
    if (!running) {
        return std::nullopt;
    }
    std::string output(kLongestOutput, '\0');
    output.resize(std::fread(output.data(), 1, output.size(), running.get()));
    return ::pclose(running.release()) == kNotFound ? std::nullopt : std::optional{output};
}

}  // namespace

Message answer_capture_dmidecode(Session& session)
{
    constexpr const char* kCommand = "dmidecode -t memory";
    const auto output = session.call(kCommand, [&] { return output_of(kCommand); });
    return Answer{output ? Json(*output) : Json(nullptr)};
}

Message answer_capture_drm(Session& session)
{
    archive::Manifest manifest = empty_manifest();
    manifest.drm = read_drm_identity(session);
    return answer(manifest);
}

Message answer_capture_adapter(Session& session)
{
    archive::Manifest manifest = empty_manifest();
    if (const auto entered = enter_own_adapter(session)) {
        archive::Adapter record = record_of(entered->adapter);
        record.kernel_interface = read_kernel_interface(session, record.device);
        manifest.adapters.push_back(std::move(record));
    }
    return answer(manifest);
}

Message answer_capture_counters(Session& session)
{
    archive::SampleRecord sample;
    if (const auto entered = enter_own_adapter(session)) {
        switch_usage_accounting_on(session);
        archive::Counters& counters = sample.counters.emplace_back();
        counters.bus_id = entered->adapter.bus_id;
        read_kernel_counters(session, entered->adapter.device_id.value_or(0), counters);
    }
    return Answer{Json(archive::sample_json(sample))};
}

}  // namespace nimba::smi
