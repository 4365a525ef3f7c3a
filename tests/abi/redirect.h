/* SPDX-License-Identifier: MIT */
/* Files of the machine that are the test's own for this program, and so for the library that it
 * loads. Included by the one source of a program. */
#ifndef NIMBA_TESTS_ABI_REDIRECT_H
#define NIMBA_TESTS_ABI_REDIRECT_H

#include "host.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdarg.h>

/* Paths that begin with `redirected_from` begin with `redirected_to` instead, unless it is null. */
static const char* redirected_from = "";
static const char* redirected_to;

/* Is told every path before it is opened, unless it is null. */
static void (*path_watcher)(const char* path);

static const char* redirected(const char* path)
{
    static char other[4096];
    const size_t length = strlen(redirected_from);
    if (path_watcher != NULL) {
        path_watcher(path);
    }
    if (redirected_to == NULL || strncmp(path, redirected_from, length) != 0) {
        return path;
    }
    snprintf(other, sizeof other, "%s%s", redirected_to, path + length);
    return other;
}

/* They stand before the C library's functions, under names of their own, as its headers define some
 * of them where they check sizes. */
DIR* opendir_of_this_program(const char* path) __asm__("opendir");
int open_of_this_program(const char* path, int flags, ...) __asm__("open");
int openat_of_this_program(int directory, const char* path, int flags, ...) __asm__("openat");

DIR* opendir_of_this_program(const char* path)
{
    DIR* (*next)(const char*);
    find_function(RTLD_NEXT, "opendir", &next);
    return next(redirected(path));
}

int open_of_this_program(const char* path, int flags, ...)
{
    int (*next)(const char*, int, ...);
    find_function(RTLD_NEXT, "open", &next);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return next(redirected(path), flags, mode);
}

int openat_of_this_program(int directory, const char* path, int flags, ...)
{
    int (*next)(int, const char*, int, ...);
    find_function(RTLD_NEXT, "openat", &next);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return next(directory, redirected(path), flags, mode);
}

#endif
