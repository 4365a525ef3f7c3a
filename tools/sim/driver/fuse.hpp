// SPDX-License-Identifier: MIT
// libfuse's low-level interface, in the version that this program is written for.
#pragma once

#define FUSE_USE_VERSION 314

#include <fuse_lowlevel.h>
