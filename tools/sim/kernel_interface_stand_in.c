/* SPDX-License-Identifier: MIT */
/*
 * Stands in for one of the product's kernel-interface libraries. It is compiled once for each file
 * name and size function: NIMBA_SIZE_FUNCTION names the function (it is not defined for a library
 * without one), NIMBA_STRUCT_SIZE_VARIABLE the environment variable that holds the size.
 */
#include <fcntl.h>
#include <stdint.h>
#include <stdlib.h>

#ifdef NIMBA_SIZE_FUNCTION
__attribute__((visibility("default"))) uint32_t NIMBA_SIZE_FUNCTION(int drm_descriptor);

/* Return: the size of the device block in bytes; 0 when the descriptor is not open or no size is
 * set. */
uint32_t NIMBA_SIZE_FUNCTION(int drm_descriptor)
{
    const char* size = getenv(NIMBA_STRUCT_SIZE_VARIABLE);
    if (size == NULL || fcntl(drm_descriptor, F_GETFD) < 0) {
        return 0;
    }
    return (uint32_t)strtoul(size, NULL, 10);
}
#else
/* A library that lacks the size function still exports something. */
__attribute__((visibility("default"))) extern const char nimba_sim_no_size_function;
const char nimba_sim_no_size_function = 1;
#endif
