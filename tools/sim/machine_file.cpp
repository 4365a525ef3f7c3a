// SPDX-License-Identifier: MIT
#include "machine_file.hpp"

#include "adapter_reader.hpp"
#include "claims.hpp"
#include "device_reader.hpp"
#include "fault_reader.hpp"
#include "kernel_interface_reader.hpp"
#include "memory_module_reader.hpp"
#include "message.hpp"
#include "product.hpp"
#include "toml_file.hpp"
#include "toml_table.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <iterator>
#include <string>
#include <string_view>

namespace nimba::sim {
namespace {

constexpr std::array<std::string_view, 8> kMachineKeys{
    "description", "adapter",          "foreign_gpu",   "platform_device",
    "process",     "kernel_interface", "memory_module", "fault"};
constexpr std::array<std::string_view, 8> kForeignGpuKeys{
    "vendor", "device", "bus_id", "card", "render", "nodes", "unopenable", "version"};
constexpr std::array<std::string_view, 6> kPlatformDeviceKeys{"name",  "card",       "render",
                                                              "nodes", "unopenable", "version"};
constexpr std::array<std::string_view, 4> kProcessKeys{"pid", "name", "arguments", "comm"};
constexpr std::size_t kLongestPlatformName = 64;
constexpr std::size_t kLongestComm = 15;

std::string read_description(const TableReader& reader)
{
    std::string description = reader.text("description");
    if (has_control_characters(description)) {
        reader.reject("description", "a text of one line, without control characters");
    }
    return description;
}

ForeignGpu read_foreign_gpu(const TableReader& reader, Claims& claims)
{
    ForeignGpu gpu;
    gpu.pci.vendor = read_vendor(reader, foreign_vendors());
    if (find_vendor(product_vendors(), gpu.pci.vendor) != nullptr) {
        reader.reject("vendor", "a vendor other than the product's");
    }
    gpu.pci.device = read_device_id(reader);
    gpu.pci.address = read_address(reader, claims);
    const Vendor* vendor = find_vendor(foreign_vendors(), gpu.pci.vendor);
    gpu.drm = read_drm(reader, claims, vendor == nullptr ? "unknown" : vendor->driver);
    return gpu;
}

PlatformDevice read_platform_device(const TableReader& reader, Claims& claims)
{
    PlatformDevice device;
    device.name = reader.text("name");
    const auto is_fit = [](unsigned char c) {
        return std::isalnum(c) != 0 || c == '-' || c == '.';
    };
    if (!std::ranges::all_of(device.name, is_fit) || device.name.front() == '.') {
        reader.reject("name", "a name of letters, digits, \"-\", \".\"");
    }
    if (device.name.size() > kLongestPlatformName) {
        reader.reject("name", fmt::format("a name of {} letters at most", kLongestPlatformName));
    }
    claims.take("platform device name", device.name, reader, "name");
    device.drm = read_drm(reader, claims, device.name);
    return device;
}

std::string read_comm(const TableReader& reader)
{
    std::string comm = reader.text("comm");
    if (comm.size() > kLongestComm || has_control_characters(comm)) {
        reader.reject("comm", fmt::format("a name of {} bytes at most, without control characters",
                                          kLongestComm));
    }
    return comm;
}

// The name that the kernel gives to a process that executes `program`.
std::string comm_of(const std::string& program)
{
    return program.substr(program.rfind('/') + 1, kLongestComm);
}

Process read_process(const TableReader& reader, Claims& claims)
{
    Process process;
    process.pid = static_cast<int>(reader.integer("pid", 1, kGreatestPid));
    claims.take("process id", std::to_string(process.pid), reader, "pid");
    const bool is_kernel_thread = !reader.has("name") && reader.has("comm");
    if (!is_kernel_thread) {
        process.arguments.push_back(reader.text("name"));
    }
    if (reader.has("arguments")) {
        if (is_kernel_thread) {
            reader.reject("arguments", "no such key without 'name'");
        }
        std::ranges::copy(reader.texts("arguments"), std::back_inserter(process.arguments));
    }
    process.comm = reader.has("comm") ? read_comm(reader) : comm_of(process.arguments.front());
    return process;
}

}  // namespace

Machine read_machine(const std::string& file)
{
    const toml::table top = parse_toml_file(file);
    const TableReader reader{top, "", file, kMachineKeys};
    Claims claims;
    Machine machine;
    machine.description = read_description(reader);
    for (const TableReader& table : reader.tables("process", kProcessKeys)) {
        machine.processes.push_back(read_process(table, claims));
    }
    for (const TableReader& table : reader.tables("adapter", kAdapterKeys)) {
        machine.adapters.push_back(read_adapter(table, claims, machine.processes));
    }
    for (const TableReader& table : reader.tables("foreign_gpu", kForeignGpuKeys)) {
        machine.foreign_gpus.push_back(read_foreign_gpu(table, claims));
    }
    for (const TableReader& table : reader.tables("platform_device", kPlatformDeviceKeys)) {
        machine.platform_devices.push_back(read_platform_device(table, claims));
    }
    machine.kernel_interfaces = read_kernel_interfaces(reader, machine.adapters);
    machine.memory_modules = read_memory_modules(reader);
    machine.faults = read_faults(reader, machine.adapters);
    return machine;
}

}  // namespace nimba::sim
