// SPDX-License-Identifier: MIT
#include "test_bed.hpp"

#include "driver/live_driver.hpp"
#include "driver/snapshot.hpp"
#include "glib.hpp"
#include "run_directory.hpp"
#include "sysfs_text.hpp"
#include "test_bed_error.hpp"
#include "tools/descriptor.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <functional>
#include <string_view>

namespace nimba::sim {
namespace {

namespace fs = std::filesystem;

constexpr const char* kDebugRoot = "sys/kernel/debug";

// What new files and directories have with the file mode mask of a run.
constexpr mode_t kFileMode = 0644;
constexpr mode_t kDirectoryMode = 0755;

// A device with its place in /sys and its description there.
struct DrmParent {
    DrmDevice drm;
    std::string path;
    std::string description;
};

std::vector<DrmParent> drm_parents(const Machine& machine)
{
    std::vector<DrmParent> parents;
    for (const Adapter& adapter : machine.adapters) {
        parents.push_back({adapter.drm, pci_device_path(adapter.pci.address),
                           describe_pci_device(adapter.pci, adapter.drm.driver)});
    }
    for (const ForeignGpu& gpu : machine.foreign_gpus) {
        parents.push_back({gpu.drm, pci_device_path(gpu.pci.address),
                           describe_pci_device(gpu.pci, gpu.drm.driver)});
    }
    for (const PlatformDevice& device : machine.platform_devices) {
        parents.push_back(
            {device.drm, platform_device_path(device), describe_platform_device(device)});
    }
    return parents;
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

}  // namespace

void TestBedRemoval::operator()(UMockdevTestbed* test_bed) const
{
    permit_removal(root_of(test_bed));
    g_object_unref(test_bed);
}

TestBed::TestBed(const Machine& machine, const fs::path& directory, DebugFiles debug_files)
    : test_bed_{make_test_bed(directory)}, root_{root_of(test_bed_.get())}
{
    // It is there without any device, too, so that the real machine's devices do not show.
    fs::create_directories(root_ / "dev/dri");
    add_drm_devices(machine);
    for (const Adapter& adapter : machine.adapters) {
        add_directories(adapter);
    }
    if (debug_files == DebugFiles::kServed) {
        fs::create_directories(root_ / kDebugRoot);
    } else {
        add_debug_files(machine);
    }
    for (const Process& process : machine.processes) {
        add_process(process);
    }
}

// libdrm lists devices in the order in which /dev/dri lists their nodes; the nodes are made in an
// order that makes this the order of the card numbers.
void TestBed::add_drm_devices(const Machine& machine)
{
    auto parents = drm_parents(machine);
    std::ranges::sort(parents, {}, [](const DrmParent& parent) { return parent.drm.card; });
    if (lists_newest_first(root_)) {
        std::ranges::reverse(parents);
    }
    for (const DrmParent& parent : parents) {
        add_description(parent.description);
        const auto& driver = *drivers_.emplace_back(
            std::make_unique<DrmDriver>(parent.drm.driver, parent.drm.answers_version));
        for (const DrmNode node : parent.drm.nodes) {
            add_drm_node(parent.path, parent.drm, node, driver);
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

void TestBed::add_directories(const Adapter& adapter)
{
    const std::string pci = pci_device_path(adapter.pci.address);
    const auto place = [&](NodeDirectory directory) -> fs::path {
        return root_ / (directory == NodeDirectory::kInfo
                            ? fmt::format("sys{}/{}_info", pci, adapter.driver_dir)
                            : fmt::format("sys{}/hwmon/hwmon{}", pci, adapter.drm.card));
    };
    for (const auto& [directory, nodes] : adapter.directories) {
        if (directory != NodeDirectory::kDebug) {
            for (const auto& [path, text] : nodes) {
                write_file(place(directory) / path, text);
            }
        }
    }
    auto unreadable_places = adapter.unreadable;
    // Nodes before their directories, through which they are reached.
    std::ranges::sort(unreadable_places, std::ranges::greater{}, &NodePlace::path);
    for (const NodePlace& unreadable : unreadable_places) {
        if (unreadable.directory != NodeDirectory::kDebug) {
            fs::permissions(place(unreadable.directory) / unreadable.path, fs::perms::none);
        }
    }
}

// Made in an order that lists them as the driver does, if the file system keeps one.
void TestBed::add_debug_files(const Machine& machine)
{
    LiveDriver driver{machine, [] { return std::chrono::nanoseconds{0}; }};
    const auto nodes =
        take_snapshot(driver, lists_newest_first(root_) ? SnapshotOrder::kReverseListing
                                                        : SnapshotOrder::kListing);
    if (nodes.empty()) {
        return;
    }
    const fs::path root = root_ / kDebugRoot;
    fs::create_directories(root);
    for (const SnapshotNode& node : nodes) {
        if (node.attributes.directory) {
            fs::create_directory(root / node.path);
        } else {
            write_file_in_place(root / node.path, node.text, node.attributes.mode);
        }
    }
    // What is in a directory comes behind it, and is reached through it.
    for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
        if (node->attributes.directory && node->attributes.mode != kDirectoryMode) {
            fs::permissions(root / node->path, fs::perms{node->attributes.mode});
        }
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

}  // namespace nimba::sim
