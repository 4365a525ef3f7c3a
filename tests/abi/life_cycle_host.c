/* SPDX-License-Identifier: MIT */
/* Loads the library twice, calls it and unloads it. The whole standard output is compared. */
#define _GNU_SOURCE
#include "host.h"

#include <nimba_mgmt_interface.h>

static int print_quoted(const char* text, ...)
{
    return printf("callback: %s", text);
}

static void use_library(const char* path)
{
    void* library = load_library(path);
    int32_t (*set_callback)(nimba_print_callback);
    int32_t (*print)(const char*, ...);
    int32_t (*version)(void);
    int32_t (*handshake)(interface_version_info*);
    int32_t (*selfcheck)(uint32_t*);
    int32_t (*finish)(int32_t);
    find_function(library, "set_print_callback", &set_callback);
    find_function(library, "lib_print_func", &print);
    find_function(library, "get_interface_version", &version);
    find_function(library, "get_interface_version_ext1", &handshake);
    find_function(library, "selfcheck_current_tool_status", &selfcheck);
    find_function(library, "gfx_global_exit", &finish);

    printf("host: interface version %d\n", (int)version());
    print("message %d\n", 1);
    set_callback(print_quoted);
    interface_version_info info = {0, 22, 0};
    handshake(&info);
    printf("host: handshake %u\n", (unsigned)info.version_match_result);
    uint32_t status = 1;
    selfcheck(&status);
    printf("host: status %u\n", (unsigned)status);
    finish(0);
    set_callback(NULL);
    print("message %d\n", 2);
    dlclose(library);
    puts(dlopen(path, RTLD_NOW | RTLD_NOLOAD) == NULL ? "host: unloaded" : "host: still loaded");
}

int main(int argc, char** argv)
{
    if (argc != 2) {
        fputs("usage: life_cycle_host LIBRARY\n", stderr);
        return 2;
    }
    use_library(argv[1]);
    use_library(argv[1]);
    puts("host: last line");
    return 0;
}
