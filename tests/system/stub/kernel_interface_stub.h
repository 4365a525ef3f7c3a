/* SPDX-License-Identifier: MIT */
/* A stand-in for a kernel-interface library whose size function answers what a test asks for. */
#ifndef NIMBA_TESTS_KERNEL_INTERFACE_STUB_H
#define NIMBA_TESTS_KERNEL_INTERFACE_STUB_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

struct kernel_interface_state {
    /* set by the test */
    uint32_t size;
    void (*on_call)(void); /* null, or called by the size function */

    /* kept by the stub */
    int gfx_calls; /* of gfx_get_struct_size */
    int qv_calls;  /* of qv_get_struct_size */
    int32_t last_fd;
};

/* The state of this copy of the stub: a size of 4096 when it is loaded. */
struct kernel_interface_state* kernel_interface(void);

/* Defined by the test program: told when an observed copy of the stub, which has this state, is
 * "loaded", "asked" for the size and "unloaded". */
void observe_kernel_interface(const struct kernel_interface_state* copy, const char* event);

#ifdef __cplusplus
}
#endif

#endif
