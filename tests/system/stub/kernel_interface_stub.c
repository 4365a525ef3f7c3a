/* SPDX-License-Identifier: MIT */
#include "kernel_interface_stub.h"

#include <stddef.h>

static struct kernel_interface_state state = {.size = 4096};

struct kernel_interface_state* kernel_interface(void)
{
    return &state;
}

#ifdef WITH_OBSERVER
__attribute__((constructor)) static void tell_loading(void)
{
    observe_kernel_interface(&state, "loaded");
}

__attribute__((destructor)) static void tell_unloading(void)
{
    observe_kernel_interface(&state, "unloaded");
}
#endif

#if defined(WITH_GFX_SIZE) || defined(WITH_QV_SIZE)
static uint32_t answer(int32_t fd)
{
    state.last_fd = fd;
#ifdef WITH_OBSERVER
    observe_kernel_interface(&state, "asked");
#endif
    if (state.on_call) {
        state.on_call();
    }
    return state.size;
}
#endif

#ifdef WITH_GFX_SIZE
uint32_t gfx_get_struct_size(int32_t fd);
uint32_t gfx_get_struct_size(int32_t fd)
{
    ++state.gfx_calls;
    return answer(fd);
}
#endif

#ifdef WITH_QV_SIZE
uint32_t qv_get_struct_size(int32_t fd);
uint32_t qv_get_struct_size(int32_t fd)
{
    ++state.qv_calls;
    return answer(fd);
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
