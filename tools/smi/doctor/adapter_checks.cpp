// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/adapter_checks.hpp"

#include "tools/smi/doctor/library_checks.hpp"
#include "tools/smi/doctor/machine_checks.hpp"
#include "tools/smi/process/discovery_problems.hpp"
#include "tools/smi/worker/driver_directory.hpp"
#include "tools/smi/worker/driver_files.hpp"
#include "tools/smi/worker/node_text.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cerrno>
#include <span>

namespace nimba::smi {
namespace {

constexpr const char* kSizeCheck = "device_block";
constexpr const char* kFrameRateCheck = "frame_rate";
constexpr const char* kBandwidthCheck = "bandwidth";
constexpr const char* kBusyCheck = "busy_words";
constexpr const char* kAllocationsCheck = "allocations";
constexpr const char* kUsageCheck = "usage_accounting";

constexpr const char* kSudo = "type: sudo nimba-smi doctor";
constexpr const char* kOtherVersion =
    "install the version of the driver's package that belongs to the loaded driver";

bool means_denied(int error)
{
    return error == EACCES || error == EPERM;
}

std::string remedy_of(int error, const std::string& bus_id)
{
    return means_denied(error) ? kSudo : log_of(bus_id);
}

// `what` the directory shows: "allocations".
FaultSentence sentence_of(const NodeFact& node, const char* what)
{
    return describe_fault(FileFault{node.path, node.error}, node.path, what);
}

// A directory that an adapter must have.
Check needed(const char* id, const NodeFact& node, const char* what, const std::string& bus_id)
{
    if (node.error == 0) {
        return passed(id, node.path);
    }
    const FaultSentence fault = sentence_of(node, what);
    return failed(id, fault.status, fault.text, remedy_of(node.error, bus_id));
}

bool has(const KernelInterfaceFacts& facts, std::string_view function)
{
    return std::ranges::find(facts.functions, function) != facts.functions.end();
}

Check no_kernel_interface(const KernelInterfaceFacts& facts)
{
    const std::string found =
        "its kernel-interface library is missing or unusable: bandwidth and busy words are not "
        "available";
    if (facts.names.empty()) {
        return noted(kKernelInterfaceCheck, found, "install an nimba-smi that knows the chip");
    }
    return noted(kKernelInterfaceCheck, found,
                 fmt::format("install the driver's package that has {} and type: sudo ldconfig "
                             "(the loader says: {})",
                             fmt::join(facts.names, " or "), facts.errors.back()));
}

Check loaded_check(const KernelInterfaceFacts& facts)
{
    const bool first = facts.errors.empty();
    return passed(
        kKernelInterfaceCheck,
        first ? facts.path : fmt::format("{}, in place of {}", facts.path, facts.names.front()));
}

// Without a device block the library's functions for figures have nothing to work in.
Check size_check(const KernelInterfaceFacts& facts)
{
    if (facts.size_function.empty()) {
        return noted(kSizeCheck,
                     fmt::format("{} has neither gfx_get_struct_size nor qv_get_struct_size: "
                                 "bandwidth and busy words are not available",
                                 facts.loaded),
                     kOtherVersion);
    }
    if (facts.block_size == 0) {
        return noted(kSizeCheck,
                     fmt::format("{} of {} returned 0: bandwidth and busy words are not available",
                                 facts.size_function, facts.loaded),
                     kOtherVersion);
    }
    return passed(kSizeCheck,
                  fmt::format("{} bytes, from {}", facts.block_size, facts.size_function));
}

// The driver's nodes count frames as well.
Check frame_rate_check(const KernelInterfaceFacts& facts)
{
    return passed(kFrameRateCheck, has(facts, "gfx_flip_count")
                                       ? "counted by gfx_flip_count and by the driver's nodes"
                                       : "counted by the driver's nodes alone");
}

// The functions that hardware information takes, by the beginning of their names, that are missing.
std::vector<std::string> missing_functions(const KernelInterfaceFacts& facts,
                                           std::string_view beginning)
{
    std::vector<std::string> missing;
    for (const char* const end : {"init_hwinfo", "deinit_hwinfo", "get_hwinfo"}) {
        const std::string name = fmt::format("{}_{}", beginning, end);
        const bool replaced = name.ends_with("_get_hwinfo") && has(facts, "gfx_get_hwinfo_ext");
        if (!has(facts, name) && !replaced) {
            missing.push_back(name);
        }
    }
    return missing;
}

Check bandwidth_check(const KernelInterfaceFacts& facts)
{
    std::vector<std::string> missing = missing_functions(facts, "gfx");
    const std::vector<std::string> older_missing = missing_functions(facts, "qv");
    if (missing.empty() || older_missing.empty()) {
        const bool extended = has(facts, "gfx_get_hwinfo_ext");
        const char* const plain = missing.empty() ? "gfx_get_hwinfo" : "qv_get_hwinfo";
        return passed(kBandwidthCheck,
                      fmt::format("{} is there", extended ? "gfx_get_hwinfo_ext" : plain));
    }
    if (older_missing.size() < missing.size()) {
        missing = older_missing;
    }
    return noted(kBandwidthCheck,
                 fmt::format("{} lacks {}: bandwidth is not available", facts.loaded,
                             fmt::join(missing, ", ")),
                 kOtherVersion);
}

Check busy_check(const KernelInterfaceFacts& facts)
{
    for (const char* const function : {"gfx_get_usage_info", "qvGetHwqInfo"}) {
        if (has(facts, function)) {
            return passed(kBusyCheck, fmt::format("{} is there", function));
        }
    }
    return noted(kBusyCheck,
                 fmt::format("{} has neither gfx_get_usage_info nor qvGetHwqInfo: busy words are "
                             "not available",
                             facts.loaded),
                 kOtherVersion);
}

Check usage_check(const InfoFacts& facts, const std::string& bus_id)
{
    const NodeFact& node = facts.usage_switch;
    if (means_absent(node.error)) {
        return passed(kUsageCheck, "the driver has no switch, and counts always");
    }
    if (means_denied(facts.switch_write_error)) {
        return noted(
            kUsageCheck,
            fmt::format("no permission to write {}: run as root; engine use is not counted",
                        node.path),
            kSudo);
    }
    if (node.error != 0) {
        return noted(kUsageCheck, sentence_of(node, "use").text, remedy_of(node.error, bus_id));
    }
    return passed(kUsageCheck, node.path);
}

}  // namespace

Check driver_check(const Subject& subject, const Reply& reply, const Check& debugfs)
{
    std::vector<Problem> problems;
    const auto description = accept<Description>(subject, reply, problems);
    if (!description) {
        return unanswered_check(kDriverCheck, problems.front());
    }
    if (!description->adapter || description->adapter->bus_id != subject.bus_id) {
        const Problem gone = gone_problem(subject);
        return failed(kDriverCheck, gone.status, gone.message, log_of(*subject.bus_id));
    }
    const Adapter& adapter = *description->adapter;
    switch (adapter.driver) {
        case DriverKind::kVa:
            return passed(kDriverCheck, "va");
        case DriverKind::kLegacy:
            return passed(kDriverCheck, "legacy");
        case DriverKind::kUnknown:
            break;
    }
    if (is_obstacle(debugfs)) {
        return skipped(kDriverCheck, debugfs);
    }
    const std::string info = driver_info_path(adapter.card.value_or(-1), adapter.vendor_id);
    return noted(kDriverCheck,
                 fmt::format("the driver kind is unknown, since {} cannot be read: devices of "
                             "allocations may be wrong",
                             info),
                 description->denied_info ? std::string{kSudo} : log_of(adapter.bus_id));
}

std::vector<Check> kernel_interface_checks(const KernelInterfaceFacts& facts)
{
    if (facts.loaded.empty()) {
        const Check missing = no_kernel_interface(facts);
        std::vector<Check> checks{missing};
        for (const char* const id : {kSizeCheck, kFrameRateCheck, kBandwidthCheck, kBusyCheck}) {
            checks.push_back(skipped(id, missing));
        }
        return checks;
    }
    const Check size = size_check(facts);
    const bool sized = size.result == CheckResult::kOk;
    return {loaded_check(facts), size, frame_rate_check(facts),
            sized ? bandwidth_check(facts) : skipped(kBandwidthCheck, size),
            sized ? busy_check(facts) : skipped(kBusyCheck, size)};
}

std::vector<Check> debug_checks(const DebugFacts& facts, const std::string& bus_id,
                                const Check& debugfs)
{
    if (is_obstacle(debugfs)) {
        return {skipped(kDebugDirectoryCheck, debugfs), skipped(kAllocationsCheck, debugfs)};
    }
    Check directory = needed(kDebugDirectoryCheck, facts.directory, "memory", bus_id);
    Check allocations = is_obstacle(directory)
                            ? skipped(kAllocationsCheck, directory)
                            : needed(kAllocationsCheck, facts.allocations, "allocations", bus_id);
    return {std::move(directory), std::move(allocations)};
}

std::vector<Check> info_checks(const InfoFacts& facts, const std::string& bus_id)
{
    Check directory = needed(kInfoDirectoryCheck, facts.directory, "clocks and settings", bus_id);
    Check usage =
        is_obstacle(directory) ? skipped(kUsageCheck, directory) : usage_check(facts, bus_id);
    return {std::move(directory), std::move(usage)};
}

Check hwmon_check(const NodeFact& directory, const std::string& bus_id)
{
    return directory.error == 0
               ? passed(kHwmonCheck, directory.path)
               : noted(kHwmonCheck, sentence_of(directory, "temperature and fans").text,
                       remedy_of(directory.error, bus_id));
}

Check proc_file_check(const NodeFact& file, const std::string& bus_id)
{
    if (file.error == 0) {
        return passed(kProcFileCheck, file.path);
    }
    const std::string found =
        means_absent(file.error)
            ? fmt::format(
                  "there is no file {}: the library does not tell the versions of driver "
                  "and firmware, fill rates and resolutions",
                  file.path)
            : sentence_of(file, "versions").text;
    return noted(kProcFileCheck, found, remedy_of(file.error, bus_id));
}

}  // namespace nimba::smi
