// SPDX-License-Identifier: MIT
#include "core/debug_directory.hpp"

#include "nimba_mgmt_interface.h"

#include <cstdio>

namespace nimba {

Directory open_debug_directory(const char* name)
{
    char path[1024];
    std::snprintf(path, sizeof path, "%s/%s", sys_kernel_debug_ID_dri_ADAPTER_path, name);
    return Directory{::opendir(path)};
}

}  // namespace nimba
