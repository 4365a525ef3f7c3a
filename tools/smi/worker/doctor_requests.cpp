// SPDX-License-Identifier: MIT
#include "tools/smi/worker/doctor_requests.hpp"

#include "tools/smi/worker/doctor_adapter.hpp"
#include "tools/smi/worker/doctor_machine.hpp"
#include "tools/smi/worker/doctor_user.hpp"
#include "tools/smi/worker/own_adapter.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <string>

namespace nimba::smi {
namespace {

Failure no_such_part(const Session& session)
{
    return {ExitStatus::kFailed, session.current_call(), "a request has no such arguments"};
}

nlohmann::json libdrm(Session& session)
{
    return to_json_value(session.call("dlopen of libdrm", libdrm_facts));
}

nlohmann::json devices(Session& session)
{
    return to_json_value(session.call("a look at the DRM devices", device_facts));
}

nlohmann::json debugfs(Session& session)
{
    return to_json_value(session.call("open /sys/kernel/debug", [] { return debugfs_facts(); }));
}

nlohmann::json ps(Session& session)
{
    CommandFacts facts;
    session.call("ps", [&] { look_at_ps(facts); });
    return to_json_value(facts);
}

nlohmann::json dmidecode(Session& session)
{
    CommandFacts facts;
    session.call("dmidecode", [&] { look_at_dmidecode(facts); });
    return to_json_value(facts);
}

nlohmann::json user(Session& session)
{
    return to_json_value(session.call("getpwuid", user_facts));
}

nlohmann::json preferences(Session& session)
{
    const char* const home = std::getenv("HOME");
    return to_json_value(session.call("a look at the preference file", [&] {
        return preference_facts(home == nullptr ? std::nullopt : std::optional<std::string>(home));
    }));
}

struct MachinePart {
    std::string_view name;
    nlohmann::json (*facts)(Session& session);
};

constexpr std::array kMachineParts{
    MachinePart{kLibdrmPart, libdrm},           MachinePart{kDevicesPart, devices},
    MachinePart{kDebugfsPart, debugfs},         MachinePart{kPsPart, ps},
    MachinePart{kDmidecodePart, dmidecode},     MachinePart{kUserPart, user},
    MachinePart{kPreferencesPart, preferences},
};

nlohmann::json kernel_interface(Session& session, const Adapter& adapter)
{
    const int drm_fd = session.discover().adapters.header.drm_fd[adapter.slot];
    return to_json_value(kernel_interface_facts(session, adapter, drm_fd));
}

// The facts that a function tells, as a value.
template <auto Function>
nlohmann::json value_of_facts(Session& session, const Adapter& adapter)
{
    return to_json_value(Function(session, adapter));
}

struct AdapterPart {
    std::string_view name;
    nlohmann::json (*facts)(Session& session, const Adapter& adapter);
};

constexpr std::array kAdapterParts{
    AdapterPart{kKernelInterfacePart, kernel_interface},
    AdapterPart{kDebugPart, value_of_facts<debug_facts>},
    AdapterPart{kInfoPart, value_of_facts<info_facts>},
    AdapterPart{kHwmonPart, value_of_facts<hwmon_fact>},
    AdapterPart{kProcPart, value_of_facts<proc_fact>},
};

}  // namespace

Message answer_doctor_machine(Session& session, std::string_view part)
{
    const auto* const known = std::ranges::find(kMachineParts, part, &MachinePart::name);
    if (known == kMachineParts.end()) {
        return no_such_part(session);
    }
    return Answer{known->facts(session)};
}

Message answer_doctor_adapter(Session& session, std::string_view part)
{
    const auto* const known = std::ranges::find(kAdapterParts, part, &AdapterPart::name);
    const auto adapter = own_adapter(session);
    if (known == kAdapterParts.end()) {
        return no_such_part(session);
    }
    if (!adapter) {
        return Failure{ExitStatus::kNoAdapter, session.current_call(), "its slot is empty now"};
    }
    return Answer{known->facts(session, *adapter)};
}

}  // namespace nimba::smi
