// SPDX-License-Identifier: MIT
#pragma once

#include "driver/fuse.hpp"

namespace nimba::sim {

// What libfuse calls for each kind of request, in a session whose user data is a NodeServer.
fuse_lowlevel_ops node_operations();

}  // namespace nimba::sim
