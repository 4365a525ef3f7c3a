/* SPDX-License-Identifier: MIT */
/* A management library that lacks gfx_find_adapter, for nimba-smi's tests. */
#include "nimba_mgmt_interface.h"

int32_t set_print_callback(nimba_print_callback callback)
{
    (void)callback;
    return 0;
}

int32_t get_interface_version(void)
{
    return 22;
}

int32_t get_interface_version_ext1(interface_version_info* info)
{
    info->version_match_result = NIMBA_VERSION_MATCH;
    return 0;
}
