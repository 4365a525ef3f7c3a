// SPDX-License-Identifier: MIT
// What a simulated machine is made of.
#pragma once

#include "adapter_power.hpp"
#include "driver/fault.hpp"
#include "node_directory.hpp"
#include "video_memory.hpp"

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace nimba::sim {

struct PciAddress {
    uint16_t domain = 0;
    uint8_t bus = 0;
    uint8_t device = 0;
    uint8_t function = 0;

    auto operator<=>(const PciAddress&) const = default;
};

// Returns "dddd:bb:dd.f", as the kernel names the device's directory.
std::string to_text(const PciAddress& address);

// Reads what to_text writes, in lower or upper case.
std::optional<PciAddress> parse_pci_address(const std::string& text);

struct PciDevice {
    uint16_t vendor = 0;
    uint16_t device = 0;
    PciAddress address;
};

// What sysfs tells of a device's link. An attribute whose text is empty is not there.
struct PcieLink {
    std::string width;
    std::string speed;
};

enum class DrmNode { kPrimary, kControl, kRender };

struct DrmDevice {
    int card = 0;
    int render = 128;
    std::set<DrmNode> nodes;
    std::set<DrmNode> unopenable;  // nodes that exist but that nobody can open
    // Among the devices that libdrm lists; nothing: its card number.
    std::optional<int> place{};
    bool answers_version = true;
    std::string driver;  // the name in the driver's version
    // The display connectors in the primary node's directory in sysfs, "HDMI-A-1" and the like;
    // nothing: there is no directory of its name.
    std::optional<std::vector<std::string>> connectors{std::in_place};
};

// Returns the file name in /dev/dri, such as "renderD128".
std::string node_name(const DrmDevice& device, DrmNode node);

// Returns the minor number of the node's device file; the major number is 226.
int node_minor(const DrmDevice& device, DrmNode node);

// A directory's text files: path in the directory -> text. The file in /proc has the path "".
using Nodes = std::map<std::string, std::string>;

// The directories of an adapter's driver, with the texts that replace those of the driver. What has
// no value does not exist.
using NodeDirectories = std::map<NodeDirectory, Nodes>;

// A place in these directories; an empty path is the directory itself.
struct NodePlace {
    NodeDirectory directory;
    std::string path;
};

// An adapter of one of the product's vendors.
struct Adapter {
    PciDevice pci;
    PcieLink link;
    DrmDevice drm;
    std::string driver_dir;  // "jw" or "qv"
    bool va_driver = true;
    NodeDirectories directories;
    VideoMemory video_memory;
    AdapterPower power;
    std::vector<NodePlace> unreadable;  // without any permission, which does not stop root
    std::vector<NodePlace> missing;     // nodes that other drivers have, or directories of them
};

// Returns the place of an adapter's directory among the nodes of all drivers: "dri/0/jw", "info/0",
// "hwmon/0/hwmon0", or the file "proc/gpuinfo_0".
std::string node_path(const Adapter& adapter, NodeDirectory directory);

// Returns the adapter's directory in /sys/kernel/debug, such as "dri/0/jw".
std::string debug_directory(const Adapter& adapter);

// Returns the adapter's directory there that shows its virtual memory, such as "dri/0/qv": the same
// one, or one beside it.
std::string virtual_memory_directory(const Adapter& adapter);

// Whether it is one beside the other.
bool has_virtual_memory_beside(const Adapter& adapter);

struct ForeignGpu {
    PciDevice pci;
    DrmDevice drm;
};

// A display controller that is not on the PCI bus.
struct PlatformDevice {
    std::string name;
    DrmDevice drm;
};

inline constexpr int kGreatestPid = 4194304;

struct Process {
    int pid = 0;
    std::string comm;  // the name that the kernel has for it
    std::vector<std::string>
        arguments;  // the first is the program's name; a kernel thread has none
};

struct KernelInterface {
    std::string file;
    std::string size_function;  // "none": the library has no size function
    uint32_t struct_size = 0;
    std::set<std::string> counters;  // the entry points for counters that the library has
    int32_t init_result = 0;         // of preparing the hardware information
};

// A place for a module of the machine's own memory, or a module in it.
struct MemoryModule {
    std::string locator;
    std::string bank_locator;  // empty: none
    uint8_t type = 0;          // as SMBIOS numbers them
    uint16_t total_width = 0;  // in bits; 0: not known
    uint16_t data_width = 0;   // in bits; 0: not known
    uint16_t speed = 0;        // in MT/s; 0: not known
    uint32_t size = 0;         // in MiB; 0: there is no module
};

struct Machine {
    std::string description;
    std::vector<Adapter> adapters;
    std::vector<ForeignGpu> foreign_gpus;
    std::vector<PlatformDevice> platform_devices;
    std::vector<Process> processes;
    std::set<int> absent_processes;  // by number; a process of the real machine does not show
    std::vector<KernelInterface> kernel_interfaces;
    std::vector<MemoryModule> memory_modules;
    std::vector<Fault> faults;
};

}  // namespace nimba::sim
