/* SPDX-License-Identifier: MIT */
/* A stand-in for libdrm that reports the devices that a test puts into its state. */
#ifndef NIMBA_TESTS_DRM_STUB_H
#define NIMBA_TESTS_DRM_STUB_H

#include <stdint.h>
#include <xf86drm.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    kDrmStubDevices = 8,
    kDrmStubCalls = 8,
    kDrmStubHonest = -1000 /* a list call that answers with the true number of devices */
};

struct drm_stub_call {
    int with_flags; /* 1: drmGetDevices2, 0: drmGetDevices */
    uint32_t flags;
    int has_array;
    int capacity;
};

struct drm_stub_state {
    /* set by the test */
    drmDevicePtr devices[kDrmStubDevices];
    int device_count;
    int answers[2];                          /* of the first and the second list call */
    const char* mute_nodes[kDrmStubDevices]; /* paths whose descriptors have no version */

    /* kept by the stub */
    struct drm_stub_call calls[kDrmStubCalls];
    int call_count;
    int given_devices; /* pointers written to the caller's arrays */
    int freed_devices; /* pointers that drmFreeDevices got back */
    int free_calls;
    int free_count; /* the count of the last drmFreeDevices */
    int asked_versions;
    int live_versions; /* handed out and not freed */
    int wrong_frees;   /* of versions that were not live */
};

/* The state of this copy of the stub: empty, with honest answers, when it is loaded. */
struct drm_stub_state* drm_stub(void);

#ifdef __cplusplus
}
#endif

#endif
