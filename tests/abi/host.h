/* SPDX-License-Identifier: MIT */
/* How the hosts in C load the library and find what it exports. */
#ifndef NIMBA_TESTS_ABI_HOST_H
#define NIMBA_TESTS_ABI_HOST_H

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static inline void* load_library(const char* path)
{
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        exit(2);
    }
    return library;
}

/* The address of an exported function or global; without one the host ends. */
static inline void* symbol(void* library, const char* name)
{
    void* address = dlsym(library, name);
    if (address == NULL) {
        fprintf(stderr, "the library does not export %s\n", name);
        exit(2);
    }
    return address;
}

/* Stores the address of the function `name` in the function pointer that `pointer` points to. */
static inline void find_function(void* library, const char* name, void* pointer)
{
    void* address = symbol(library, name);
    memcpy(pointer, &address, sizeof address);
}

#endif
