/* SPDX-License-Identifier: MIT */
/* A stand-in for a kernel-interface library with the functions that it is built with. */
#ifndef NIMBA_TESTS_KERNEL_COUNTERS_STUB_H
#define NIMBA_TESTS_KERNEL_COUNTERS_STUB_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Defined by the test program: told of every call of a function of the stub, with what it was given
 * or null; returns what the function does. */
int32_t kernel_counters_called(const char* function, int32_t drm_fd, const void* block,
                               void* record);

#ifdef __cplusplus
}
#endif

#endif
