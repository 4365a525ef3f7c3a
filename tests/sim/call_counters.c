/* SPDX-License-Identifier: MIT */
/* call_counters FILE DEVICE [CALL...]: loads the library and opens the DRM device, then prints
 * which entry points for counters there are, or makes the calls and prints their results and
 * records. A CALL is the name of an entry point; behind it may be :null     to give no device block
 *   :other    to give another device block than the other calls
 *   :record   to give no record
 *   :cleared  to give a record whose first word is 0 instead of 3
 *   :moving   to repeat the call until the first flip was counted, for 20 seconds at most
 */
#define _GNU_SOURCE /* strchrnul */
#include <dlfcn.h>
#include <fcntl.h>
#include <inttypes.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

enum { kWords = 13, kMostTries = 20000, kMicrosecondsBetweenTries = 1000 };

typedef int call_with_block(int descriptor, void* block, void* record);
typedef int call_without_block(int descriptor, void* record);

struct flip_sample {
    int64_t time;
    int64_t flips;
};

static const char* const names[] = {
    "gfx_flip_count",         "gfx_init_hwinfo",    "gfx_deinit_hwinfo",
    "gfx_get_hwinfo",         "gfx_get_hwinfo_ext", "gfx_get_usage_info",
    "gfx_get_usage_info_ext", "qv_init_hwinfo",     "qv_deinit_hwinfo",
    "qv_get_hwinfo",          "qvGetHwqInfo"};

struct request {
    char name[32];
    const char* how; /* what is behind the name, with its colon */
    void* symbol;
    int descriptor;
};

static bool is(const struct request* request, const char* how)
{
    return strcmp(request->how, how) == 0;
}

static int call(const struct request* request, void* record)
{
    static char blocks[2];
    if (is(request, ":record")) {
        record = NULL;
    }
    if (strcmp(request->name, "qvGetHwqInfo") == 0) {
        call_without_block* function = NULL;
        *(void**)&function = request->symbol;
        return function(request->descriptor, record);
    }
    call_with_block* function = NULL;
    *(void**)&function = request->symbol;
    void* block = is(request, ":null") ? NULL : &blocks[is(request, ":other")];
    return function(request->descriptor, block, record);
}

static void count_flips(const struct request* request)
{
    struct flip_sample sample = {-1, -1};
    int result = call(request, &sample);
    for (int tries = 0; is(request, ":moving") && sample.flips == 0 && tries < kMostTries;
         ++tries) {
        usleep(kMicrosecondsBetweenTries);
        result = call(request, &sample);
    }
    printf("%s%s: %d, %" PRId64 " %" PRId64 "\n", request->name, request->how, result, sample.time,
           sample.flips);
}

static void get_record(const struct request* request)
{
    uint32_t record[kWords] = {is(request, ":cleared") ? 0 : 3};
    printf("%s%s: %d,", request->name, request->how, call(request, record));
    for (int word = 0; word < kWords; ++word) {
        printf(" %" PRIu32, record[word]);
    }
    puts("");
}

static void make_call(void* library, int descriptor, const char* text)
{
    const char* how = strchrnul(text, ':');
    struct request request = {.how = how, .descriptor = descriptor};
    snprintf(request.name, sizeof(request.name), "%.*s", (int)(how - text), text);
    request.symbol = dlsym(library, request.name);
    if (request.symbol == NULL) {
        printf("%s: not there\n", request.name);
    } else if (strcmp(request.name, "gfx_flip_count") == 0) {
        count_flips(&request);
    } else {
        get_record(&request);
    }
}

int main(int argument_count, char** arguments)
{
    void* library = argument_count < 3 ? NULL : dlopen(arguments[1], RTLD_LAZY | RTLD_GLOBAL);
    if (library == NULL) {
        return 2;
    }
    const int descriptor = open(arguments[2], O_RDWR | O_CLOEXEC);
    for (int index = 3; index < argument_count; ++index) {
        make_call(library, descriptor, arguments[index]);
    }
    for (size_t index = 0; argument_count == 3 && index < sizeof(names) / sizeof(*names); ++index) {
        if (dlsym(library, names[index]) != NULL) {
            puts(names[index]);
        }
    }
    return 0;
}
