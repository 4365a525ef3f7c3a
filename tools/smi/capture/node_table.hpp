// SPDX-License-Identifier: MIT
// What a capture reads: all that the management library reads, and nothing else. docs/capture.md
// has the same table for people.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace nimba::smi {

// The directory that a path of the table is in.
enum class NodeBase : uint8_t {
    kDevice,   // the PCI device's, in sysfs
    kInfo,     // the driver's, in that
    kHwmon,    // the first hwmon directory, in that
    kDebug,    // the driver's, in debugfs
    kProc,     // /proc, for the driver's file of the card
    kMinor0,   // where page tables are, whatever the adapters
    kProcess,  // of a process that a device context names
};

// Which drivers have a node.
enum class NodeDriver : uint8_t { kAny, kVa, kLegacy };

struct NodeRow {
    NodeBase base;
    // "*" stands for each entry of a directory, "=" for the same name again, "#" for the card's
    // number.
    std::string_view path;
    std::size_t limit;  // bytes from the beginning; 0: of a directory, the names
    NodeDriver driver = NodeDriver::kAny;
};

inline constexpr std::size_t kWholeNode = 256U << 20U;

// In the order in which they are read: what names processes comes first.
std::span<const NodeRow> node_table();

// The largest part of the preference file, and of what a command writes.
inline constexpr std::size_t kLongestPreferences = 16U << 20U;
inline constexpr std::size_t kLongestOutput = 1U << 20U;

}  // namespace nimba::smi
