// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/examine.hpp"

#include "tools/smi/doctor/adapter_checks.hpp"
#include "tools/smi/doctor/ask_part.hpp"
#include "tools/smi/doctor/library_checks.hpp"
#include "tools/smi/doctor/machine_checks.hpp"
#include "tools/smi/doctor/user_checks.hpp"
#include "tools/smi/memory/adapter_choice.hpp"
#include "tools/smi/process/discover.hpp"
#include "tools/smi/worker/doctor_requests.hpp"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace nimba::smi {
namespace {

void append(std::vector<Check>& checks, std::vector<Check> more)
{
    std::ranges::move(more, std::back_inserter(checks));
}

// What later checks need of the machine.
struct Machine {
    Section section;
    std::optional<DeviceFacts> devices;
    Check debugfs;
};

std::vector<Check> device_checks(const DeviceFacts& facts)
{
    Check pci = pci_devices_check(facts);
    Check drm = drm_devices_check(facts, pci);
    Check access = drm_access_check(facts, drm);
    return {std::move(pci), std::move(drm), std::move(access)};
}

Machine examine_machine(const Options& options)
{
    Machine machine;
    std::vector<Check>& checks = machine.section.checks;
    checks.push_back(
        check_of("libdrm", machine_part<LibdrmFacts>(options, kLibdrmPart), libdrm_check));
    const auto devices = machine_part<DeviceFacts>(options, kDevicesPart);
    append(checks, checks_of("pci_devices", devices, device_checks));
    if (const auto* const facts = std::get_if<DeviceFacts>(&devices)) {
        machine.devices = *facts;
    }
    const Check& pci = checks.at(1);
    machine.debugfs =
        check_of("debugfs", machine_part<DebugfsFacts>(options, kDebugfsPart),
                 [&](const DebugfsFacts& facts) { return debugfs_check(facts, pci); });
    checks.push_back(machine.debugfs);
    checks.push_back(check_of("ps", machine_part<CommandFacts>(options, kPsPart), ps_check));
    checks.push_back(check_of("dmidecode", machine_part<CommandFacts>(options, kDmidecodePart),
                              dmidecode_check));
    return machine;
}

std::vector<Check> examine_library_file(const Options& options)
{
    WorkerProcess worker{{options.library, options.verbose, std::nullopt}};
    const Reply reply = ask_all({&worker, 1}, kVersionRequest, {options.timeout}).front();
    std::vector<Problem> problems;
    const auto version = accept<LibraryVersion>({"library", std::nullopt}, reply, problems);
    return library_checks(version,
                          problems.empty() ? std::nullopt : std::optional(problems.front()));
}

struct LibrarySection {
    Section section{CheckGroup::kLibrary, std::nullopt, {}};
    std::vector<SlotIdentity> adapters;  // that are to be examined
};

// An adapter that the user chose and that is not there.
std::optional<Check> missing_choice(const Discovery& discovery, const Options& options)
{
    std::vector<Problem> problems;
    const bool found = !chosen_adapters(discovery, options.adapter, problems).empty();
    if (found || !options.adapter || discovery.slots.empty()) {
        return std::nullopt;
    }
    return failed("chosen_adapter", problems.back().status, problems.back().message,
                  "leave out --adapter, or name one of the adapters above");
}

LibrarySection examine_library(const Options& options, const Machine& machine)
{
    LibrarySection library;
    std::vector<Check>& checks = library.section.checks;
    checks = examine_library_file(options);
    if (const Check* const obstacle = first_obstacle(checks)) {
        checks.push_back(skipped_adapters(*obstacle));
        return library;
    }
    const DiscoveryOutcome outcome = discover_adapters(options);
    append(checks,
           adapters_checks(outcome, std::span{machine.section.checks}.first<4>(), machine.devices));
    if (outcome.discovery) {
        std::vector<Problem> told_above;
        library.adapters = chosen_adapters(*outcome.discovery, options.adapter, told_above);
        if (auto missing = missing_choice(*outcome.discovery, options)) {
            checks.push_back(*std::move(missing));
        }
    }
    return library;
}

// The checks of the adapters that answer, part by part.
void examine_parts(const Options& options, const std::vector<SlotIdentity>& slots,
                   const Check& debugfs, std::vector<Section*>& sections)
{
    const auto kernel = adapter_part<KernelInterfaceFacts>(options, slots, kKernelInterfacePart);
    const auto debug = adapter_part<DebugFacts>(options, slots, kDebugPart);
    const auto info = adapter_part<InfoFacts>(options, slots, kInfoPart);
    const auto hwmon = adapter_part<NodeFact>(options, slots, kHwmonPart);
    const auto proc = adapter_part<NodeFact>(options, slots, kProcPart);
    for (std::size_t i = 0; i < slots.size(); ++i) {
        const std::string& bus_id = slots[i].bus_id;
        std::vector<Check>& checks = sections[i]->checks;
        append(checks, checks_of(kKernelInterfaceCheck, kernel[i], kernel_interface_checks));
        append(checks, checks_of(kDebugDirectoryCheck, debug[i], [&](const DebugFacts& facts) {
                   return debug_checks(facts, bus_id, debugfs);
               }));
        append(checks, checks_of(kInfoDirectoryCheck, info[i], [&](const InfoFacts& facts) {
                   return info_checks(facts, bus_id);
               }));
        checks.push_back(check_of(kHwmonCheck, hwmon[i],
                                  [&](const NodeFact& fact) { return hwmon_check(fact, bus_id); }));
        checks.push_back(check_of(kProcFileCheck, proc[i], [&](const NodeFact& fact) {
            return proc_file_check(fact, bus_id);
        }));
    }
}

std::vector<Section> examine_adapters(const Options& options,
                                      const std::vector<SlotIdentity>& slots, const Check& debugfs)
{
    auto workers = start_workers(options, slots);
    const auto replies = ask_all(workers, kDescribeRequest, {options.timeout});
    std::vector<Section> sections;
    for (std::size_t i = 0; i < slots.size(); ++i) {
        sections.push_back({CheckGroup::kAdapter,
                            slots[i],
                            {driver_check(adapter_subject(slots[i]), replies[i], debugfs)}});
    }
    std::vector<SlotIdentity> answering;
    std::vector<Section*> of_answering;
    for (Section& section : sections) {
        if (section.checks.front().result != CheckResult::kFail) {
            answering.push_back(*section.adapter);
            of_answering.push_back(&section);
        }
    }
    examine_parts(options, answering, debugfs, of_answering);
    return sections;
}

Section examine_user(const Options& options)
{
    Section section{CheckGroup::kUser, std::nullopt, {}};
    section.checks.push_back(
        check_of("permissions", machine_part<UserFacts>(options, kUserPart), permissions_check));
    append(section.checks,
           checks_of("home", machine_part<PreferenceFacts>(options, kPreferencesPart),
                     [](const PreferenceFacts& facts) {
                         Check home = home_check(facts);
                         Check file = preference_file_check(facts, home);
                         return std::vector{std::move(home), std::move(file)};
                     }));
    return section;
}

}  // namespace

std::vector<Section> examine(const Options& options)
{
    const Machine machine = examine_machine(options);
    LibrarySection library = examine_library(options, machine);
    std::vector<Section> sections{machine.section, std::move(library.section)};
    std::ranges::move(examine_adapters(options, library.adapters, machine.debugfs),
                      std::back_inserter(sections));
    sections.push_back(examine_user(options));
    return sections;
}

}  // namespace nimba::smi
