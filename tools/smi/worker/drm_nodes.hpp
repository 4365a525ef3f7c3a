// SPDX-License-Identifier: MIT
// DRM device nodes and who may open them.
#pragma once

#include "tools/smi/worker/payload.hpp"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace nimba::smi {

enum class Maker { kUnknown, kProduct, kOther };

struct DrmNode {
    std::string path;  // "/dev/dri/renderD128"
    std::string
        device;  // the directory of the device behind the node; nodes of one device share it
    bool denied = false;            // reading and writing is not permitted
    std::string group;              // the node's group; empty for root's and for an unnamed one
    Maker maker = Maker::kUnknown;  // of the device, by its PCI vendor
};

// The nodes in `node_dir`, sorted by path. `class_dir` tells the device of each. No node is opened.
std::vector<DrmNode> drm_nodes(const std::string& node_dir = "/dev/dri",
                               const std::string& class_dir = "/sys/class/drm");

// The directory of the nodes, when it exists and this user may not look into it.
std::optional<DeniedFile> denied_directory(const std::string& node_dir = "/dev/dri");

// One node of every device none of whose nodes may be opened: the render node when there is one,
// since that is the one to ask for access to. Devices that are certainly not the product's do not
// count.
std::vector<DeniedFile> denied_devices(std::span<const DrmNode> nodes);

// How many devices there are behind the nodes.
int device_count(std::span<const DrmNode> nodes);

// The product's devices that have a node which may be opened, by PCI bus id.
std::vector<std::string> product_devices(std::span<const DrmNode> nodes);

}  // namespace nimba::smi
