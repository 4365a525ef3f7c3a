/* SPDX-License-Identifier: MIT */
/*
 * Stands in for the product's kernel-interface libraries. It has every entry point of all of them;
 * nimba-sim takes away what a machine's library lacks, in the copy that the machine gets. Beside
 * the copy is a file with its settings, called the same with ".settings" behind.
 *
 * The counters are those of the simulated driver behind the DRM descriptor. What needs the hardware
 * information fails unless it was prepared for the same device block before.
 */
#define _GNU_SOURCE /* dladdr */
#include "kernel_interface_ioctl.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <inttypes.h>
#include <limits.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <sys/ioctl.h>

#define ENTRY_POINT(type) __attribute__((visibility("default"))) type

enum { kHardwareWords = 12, kFailure = -1 };

/* What the extended record has in its first word, its kind, and in the words behind that are
 * figures. */
enum { kExtendedUsage = 3, kFirstExtendedWord = 2, kLastExtendedWord = 9 };

/* What the last word of the extended hardware information has more, to tell the two apart. */
enum { kExtendedHardware = 1 };

struct flip_sample {
    int64_t time; /* nanoseconds */
    int64_t flips;
};

struct settings {
    uint32_t struct_size;
    int init_result;
};

/* The device blocks that the two families' functions have prepared. */
static const void* prepared_by_gfx;
static const void* prepared_by_qv;

ENTRY_POINT(uint32_t) gfx_get_struct_size(int drm_descriptor);
ENTRY_POINT(uint32_t) qv_get_struct_size(int drm_descriptor);
ENTRY_POINT(int) gfx_flip_count(int drm_descriptor, const void* block, struct flip_sample* sample);
ENTRY_POINT(int) gfx_init_hwinfo(int drm_descriptor, const void* block);
ENTRY_POINT(int) gfx_deinit_hwinfo(int drm_descriptor, const void* block);
ENTRY_POINT(int) gfx_get_hwinfo(int drm_descriptor, const void* block, uint32_t* record);
ENTRY_POINT(int) gfx_get_hwinfo_ext(int drm_descriptor, const void* block, uint32_t* record);
ENTRY_POINT(int) qv_init_hwinfo(int drm_descriptor, const void* block);
ENTRY_POINT(int) qv_deinit_hwinfo(int drm_descriptor, const void* block);
ENTRY_POINT(int) qv_get_hwinfo(int drm_descriptor, const void* block, uint32_t* record);
ENTRY_POINT(int) gfx_get_usage_info(int drm_descriptor, const void* block, uint32_t* record);
ENTRY_POINT(int) gfx_get_usage_info_ext(int drm_descriptor, const void* block, uint32_t* record);
ENTRY_POINT(int) qvGetHwqInfo(int drm_descriptor, uint32_t* record);

static bool read_settings(struct settings* settings)
{
    Dl_info self;
    char path[PATH_MAX];
    if (dladdr(&prepared_by_gfx, &self) == 0) {
        return false;
    }
    const int length = snprintf(path, sizeof(path), "%s.settings", self.dli_fname);
    FILE* file = length < (int)sizeof(path) ? fopen(path, "re") : NULL;
    if (file == NULL) {
        return false;
    }
    const int values =
        fscanf(file, "%" SCNu32 " %d", &settings->struct_size, &settings->init_result);
    fclose(file);
    return values == 2;
}

static bool read_counters(int drm_descriptor, struct nimba_sim_counters* counters)
{
    return ioctl(drm_descriptor, NIMBA_SIM_IOCTL_COUNTERS, counters) == 0;
}

/* Return: the size of the device block in bytes; 0 when the descriptor is not open or no size is
 * set. */
static uint32_t struct_size(int drm_descriptor)
{
    struct settings settings;
    if (fcntl(drm_descriptor, F_GETFD) < 0 || !read_settings(&settings)) {
        return 0;
    }
    return settings.struct_size;
}

static int prepare(const void** prepared, int drm_descriptor, const void* block)
{
    struct settings settings;
    struct nimba_sim_counters counters;
    if (block == NULL || !read_settings(&settings) || !read_counters(drm_descriptor, &counters)) {
        return kFailure;
    }
    if (settings.init_result == 0) {
        *prepared = block;
    }
    return settings.init_result;
}

static int forget(const void** prepared, const void* block)
{
    if (block == NULL || block != *prepared) {
        return kFailure;
    }
    *prepared = NULL;
    return 0;
}

static int tell_hardware(int drm_descriptor, uint32_t* record)
{
    struct nimba_sim_counters counters;
    if (record == NULL || !read_counters(drm_descriptor, &counters)) {
        return kFailure;
    }
    memcpy(record, counters.hardware, sizeof(counters.hardware));
    return 0;
}

/* Writes the figures that the extended record has in its words 2, 4 and 7. */
static int tell_usage(int drm_descriptor, uint32_t* record)
{
    struct nimba_sim_counters counters;
    if (record == NULL || !read_counters(drm_descriptor, &counters)) {
        return kFailure;
    }
    record[0] = counters.usage[2];
    record[1] = counters.usage[4];
    record[2] = counters.usage[7];
    return 0;
}

uint32_t gfx_get_struct_size(int drm_descriptor)
{
    return struct_size(drm_descriptor);
}

uint32_t qv_get_struct_size(int drm_descriptor)
{
    return struct_size(drm_descriptor);
}

int gfx_flip_count(int drm_descriptor, const void* block, struct flip_sample* sample)
{
    struct nimba_sim_counters counters;
    if (block == NULL || sample == NULL || !read_counters(drm_descriptor, &counters)) {
        return kFailure;
    }
    sample->time = counters.time;
    sample->flips = counters.flips;
    return 0;
}

int gfx_init_hwinfo(int drm_descriptor, const void* block)
{
    return prepare(&prepared_by_gfx, drm_descriptor, block);
}

int gfx_deinit_hwinfo(int drm_descriptor, const void* block)
{
    (void)drm_descriptor;
    return forget(&prepared_by_gfx, block);
}

int gfx_get_hwinfo(int drm_descriptor, const void* block, uint32_t* record)
{
    if (block == NULL || block != prepared_by_gfx) {
        return kFailure;
    }
    return tell_hardware(drm_descriptor, record);
}

int gfx_get_hwinfo_ext(int drm_descriptor, const void* block, uint32_t* record)
{
    if (block == NULL || (block != prepared_by_gfx && block != prepared_by_qv) ||
        tell_hardware(drm_descriptor, record) != 0) {
        return kFailure;
    }
    record[kHardwareWords - 1] += kExtendedHardware;
    return 0;
}

int qv_init_hwinfo(int drm_descriptor, const void* block)
{
    return prepare(&prepared_by_qv, drm_descriptor, block);
}

int qv_deinit_hwinfo(int drm_descriptor, const void* block)
{
    (void)drm_descriptor;
    return forget(&prepared_by_qv, block);
}

int qv_get_hwinfo(int drm_descriptor, const void* block, uint32_t* record)
{
    if (block == NULL || block != prepared_by_qv) {
        return kFailure;
    }
    return tell_hardware(drm_descriptor, record);
}

int gfx_get_usage_info(int drm_descriptor, const void* block, uint32_t* record)
{
    return block == NULL ? kFailure : tell_usage(drm_descriptor, record);
}

int gfx_get_usage_info_ext(int drm_descriptor, const void* block, uint32_t* record)
{
    struct nimba_sim_counters counters;
    if (block == NULL || record == NULL || record[0] != kExtendedUsage ||
        !read_counters(drm_descriptor, &counters)) {
        return kFailure;
    }
    memcpy(record + kFirstExtendedWord, counters.usage + kFirstExtendedWord,
           (kLastExtendedWord - kFirstExtendedWord + 1) * sizeof(*record));
    return 0;
}

int qvGetHwqInfo(int drm_descriptor, uint32_t* record)
{
    return tell_usage(drm_descriptor, record);
}
