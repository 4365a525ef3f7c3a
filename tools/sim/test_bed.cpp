// SPDX-License-Identifier: MIT
#include "test_bed.hpp"

#include "driver/snapshot.hpp"
#include "glib.hpp"
#include "run_directory.hpp"
#include "served_nodes.hpp"
#include "smbios.hpp"
#include "sysfs_text.hpp"
#include "test_bed_error.hpp"
#include "tools/descriptor.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <fmt/core.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <string_view>

namespace nimba::sim {
namespace {

namespace fs = std::filesystem;

// What new files and directories have with the file mode mask of a run.
constexpr mode_t kFileMode = 0644;
constexpr mode_t kDirectoryMode = 0755;

// A device with its place in /sys and its description there.
struct DrmParent {
    DrmDevice drm;
    std::string path;
    std::string description;
    bool has_counters;
};

std::vector<DrmParent> drm_parents(const Machine& machine)
{
    std::vector<DrmParent> parents;
    for (const Adapter& adapter : machine.adapters) {
        parents.push_back({adapter.drm, pci_device_path(adapter.pci.address),
                           describe_pci_device(adapter.pci, adapter.drm.driver, adapter.link),
                           true});
    }
    for (const ForeignGpu& gpu : machine.foreign_gpus) {
        parents.push_back({gpu.drm, pci_device_path(gpu.pci.address),
                           describe_pci_device(gpu.pci, gpu.drm.driver, {}), false});
    }
    for (const PlatformDevice& device : machine.platform_devices) {
        parents.push_back(
            {device.drm, platform_device_path(device), describe_platform_device(device), false});
    }
    return parents;
}

// Where the test bed shows nodes of a driver: their path as in MachineDriver, and that in the test
// bed.
struct ShownNodes {
    std::string nodes;
    fs::path place;
};

std::vector<ShownNodes> shown_nodes(const Machine& machine)
{
    std::vector<ShownNodes> shown{{"dri", "sys/kernel/debug/dri"}};
    for (const Adapter& adapter : machine.adapters) {
        const int card = adapter.drm.card;
        const std::string pci = "sys" + pci_device_path(adapter.pci.address);
        const std::string proc = node_path(adapter, NodeDirectory::kProc);
        shown.push_back({node_path(adapter, NodeDirectory::kInfo),
                         fmt::format("{}/{}_info", pci, adapter.driver_dir)});
        shown.push_back({fmt::format("hwmon/{}", card), pci + "/hwmon"});
        shown.push_back({proc, proc});
    }
    return shown;
}

UMockdevTestbed* make_test_bed(const fs::path& directory)
{
    setenv("TMPDIR", directory.c_str(), 1);  // where umockdev puts what it makes
    return umockdev_testbed_new();
}

fs::path root_of(UMockdevTestbed* test_bed)
{
    return GText{umockdev_testbed_get_root_dir(test_bed)}.get();
}

// Writes a file with that mode in a directory that is there.
void write_file_in_place(const fs::path& file, std::string_view text, mode_t mode)
{
    const tools::Descriptor descriptor{
        open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode)};
    ssize_t written = descriptor ? 0 : -1;
    while (written >= 0 && !text.empty()) {
        written = write(descriptor.get(), text.data(), text.size());
        text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    if (written < 0) {
        throw TestBedError{fmt::format("cannot write {}: {}", file.native(), std::strerror(errno))};
    }
}

void write_file(const fs::path& file, std::string_view text)
{
    fs::create_directories(file.parent_path());
    write_file_in_place(file, text, kFileMode);
}

// Makes the files, the first of them at the place and the others below it, in an order that lists
// them as the driver does, if the file system keeps one.
void write_nodes(const std::vector<SnapshotNode>& nodes, const fs::path& place)
{
    if (nodes.empty()) {
        return;
    }
    fs::create_directories(place.parent_path());
    const auto target = [&](const SnapshotNode& node) {
        return fs::path{place.native() + node.path.substr(nodes.front().path.size())};
    };
    for (const SnapshotNode& node : nodes) {
        if (node.attributes.directory) {
            fs::create_directory(target(node));
        } else {
            write_file_in_place(target(node), node.text, node.attributes.mode);
        }
    }
    // What is in a directory comes behind it, and is reached through it.
    for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
        if (node->attributes.directory && node->attributes.mode != kDirectoryMode) {
            fs::permissions(target(*node), fs::perms{node->attributes.mode});
        }
    }
}

void add_firmware(const fs::path& root, const std::vector<MemoryModule>& modules)
{
    const SmbiosFiles files = make_smbios_files(modules);
    const fs::path directory = root / "sys/firmware/dmi/tables";
    write_file(directory / "smbios_entry_point", files.smbios_entry_point);
    write_file(directory / "DMI", files.dmi);
}

}  // namespace

void TestBedRemoval::operator()(UMockdevTestbed* test_bed) const
{
    permit_removal(root_of(test_bed));
    g_object_unref(test_bed);
}

TestBed::TestBed(const Machine& machine, const fs::path& directory,
                 const std::shared_ptr<MachineDriver>& driver, NodeSource* plain)
    : test_bed_{make_test_bed(directory)}, root_{root_of(test_bed_.get())}
{
    // It is there without any device, too, so that the real machine's devices do not show.
    fs::create_directories(root_ / "dev/dri");
    add_firmware(root_, machine.memory_modules);
    add_drm_devices(machine, driver);
    if (plain == nullptr) {
        add_node_links(machine, *driver);
    } else {
        add_node_files(machine, *plain);
    }
    for (const Process& process : machine.processes) {
        add_process(process);
    }
    for (const int pid : machine.absent_processes) {
        add_absent_process(pid, plain == nullptr);
    }
}

// libdrm lists devices in the order in which /dev/dri lists their nodes; the nodes are made in an
// order that makes this the order of the devices' places.
void TestBed::add_drm_devices(const Machine& machine, const std::shared_ptr<MachineDriver>& driver)
{
    auto parents = drm_parents(machine);
    std::ranges::sort(parents, {}, [](const DrmParent& parent) {
        return parent.drm.place.value_or(parent.drm.card);
    });
    if (lists_newest_first(root_)) {
        std::ranges::reverse(parents);
    }
    for (const DrmParent& parent : parents) {
        add_description(parent.description);
        std::function<Counters()> counters;
        if (parent.has_counters) {
            counters = [driver, card = parent.drm.card] { return driver->counters(card); };
        }
        const auto& drm_driver = *drivers_.emplace_back(std::make_unique<DrmDriver>(
            parent.drm.driver, parent.drm.answers_version, std::move(counters)));
        for (const DrmNode node : parent.drm.nodes) {
            add_drm_node(parent.path, parent.drm, node, drm_driver);
        }
    }
}

void TestBed::add_drm_node(const std::string& parent, const DrmDevice& device, DrmNode node,
                           const DrmDriver& driver)
{
    add_description(describe_drm_node(parent, device, node));
    const std::string path = "/dev/dri/" + node_name(device, node);
    if (!device.unopenable.contains(node)) {
        driver.attach(test_bed_.get(), path);
        return;
    }
    const fs::path file = root_.native() + path;
    fs::remove(file);
    fs::create_symlink(locked_terminals_.emplace_back().path(), file);
}

void TestBed::add_description(const std::string& description)
{
    GErrorReport report;
    if (!umockdev_testbed_add_from_string(test_bed_.get(), description.c_str(),
                                          report.receiver())) {
        throw TestBedError{report.message()};
    }
}

// The links are relative: behind the preload library, an absolute one would lead out of the test
// bed.
void TestBed::add_node_links(const Machine& machine, NodeSource& driver)
{
    const fs::path served = root_ / kServedNodes;
    fs::create_directory(served);
    for (const auto& [nodes, place] : shown_nodes(machine)) {
        if (driver.look_up(nodes)) {
            const fs::path link = root_ / place;
            fs::create_directories(link.parent_path());
            fs::create_symlink((served / nodes).lexically_relative(link.parent_path()), link);
        }
    }
}

void TestBed::add_node_files(const Machine& machine, NodeSource& plain)
{
    const SnapshotOrder order =
        lists_newest_first(root_) ? SnapshotOrder::kReverseListing : SnapshotOrder::kListing;
    for (const auto& [nodes, place] : shown_nodes(machine)) {
        write_nodes(take_snapshot(plain, nodes, order), root_ / place);
    }
}

void TestBed::add_process(const Process& process)
{
    std::string command_line;
    for (const std::string& argument : process.arguments) {
        command_line += argument;
        command_line += '\0';
    }
    const fs::path directory = root_ / fmt::format("proc/{}", process.pid);
    write_file(directory / "cmdline", command_line);
    write_file(directory / "comm", process.comm + "\n");
}

// Where there is nothing at all, the preload library would show the real machine's. Drivers have a
// file that is not there when it is opened; opening a socket fails, if with another error.
void TestBed::add_absent_process(int pid, bool live)
{
    const fs::path directory = root_ / fmt::format("proc/{}", pid);
    fs::create_directories(directory);
    for (const char* const name : {"cmdline", "comm"}) {
        const fs::path file = directory / name;
        if (live) {
            fs::create_symlink(fs::path{"../.."} / kServedNodes / kAbsentFile, file);
        } else if (mknod(file.c_str(), S_IFSOCK | kFileMode, 0) != 0) {
            throw TestBedError{
                fmt::format("cannot make {}: {}", file.native(), std::strerror(errno))};
        }
    }
}

}  // namespace nimba::sim
