// SPDX-License-Identifier: MIT
// The answers to each request, as values. Their JSON form is between the tool and its own workers
// and may change with every release; what users see is rendered from these values elsewhere.
#pragma once

#include "tools/smi/adapter.hpp"
#include "tools/smi/worker/payload_value.hpp"

#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

// Which adapter a slot holds, as discovery saw it.
struct SlotIdentity {
    int slot = 0;
    std::string bus_id;
    std::optional<std::string> name;

    bool operator==(const SlotIdentity&) const = default;
};

// A file that exists and that this user may not open.
struct DeniedFile {
    std::string path;
    std::string group;  // the group that may open it; empty when that is root's or none

    bool operator==(const DeniedFile&) const = default;
};

// Answer to "discover".
struct Discovery {
    bool libdrm_usable = true;
    std::vector<SlotIdentity> slots;
    std::optional<ForeignGpu> foreign_gpu;
    std::optional<DeniedFile> denied_directory;  // of the DRM nodes; then no node is known
    std::vector<DeniedFile> denied_nodes;        // one for each DRM device without a usable node
    int drm_devices = 0;
    std::vector<std::string> unlisted;  // bus ids of the product's DRM devices in none of the slots

    bool operator==(const Discovery&) const = default;
};

// Answer to "describe". No adapter: it is gone.
struct Description {
    std::optional<Adapter> adapter;
    std::optional<std::string> denied_info;  // the debugfs node that would tell the driver kind

    bool operator==(const Description&) const = default;
};

// Answer to "version".
struct LibraryVersion {
    std::string path;
    std::optional<std::string> package_version;
    int interface_version = 0;
    uint32_t client_version = 0;
    uint32_t match_code = 0;

    bool operator==(const LibraryVersion&) const = default;
};

}  // namespace nimba::smi
