/* SPDX-License-Identifier: MIT */
#include "kernel_counters_stub.h"

#include <stddef.h>

#define FUNCTION(name, parameters, block, record)                      \
    int32_t name parameters;                                           \
    int32_t name parameters                                            \
    {                                                                  \
        return kernel_counters_called(#name, drm_fd, (block), record); \
    }

#define OF_DEVICE(name) FUNCTION(name, (int32_t drm_fd), NULL, NULL)
#define OF_BLOCK(name) FUNCTION(name, (int32_t drm_fd, void* block), block, NULL)
#define OF_BLOCK_AND_RECORD(name) \
    FUNCTION(name, (int32_t drm_fd, void* block, void* record), block, record)
#define OF_RECORD(name) FUNCTION(name, (int32_t drm_fd, void* record), NULL, record)

#ifdef WITH_GFX_GET_STRUCT_SIZE
OF_DEVICE(gfx_get_struct_size)
#endif
#ifdef WITH_QV_GET_STRUCT_SIZE
OF_DEVICE(qv_get_struct_size)
#endif

#ifdef WITH_GFX_FLIP_COUNT
OF_BLOCK_AND_RECORD(gfx_flip_count)
#endif

#ifdef WITH_GFX_INIT_HWINFO
OF_BLOCK(gfx_init_hwinfo)
#endif
#ifdef WITH_GFX_DEINIT_HWINFO
OF_BLOCK(gfx_deinit_hwinfo)
#endif
#ifdef WITH_GFX_GET_HWINFO
OF_BLOCK_AND_RECORD(gfx_get_hwinfo)
#endif
#ifdef WITH_GFX_GET_HWINFO_EXT
OF_BLOCK_AND_RECORD(gfx_get_hwinfo_ext)
#endif
#ifdef WITH_QV_INIT_HWINFO
OF_BLOCK(qv_init_hwinfo)
#endif
#ifdef WITH_QV_DEINIT_HWINFO
OF_BLOCK(qv_deinit_hwinfo)
#endif
#ifdef WITH_QV_GET_HWINFO
OF_BLOCK_AND_RECORD(qv_get_hwinfo)
#endif

#ifdef WITH_GFX_GET_USAGE_INFO
OF_BLOCK_AND_RECORD(gfx_get_usage_info)
#endif
#ifdef WITH_GFX_GET_USAGE_INFO_EXT
OF_BLOCK_AND_RECORD(gfx_get_usage_info_ext)
#endif
#ifdef WITH_QVGETHWQINFO
OF_RECORD(qvGetHwqInfo)
#endif
