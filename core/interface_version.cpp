// SPDX-License-Identifier: MIT
// The interface version, its handshake, and the entry points that hold a place in this version.
#include "nimba_mgmt_interface.h"

namespace {

constexpr uint32_t kMajorMask = 0xFFFF0000;

}  // namespace

int32_t get_interface_version()
{
    return NIMBA_INTERFACE_VERSION;
}

int32_t get_interface_version_ext1(interface_version_info* info)
{
    info->server_interface_version = NIMBA_INTERFACE_VERSION;
    const uint32_t client = info->client_interface_version;
    if ((client & kMajorMask) != 0) {
        lib_print_func("major version mismatch !!!\n");
        info->version_match_result = NIMBA_VERSION_MAJOR_MISMATCH;
    } else if (client < NIMBA_INTERFACE_VERSION) {
        lib_print_func("minor version compatile.\n");
        info->version_match_result = NIMBA_VERSION_CLIENT_OLDER;
    } else if (client == NIMBA_INTERFACE_VERSION) {
        // Here alone a callback already finds the result in the record.
        info->version_match_result = NIMBA_VERSION_MATCH;
        lib_print_func("client_interface_version ALL Match.\n");
    } else {
        lib_print_func(
            "warning!!! client minor version > server minior vesion, might have compatible "
            "issue.\n");
        info->version_match_result = NIMBA_VERSION_CLIENT_NEWER;
    }
    return 0;
}

int32_t get_driver_info()
{
    return 0;
}

int32_t selfcheck_current_tool_status(uint32_t* status)
{
    *status = 0;
    return 0;
}
