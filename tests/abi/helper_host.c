/* SPDX-License-Identifier: MIT */
/* A host that declares messages, the version and the text helpers itself. */
#include "host.h"
#include "record.h"

enum { kUntouched = 0xEE };

static char last_message[1024];

static int keep_message(const char* text, ...)
{
    snprintf(last_message, sizeof last_message, "%s", text);
    return 7;
}

static void check_messages(void* library)
{
    int32_t (*print)(const char*, ...);
    int32_t (*set_callback)(int (*)(const char*, ...));
    find_function(library, "lib_print_func", &print);
    find_function(library, "set_print_callback", &set_callback);
    int (**callback)(const char*, ...) = symbol(library, "pServerPrintCallback");
    CHECK(*callback == printf);
    CHECK(set_callback(keep_message) == 0);
    CHECK(*callback == keep_message);
    CHECK(strcmp(last_message, "set_print_callback.\n") == 0);
    CHECK(print("%s %d %.1f", "text", -5, 2.5) == 0);
    CHECK(strcmp(last_message, "text -5 2.5") == 0);
    *callback = NULL;
    CHECK(print("silent") == 0);
    CHECK(strcmp(last_message, "text -5 2.5") == 0);
}

static void check_version(void* library)
{
    int32_t (*version)(void);
    int32_t (*driver_info)(void);
    int32_t (*selfcheck)(uint32_t*);
    find_function(library, "get_interface_version", &version);
    find_function(library, "get_driver_info", &driver_info);
    find_function(library, "selfcheck_current_tool_status", &selfcheck);
    CHECK(version() == 22);
    CHECK(driver_info() == 0);
    uint32_t status[2] = {42, 43};
    CHECK(selfcheck(status) == 0);
    CHECK(status[0] == 0 && status[1] == 43);
}

static void check_text_helpers(void* library)
{
    int32_t (*find)(const char*, int32_t, const char*);
    uint32_t (*copy)(char*, const char*, uint64_t);
    find_function(library, "find_str_in_buffer", &find);
    find_function(library, "safe_str_copy_till_return", &copy);
    CHECK(find("key : 12", 8, "key : ") == 6);
    CHECK(find("key : 12", 8, "other") == -1);
    unsigned char copied[16];
    memset(copied, kUntouched, sizeof copied);
    CHECK(copy((char*)copied, "one line\nanother", 8) == 8);
    CHECK(text_at(copied, 0, "one lin"));
    CHECK(all_bytes(copied, 8, 8, kUntouched));
    CHECK(copy((char*)copied, "one\ntwo", 0x100000008) == 4);
    CHECK(text_at(copied, 0, "one"));
}

int main(int argc, char** argv)
{
    if (argc != 2) {
        fputs("usage: helper_host LIBRARY\n", stderr);
        return 2;
    }
    void* library = load_library(argv[1]);
    check_messages(library);
    check_version(library);
    check_text_helpers(library);
    return failed_checks == 0 ? 0 : 1;
}
