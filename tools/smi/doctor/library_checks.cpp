// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/library_checks.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/smi/doctor/chip_libraries.hpp"
#include "tools/smi/doctor/machine_checks.hpp"
#include "tools/smi/process/discovery_problems.hpp"
#include "tools/smi/version/render.hpp"
#include "tools/smi/worker/library.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string>
#include <utility>

namespace nimba::smi {
namespace {

constexpr const char* kLibrary = "library";
constexpr const char* kInterfaceVersion = "interface_version";
constexpr const char* kAdapters = "adapters";
constexpr const char* kUnlistedAdapter = "unlisted_adapter";

constexpr const char* kMakeRoom =
    "see which drivers there are, and unload one that nobody needs: ls -l "
    "/sys/class/drm/card*/device/driver";

constexpr const char* kOneRelease =
    "install nimba-smi and the library of one release; nimba-smi version tells which are there";

Check version_check(const LibraryVersion& version)
{
    const std::string found = fmt::format("{}: {}", version.interface_version,
                                          match_meaning(version.match_code).sentence);
    switch (version.match_code) {
        case NIMBA_VERSION_MAJOR_MISMATCH:
            return failed(kInterfaceVersion, ExitStatus::kNoLibrary,
                          major_mismatch_message(version.path), kOneRelease);
        case NIMBA_VERSION_MATCH:
        case NIMBA_VERSION_CLIENT_OLDER:
            return passed(kInterfaceVersion, found);
        default:
            return noted(kInterfaceVersion, found, kOneRelease);
    }
}

// How to get one of the product's devices listed.
std::string remedy_of(const Problem& problem, const std::optional<DeviceFacts>& devices)
{
    const auto unknown = [&](const PciAdapter& adapter) {
        return adapter.bus_id == problem.adapter &&
               kernel_interface_files(adapter.device_id).empty();
    };
    if (devices && std::ranges::any_of(devices->adapters, unknown)) {
        return "install a management library that knows the chip: see lspci -nn -s " +
               *problem.adapter;
    }
    return problem.adapter ? log_of(*problem.adapter)
                           : "see what the drivers say in the kernel's log: sudo dmesg";
}

Check unlisted_check(const char* id, const Problem& problem, const std::string& remedy)
{
    Check check = problem.status == ExitStatus::kOk
                      ? noted(id, problem.message, remedy)
                      : failed(id, problem.status, problem.message, remedy);
    check.adapter = problem.adapter;
    return check;
}

std::string name_of(const SlotIdentity& slot)
{
    return slot.name ? fmt::format("{} {}", slot.bus_id, *slot.name) : slot.bus_id;
}

Check listed_check(const Discovery& discovery)
{
    std::vector<std::string> names;
    std::ranges::transform(discovery.slots, std::back_inserter(names), name_of);
    return passed(kAdapters, fmt::format("{}", fmt::join(names, ", ")));
}

// Those that other checks do not tell of.
std::vector<Problem> own_problems(Discovery discovery)
{
    discovery.denied_directory.reset();
    discovery.denied_nodes.clear();
    return discovery_problems(discovery);
}

}  // namespace

Check unanswered_check(std::string id, const Problem& problem)
{
    return failed(std::move(id), problem.status, problem.message,
                  "see the last lines of the kernel's log: sudo dmesg | tail");
}

std::vector<Check> library_checks(const std::optional<LibraryVersion>& version,
                                  const std::optional<Problem>& problem)
{
    if (version) {
        const std::string file = version->package_version ? fmt::format("{} ({})", version->path,
                                                                        *version->package_version)
                                                          : version->path;
        return {passed(kLibrary, file), version_check(*version)};
    }
    std::vector<Check> checks;
    if (problem->status == ExitStatus::kNoLibrary) {
        checks.push_back(failed(kLibrary, problem->status, problem->message,
                                "install the package of the library and type: sudo ldconfig; or "
                                "try another with: nimba-smi doctor --library PATH"));
    } else {
        checks.push_back(unanswered_check(kLibrary, *problem));
    }
    checks.push_back(skipped(kInterfaceVersion, checks.front()));
    return checks;
}

std::vector<Check> adapters_checks(const DiscoveryOutcome& outcome, std::span<const Check> earlier,
                                   const std::optional<DeviceFacts>& devices)
{
    if (!outcome.discovery) {
        Check check = unanswered_check(kAdapters, outcome.problems.front());
        check.adapter = outcome.problems.front().adapter;
        return {std::move(check)};
    }
    const Discovery& discovery = *outcome.discovery;
    const Check* const obstacle = first_obstacle(earlier);
    if (discovery.slots.empty() && obstacle != nullptr) {
        return {skipped_adapters(*obstacle)};
    }
    std::vector<Check> checks;
    if (!discovery.slots.empty()) {
        checks.push_back(listed_check(discovery));
    }
    for (const Problem& problem : own_problems(discovery)) {
        const bool too_many = discovery.drm_devices > MAX_CHIP_NUM;
        checks.push_back(unlisted_check(checks.empty() ? kAdapters : kUnlistedAdapter, problem,
                                        too_many ? kMakeRoom : remedy_of(problem, devices)));
    }
    return checks;
}

Check skipped_adapters(const Check& cause)
{
    return skipped(kAdapters, cause);
}

}  // namespace nimba::smi
