// SPDX-License-Identifier: MIT
// DRM device nodes and who may open them.
#pragma once

#include "tools/smi/worker/payload.hpp"

#include <span>
#include <string>
#include <vector>

namespace nimba::smi {

struct DrmNode {
    std::string path;  // "/dev/dri/renderD128"
    std::string
        device;  // the directory of the device behind the node; nodes of one device share it
    bool denied = false;  // reading and writing is not permitted
    std::string group;    // the node's group; empty for root's and for an unnamed one
};

// The nodes in `node_dir`, sorted by path. `class_dir` tells the device of each. No node is opened.
std::vector<DrmNode> drm_nodes(const std::string& node_dir = "/dev/dri",
                               const std::string& class_dir = "/sys/class/drm");

// One node of every device none of whose nodes may be opened: the render node when there is one,
// since that is the one to ask for access to.
std::vector<DeniedFile> denied_devices(std::span<const DrmNode> nodes);

}  // namespace nimba::smi
