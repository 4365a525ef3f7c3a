// SPDX-License-Identifier: MIT
// Messages: one funnel, one receiver, and the lines that mark the library's loading and unloading.
#include "nimba_mgmt_interface.h"

#include <cstdarg>
#include <cstdio>

namespace {

constexpr std::size_t kMessageSize = 1024;  // the NUL included

}  // namespace

// Written by the load-time constructor and by set_print_callback; nothing resets it.
nimba_print_callback pServerPrintCallback = nullptr;

// Priority 100 comes before every static constructor of the library, so that their messages find a
// receiver. g++ keeps priorities up to 100 for the implementation and warns.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wprio-ctor-dtor"
#endif
extern "C" {
[[gnu::constructor(100)]] static void install_default_print_callback()
{
    std::puts("init_100_priority, init print callback.");
    pServerPrintCallback = std::printf;
}

[[gnu::destructor(100)]] static void mark_unloading()
{
    std::puts("uninit_100_priority.");
}
}
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

int32_t lib_print_func(const char* format, ...)
{
    if (pServerPrintCallback == nullptr) {
        return 0;
    }
    char message[kMessageSize] = "";
    std::va_list values;
    va_start(values, format);
    std::vsnprintf(message, sizeof message, format, values);
    va_end(values);
    // The finished text is the callback's format: hosts rely on getting it as the only argument.
    pServerPrintCallback(message);
    return 0;
}

int32_t set_print_callback(nimba_print_callback callback)
{
    pServerPrintCallback = callback;
    return lib_print_func("set_print_callback.\n");
}
