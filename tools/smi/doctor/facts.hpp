// SPDX-License-Identifier: MIT
// What workers find out for "doctor", and how it travels to the tool. Error numbers are 0 where
// nothing is wrong.
#pragma once

#include "tools/smi/worker/payload.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

struct LibdrmFacts {
    std::string name;  // that it was loaded by; empty when it cannot be
    std::string path;
    std::vector<std::string> missing;  // functions that discovery needs
    std::string error;                 // why the last name could not be loaded

    bool operator==(const LibdrmFacts&) const = default;
};

// A PCI device of the product's vendors.
struct PciAdapter {
    std::string bus_id;
    uint32_t device_id = 0;
    std::string driver;  // that is bound to it; empty for none
    bool drm = false;    // the kernel knows DRM nodes of it

    bool operator==(const PciAdapter&) const = default;
};

struct DeviceFacts {
    int pci_error = 0;  // of listing the PCI devices
    std::vector<PciAdapter> adapters;
    std::optional<DeniedFile> denied_directory;  // of the DRM nodes
    std::vector<DeniedFile> denied_nodes;
    int drm_devices = 0;

    bool operator==(const DeviceFacts&) const = default;
};

struct DebugfsFacts {
    int error = 0;       // of listing it
    bool empty = false;  // nothing is mounted there

    bool operator==(const DebugfsFacts&) const = default;
};

struct CommandFacts {
    std::string ps;          // where it is; empty for nowhere
    bool ps_names = false;   // it tells the names of processes
    std::string dmidecode;   // where it is
    bool dmi_tells = false;  // it tells of the system's memory
    std::string dmi_said;    // the last line that it wrote when it does not
    bool root = false;

    bool operator==(const CommandFacts&) const = default;
};

struct PreferenceFacts {
    std::optional<std::string> home;
    std::string path;         // of the file; empty without a usable HOME
    int directory_error = 0;  // of the file's directory
    bool exists = false;      // the file does
    bool regular = true;      // and is none of another kind
    int read_error = 0;       // of the file
    int write_error = 0;      // of the file, or of the directory when there is none yet
    int applications = 0;     // that have a preference
    int bad_lines = 0;        // that are no part of one
    int first_bad_line = 0;   // counted from 1

    bool operator==(const PreferenceFacts&) const = default;
};

struct UserFacts {
    uint32_t id = 0;
    std::string name;
    std::vector<std::string> groups;

    bool operator==(const UserFacts&) const = default;
};

// The kernel-interface library of an adapter's chip.
struct KernelInterfaceFacts {
    std::vector<std::string> names;   // in the order in which they are tried; none for other chips
    std::vector<std::string> errors;  // why those before the one that was loaded could not be
    std::string loaded;               // the name that it was loaded by; empty for none
    std::string path;
    std::string size_function;           // its name; empty for none
    uint32_t block_size = 0;             // that it returned
    std::vector<std::string> functions;  // entry points for figures that it has

    bool operator==(const KernelInterfaceFacts&) const = default;
};

// A file or directory, and whether it can be read.
struct NodeFact {
    std::string path;
    int error = 0;

    bool operator==(const NodeFact&) const = default;
};

struct DebugFacts {
    NodeFact directory;
    NodeFact allocations;  // their directory, or the first of them that cannot be read

    bool operator==(const DebugFacts&) const = default;
};

struct InfoFacts {
    NodeFact directory;
    NodeFact usage_switch;
    int switch_write_error = 0;

    bool operator==(const InfoFacts&) const = default;
};

}  // namespace nimba::smi
