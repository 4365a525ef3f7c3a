// SPDX-License-Identifier: MIT
#include "replay/captured_machine.hpp"

#include "nimba_mgmt_interface.h"
#include "product.hpp"
#include "replay/lasting_errors.hpp"
#include "replay/named_processes.hpp"
#include "replay/recorded_driver.hpp"
#include "tools/archive/entry_name.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace nimba::sim {
namespace {

constexpr int kControlBase = 64;
// So long does a node wait that did not answer in time.
constexpr std::chrono::hours kForever{24};

DrmNode node_of(archive::DrmNodeType type)
{
    switch (type) {
        case archive::DrmNodeType::kPrimary:
            return DrmNode::kPrimary;
        case archive::DrmNodeType::kControl:
            return DrmNode::kControl;
        case archive::DrmNodeType::kRender:
            break;
    }
    return DrmNode::kRender;
}

// The number that ends the text; a capture's paths have one.
int number_behind(std::string_view text)
{
    const auto digits = text.substr(text.find_last_not_of("0123456789") + 1);
    int number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

// The card of a device, from its nodes; nothing when they do not tell.
std::optional<int> told_card(const archive::DrmDevice& device)
{
    std::optional<int> card;
    for (const archive::DrmNode& node : device.nodes) {
        if (node.type == archive::DrmNodeType::kPrimary) {
            return number_behind(node.path);
        }
        if (node.type == archive::DrmNodeType::kControl) {
            card = number_behind(node.path) - kControlBase;
        }
    }
    return card;
}

// Gives each device its card number, which no other has; primary nodes come first.
std::vector<int> card_numbers(const std::vector<archive::DrmDevice>& devices)
{
    std::set<int> taken;
    for (const archive::DrmDevice& device : devices) {
        for (const archive::DrmNode& node : device.nodes) {
            if (node.type == archive::DrmNodeType::kPrimary) {
                taken.insert(number_behind(node.path));
            }
        }
    }
    std::vector<int> cards;
    for (const archive::DrmDevice& device : devices) {
        const bool primary = std::ranges::any_of(device.nodes, [](const auto& node) {
            return node.type == archive::DrmNodeType::kPrimary;
        });
        int card = told_card(device).value_or(0);
        while (!primary && !taken.insert(card).second) {
            ++card;
        }
        cards.push_back(card);
    }
    return cards;
}

DrmDevice drm_device(const archive::DrmDevice& device, int card, std::size_t place)
{
    DrmDevice drm;
    drm.card = card;
    drm.place = static_cast<int>(place);
    for (const archive::DrmNode& node : device.nodes) {
        drm.nodes.insert(node_of(node.type));
        if (node.error) {
            drm.unopenable.insert(node_of(node.type));
        }
        if (node.type == archive::DrmNodeType::kRender) {
            drm.render = number_behind(node.path);
        }
    }
    drm.answers_version = device.version.has_value();
    drm.driver = device.version ? device.version->name : "";
    return drm;
}

using NodesByPath = std::map<std::string_view, const archive::Node*>;

NodesByPath nodes_by_path(const archive::Sample& sample)
{
    NodesByPath nodes;
    for (const archive::Node& node : sample.record.nodes) {
        nodes.emplace(node.path, &node);
    }
    return nodes;
}

std::string text_at(const archive::Sample& sample, const std::string& path)
{
    const auto text = sample.texts.find(archive::encode_path(path));
    return text == sample.texts.end() ? "" : *text->second;
}

// Whether it can be the name of a connector in sysfs, and in a description of it.
bool is_connector(std::string_view name)
{
    constexpr std::size_t kLongest = 64;
    return !name.empty() && name.size() <= kLongest && std::ranges::all_of(name, [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
               c == '-' || c == '_';
    });
}

// Whether anything was read of the device, which is so only of adapters that answer.
bool has_nodes(const NodesByPath& nodes, const std::string& device)
{
    const std::string begin = archive::encode_path(device) + "/";
    const auto first = nodes.lower_bound(begin);
    return first != nodes.end() && first->first.starts_with(begin);
}

std::optional<std::vector<std::string>> connectors(const NodesByPath& nodes,
                                                   const std::string& device, int card)
{
    const std::string name = fmt::format("card{}", card);
    const auto node = nodes.find(archive::encode_path(fmt::format("{}/drm/{}", device, name)));
    if (node == nodes.end()) {
        return has_nodes(nodes, device) ? std::nullopt : std::optional{std::vector<std::string>{}};
    }
    std::vector<std::string> found;
    for (const std::string& entry : node->second->entries) {
        const std::string connector =
            entry.starts_with(name + "-") ? entry.substr(name.size() + 1) : "";
        if (is_connector(connector)) {
            found.push_back(connector);
        }
    }
    return found;
}

Adapter adapter_of(const archive::Sample& sample, const NodesByPath& nodes, PciDevice pci,
                   DrmDevice drm)
{
    Adapter adapter;
    adapter.pci = pci;
    adapter.drm = std::move(drm);
    adapter.driver_dir = pci.vendor == QV_VENDOR_ID ? "qv" : "jw";
    const std::string device = "/sys/bus/pci/devices/" + to_text(pci.address);
    adapter.link.width = text_at(sample, device + "/current_link_width");
    adapter.drm.connectors = connectors(nodes, device, adapter.drm.card);
    return adapter;
}

void add_devices(const archive::Capture& capture, Machine& machine)
{
    const auto& devices = capture.manifest.drm.devices;
    const std::vector<int> cards = card_numbers(devices);
    const archive::Sample& sample = capture.samples.front();
    const NodesByPath nodes = nodes_by_path(sample);
    for (std::size_t place = 0; place < devices.size(); ++place) {
        DrmDevice drm = drm_device(devices[place], cards[place], place);
        if (!devices[place].pci) {
            machine.platform_devices.push_back({fmt::format("display{}", place), std::move(drm)});
            continue;
        }
        const archive::PciIdentity& identity = *devices[place].pci;
        const PciDevice pci{identity.vendor, identity.device,
                            parse_pci_address(identity.address).value()};
        if (pci.vendor == NIMBA_VENDOR_ID || pci.vendor == QV_VENDOR_ID) {
            machine.adapters.push_back(adapter_of(sample, nodes, pci, std::move(drm)));
        } else {
            machine.foreign_gpus.push_back({pci, std::move(drm)});
        }
    }
}

// The processes of a sample; a later one with the same number replaces one before.
void add_processes(const archive::Sample& sample, std::map<int, Process>& processes)
{
    constexpr std::string_view kBegin = "/proc/";
    constexpr std::string_view kEnd = "/cmdline";
    for (const auto& [path, text] : sample.texts) {
        if (!path.starts_with(kBegin) || !path.ends_with(kEnd)) {
            continue;
        }
        const std::string_view digits =
            std::string_view{path}.substr(kBegin.size(), path.size() - kBegin.size() - kEnd.size());
        int pid = 0;
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), pid);
        if (error != std::errc{} || end != digits.data() + digits.size() || pid < 1 ||
            pid > kGreatestPid) {
            continue;
        }
        Process process{pid, text_at(sample, fmt::format("/proc/{}/comm", pid)), {}};
        process.comm = process.comm.substr(0, process.comm.find('\n'));
        if (!text->empty()) {
            process.arguments = {text->substr(0, text->find('\0'))};
        }
        processes.insert_or_assign(pid, std::move(process));
    }
}

void add_libraries(const archive::Capture& capture, Machine& machine)
{
    constexpr std::array kSizeFunctions{"gfx_get_struct_size", "qv_get_struct_size"};
    for (const archive::Adapter& adapter : capture.manifest.adapters) {
        if (!adapter.kernel_interface) {
            continue;
        }
        const archive::KernelInterface& told = *adapter.kernel_interface;
        // One of another name would only be in the way of a library that the commands need.
        const bool is_one = std::ranges::find(kernel_interface_files(), told.file) !=
                            kernel_interface_files().end();
        if (!is_one ||
            std::ranges::find(machine.kernel_interfaces, told.file, &KernelInterface::file) !=
                machine.kernel_interfaces.end()) {
            continue;
        }
        KernelInterface library{
            told.file, "none", told.struct_size, {}, told.init_result.value_or(0)};
        for (const std::string& function : told.functions) {
            if (std::ranges::find(kSizeFunctions, function) == kSizeFunctions.end()) {
                library.counters.insert(function);
            } else if (library.size_function == "none") {
                library.size_function = function;
            }
        }
        machine.kernel_interfaces.push_back(std::move(library));
    }
}

std::vector<std::string> split(std::string_view path)
{
    std::vector<std::string> components;
    while (!path.empty()) {
        const std::size_t size = std::min(path.find('/'), path.size());
        components.emplace_back(path.substr(0, size));
        path.remove_prefix(std::min(size + 1, path.size()));
    }
    return components;
}

// The fault that a node without a text has; nothing for what no fault can be of.
std::optional<Fault> fault_of(const archive::Node& node, const Machine& machine)
{
    const auto path = recorded_path(node.path, machine);
    const auto all = path ? split(*path) : std::vector<std::string>{};
    if (all.size() < 2 || node.error == archive::kLimit) {
        return std::nullopt;
    }
    const auto* const root = std::ranges::find(kNodeDirectories, all[0] == "dri" ? "debug" : all[0],
                                               [](const auto& row) { return row.first; });
    // Of the directories in debugfs only what is in them is looked at.
    const std::size_t depth = all[0] == "dri" || all[0] == "hwmon" ? 3 : 2;
    if (root == kNodeDirectories.end() || all.size() < depth ||
        (all[0] == "dri" && all.size() == depth)) {
        return std::nullopt;
    }
    Fault fault;
    fault.directory = root->second;
    fault.card = number_behind(all[1]);
    const bool beside = std::ranges::any_of(machine.adapters, [&](const Adapter& adapter) {
        return adapter.drm.card == *fault.card && has_virtual_memory_beside(adapter);
    });
    for (std::size_t i = depth - (all[0] == "dri" && all[2] == "qv" && beside ? 1 : 0);
         i < all.size(); ++i) {
        fault.path += (fault.path.empty() ? "" : "/") + all[i];
    }
    fault.error = error_number(node.error).value_or(EIO);
    if (node.error == archive::kDeadline) {
        fault.kind = FaultKind::kBlock;
        fault.length = kForever;
    }
    return fault;
}

// What fails in all samples alike has a fault.
void add_faults(const archive::Capture& capture, Machine& machine)
{
    const auto lasting = lasting_errors(capture);
    for (const archive::Node& node : capture.samples.front().record.nodes) {
        if (!lasting.contains(node.path)) {
            continue;
        }
        if (auto fault = fault_of(node, machine)) {
            machine.faults.push_back(*std::move(fault));
        }
    }
}

}  // namespace

Machine captured_machine(const archive::Capture& capture)
{
    Machine machine;
    machine.description = "Captured at " + capture.manifest.time;
    add_devices(capture, machine);
    std::map<int, Process> processes;
    for (const archive::Sample& sample : capture.samples) {
        add_processes(sample, processes);
    }
    for (auto& [pid, process] : processes) {
        machine.processes.push_back(std::move(process));
    }
    machine.absent_processes = named_processes(capture);
    for (const Process& process : machine.processes) {
        machine.absent_processes.erase(process.pid);
    }
    add_libraries(capture, machine);
    add_faults(capture, machine);
    return machine;
}

}  // namespace nimba::sim
