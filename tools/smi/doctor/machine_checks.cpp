// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/machine_checks.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/smi/process/discovery_problems.hpp"
#include "tools/smi/worker/driver_directory.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

namespace nimba::smi {
namespace {

constexpr const char* kLibdrm = "libdrm";
constexpr const char* kPciDevices = "pci_devices";
constexpr const char* kDrmDevices = "drm_devices";
constexpr const char* kDrmAccess = "drm_access";
constexpr const char* kDebugfs = "debugfs";
constexpr const char* kPs = "ps";
constexpr const char* kDmidecode = "dmidecode";

constexpr const char* kDebugfsDirectory = "/sys/kernel/debug";

// What discovery would say if this were all that is wrong.
std::string sentence_of(const Discovery& discovery)
{
    return discovery_problems(discovery).front().message;
}

std::vector<std::string> bus_ids_of(const std::vector<PciAdapter>& adapters)
{
    std::vector<std::string> bus_ids;
    bus_ids.reserve(adapters.size());
    for (const PciAdapter& adapter : adapters) {
        bus_ids.push_back(adapter.bus_id);
    }
    return bus_ids;
}

Check without_nodes(const PciAdapter& adapter)
{
    const std::string which =
        fmt::format("{} (device {:#06x}) is on the PCI bus, but has no DRM node", adapter.bus_id,
                    adapter.device_id);
    if (!adapter.driver.empty()) {
        return failed(
            kDrmDevices, ExitStatus::kNoAdapter,
            fmt::format("{}: the driver {} is bound to it and made none", which, adapter.driver),
            log_of(adapter.bus_id));
    }
    return failed(kDrmDevices, ExitStatus::kNoAdapter,
                  fmt::format("{}: no driver is bound to it", which),
                  fmt::format("install the driver's package and load the driver: sudo modprobe "
                              "\"$(cat /sys/bus/pci/devices/{}/modalias)\"",
                              adapter.bus_id));
}

std::string how_to_open(const DeniedFile& file)
{
    return file.group.empty() ? "type: sudo nimba-smi doctor"
                              : fmt::format(
                                    "type: sudo usermod --append --groups {} \"$USER\", "
                                    "and log in again",
                                    file.group);
}

constexpr const char* kDmidecodeLoss =
    "so the library does not tell type, width and rate of the system's memory";

}  // namespace

std::string log_of(const std::string& bus_id)
{
    return fmt::format("see why in the kernel's log: sudo dmesg | grep {}", bus_id);
}

Check libdrm_check(const LibdrmFacts& facts)
{
    Discovery discovery;
    discovery.libdrm_usable = false;
    if (facts.name.empty()) {
        return failed(
            kLibdrm, ExitStatus::kNoLibdrm, sentence_of(discovery),
            fmt::format("type: sudo apt-get install libdrm2 (the loader says: {})", facts.error));
    }
    if (!facts.missing.empty()) {
        return failed(kLibdrm, ExitStatus::kNoLibdrm, sentence_of(discovery),
                      fmt::format("replace {}, which lacks {}: sudo apt-get install --reinstall "
                                  "libdrm2",
                                  facts.path, fmt::join(facts.missing, ", ")));
    }
    return passed(kLibdrm, fmt::format("{} ({})", facts.name, facts.path));
}

Check pci_devices_check(const DeviceFacts& facts)
{
    if (facts.pci_error != 0) {
        return failed(kPciDevices, ExitStatus::kNoAdapter,
                      fmt::format("cannot list /sys/bus/pci/devices, so no card is seen: {}",
                                  std::strerror(facts.pci_error)),
                      "see whether sysfs is mounted, and whether this machine has a PCI bus with "
                      "the card: findmnt /sys; lspci -nn");
    }
    if (facts.adapters.empty()) {
        return failed(
            kPciDevices, ExitStatus::kNoAdapter,
            fmt::format("no device of the vendors {:#06x} and {:#06x} is on the PCI bus",
                        NIMBA_VENDOR_ID, QV_VENDOR_ID),
            fmt::format("check that the card is seated and has power, until one of these shows it: "
                        "lspci -nn -d {:04x}: or lspci -nn -d {:04x}:",
                        NIMBA_VENDOR_ID, QV_VENDOR_ID));
    }
    return passed(kPciDevices, fmt::format("{}", fmt::join(bus_ids_of(facts.adapters), ", ")));
}

Check drm_devices_check(const DeviceFacts& facts, const Check& pci_devices)
{
    if (is_obstacle(pci_devices)) {
        return skipped(kDrmDevices, pci_devices);
    }
    const auto bare = std::ranges::find(facts.adapters, false, &PciAdapter::drm);
    if (bare != facts.adapters.end()) {
        return without_nodes(*bare);
    }
    if (facts.denied_directory) {
        return passed(kDrmDevices, "made by the drivers of all adapters");
    }
    if (facts.drm_devices == 0) {
        return failed(kDrmDevices, ExitStatus::kNoAdapter,
                      "the drivers made DRM nodes, but there is none in /dev/dri",
                      "in a container, start it with --device /dev/dri; elsewhere type: sudo "
                      "udevadm trigger --subsystem-match=drm");
    }
    return passed(kDrmDevices,
                  fmt::format("{} in /dev/dri, adapters and others", facts.drm_devices));
}

Check drm_access_check(const DeviceFacts& facts, const Check& drm_devices)
{
    if (is_obstacle(drm_devices)) {
        return skipped(kDrmAccess, drm_devices);
    }
    Discovery discovery;
    if (facts.denied_directory) {
        discovery.denied_directory = facts.denied_directory;
        return failed(kDrmAccess, ExitStatus::kNoPermission, sentence_of(discovery),
                      how_to_open(*facts.denied_directory));
    }
    if (!facts.denied_nodes.empty()) {
        discovery.denied_nodes = {facts.denied_nodes.front()};
        return failed(kDrmAccess, ExitStatus::kNoPermission, sentence_of(discovery),
                      how_to_open(facts.denied_nodes.front()));
    }
    return passed(kDrmAccess, "this user may open a node of every adapter");
}

Check debugfs_check(const DebugfsFacts& facts, const Check& pci_devices)
{
    if (is_obstacle(pci_devices)) {
        return skipped(kDebugfs, pci_devices);
    }
    if (facts.empty || facts.error == ENOENT) {
        return failed(kDebugfs, ExitStatus::kNoAdapter,
                      fmt::format("debugfs is not mounted at {}, so video memory and page tables "
                                  "are not shown",
                                  kDebugfsDirectory),
                      fmt::format("type: sudo mount -t debugfs none {}", kDebugfsDirectory));
    }
    if (facts.error != 0) {
        const FaultSentence fault =
            describe_fault(FileFault{kDebugfsDirectory, facts.error}, kDebugfsDirectory, "memory");
        return failed(kDebugfs, fault.status, fault.text,
                      "for video memory and page tables type sudo in front of the command: sudo "
                      "nimba-smi doctor");
    }
    return passed(kDebugfs, fmt::format("{} can be read", kDebugfsDirectory));
}

Check ps_check(const CommandFacts& facts)
{
    if (facts.ps_names) {
        return passed(kPs, facts.ps);
    }
    const std::string what =
        facts.ps.empty() ? "ps is not there" : fmt::format("{} tells no name", facts.ps);
    return noted(kPs, what + ", so pagetable shows processes without their names",
                 "type: sudo apt-get install --reinstall procps");
}

Check dmidecode_check(const CommandFacts& facts)
{
    if (facts.dmi_tells) {
        return passed(kDmidecode, facts.dmidecode);
    }
    if (facts.dmidecode.empty()) {
        return noted(kDmidecode, fmt::format("dmidecode is not there, {}", kDmidecodeLoss),
                     "type: sudo apt-get install dmidecode");
    }
    if (!facts.root) {
        return noted(
            kDmidecode,
            fmt::format("{} tells nothing to this user, {}", facts.dmidecode, kDmidecodeLoss),
            "run as root what asks for it, and see whether that helps: sudo dmidecode -t "
            "memory");
    }
    return noted(kDmidecode,
                 fmt::format("{} tells of no memory (\"{}\"), {}", facts.dmidecode, facts.dmi_said,
                             kDmidecodeLoss),
                 "nothing helps on a virtual machine without SMBIOS; elsewhere update the "
                 "firmware");
}

}  // namespace nimba::smi
