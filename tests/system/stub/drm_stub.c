/* SPDX-License-Identifier: MIT */
#define _POSIX_C_SOURCE 200809L
#include "drm_stub.h"

#include <stdio.h>
#include <string.h>
#include <unistd.h>

enum { kVersions = 64 };

static struct {
    int live;
    drmVersion version;
} versions[kVersions];

static struct drm_stub_state state = {.answers = {kDrmStubHonest, kDrmStubHonest}};

struct drm_stub_state* drm_stub(void)
{
    return &state;
}

#if defined(WITH_GET_DEVICES) || defined(WITH_GET_DEVICES2)
static int list_devices(int with_flags, uint32_t flags, drmDevicePtr devices[], int capacity)
{
    int call = state.call_count++;
    if (call < kDrmStubCalls) {
        state.calls[call] =
            (struct drm_stub_call){with_flags, flags, devices != NULL, devices ? capacity : 0};
    }
    int answer = call < 2 ? state.answers[call] : kDrmStubHonest;
    int count = answer == kDrmStubHonest ? state.device_count : answer;
    for (int i = 0; devices && i < count && i < capacity && i < state.device_count; ++i) {
        devices[i] = state.devices[i];
        ++state.given_devices;
    }
    return count;
}
#endif

#ifdef WITH_GET_DEVICES2
int drmGetDevices2(uint32_t flags, drmDevicePtr devices[], int max_devices)
{
    return list_devices(1, flags, devices, max_devices);
}
#endif

#ifdef WITH_GET_DEVICES
int drmGetDevices(drmDevicePtr devices[], int max_devices)
{
    return list_devices(0, 0, devices, max_devices);
}
#endif

#ifdef WITH_FREE_DEVICES
void drmFreeDevices(drmDevicePtr devices[], int count)
{
    ++state.free_calls;
    state.free_count = count;
    for (int i = 0; i < count; ++i) {
        if (devices[i]) {
            ++state.freed_devices;
            devices[i] = NULL;
        }
    }
}
#endif

#ifdef WITH_GET_VERSION
static int is_mute(int fd)
{
    char link[64];
    char path[4096];
    snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    ssize_t length = readlink(link, path, sizeof path - 1);
    if (length < 0) {
        return 1;
    }
    path[length] = '\0';
    for (int i = 0; i < kDrmStubDevices; ++i) {
        if (state.mute_nodes[i] && strcmp(state.mute_nodes[i], path) == 0) {
            return 1;
        }
    }
    return 0;
}

drmVersionPtr drmGetVersion(int fd)
{
    int index = state.asked_versions++;
    if (index >= kVersions || is_mute(fd)) {
        return NULL;
    }
    versions[index].live = 1;
    ++state.live_versions;
    return &versions[index].version;
}
#endif

#ifdef WITH_FREE_VERSION
void drmFreeVersion(drmVersionPtr version)
{
    for (int i = 0; i < kVersions; ++i) {
        if (version == &versions[i].version && versions[i].live) {
            versions[i].live = 0;
            --state.live_versions;
            return;
        }
    }
    ++state.wrong_frees;
}
#endif

#ifdef WITH_UNRESOLVED_CALL
/* Only lazy binding loads a library that calls a function nobody defines. */
extern int nimba_tests_undefined_function(void);
int nimba_tests_unresolved_call(void);
int nimba_tests_unresolved_call(void)
{
    return nimba_tests_undefined_function();
}
#endif
