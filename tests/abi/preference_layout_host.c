/* SPDX-License-Identifier: MIT */
/* A host that knows the preference record as bytes and offsets alone. */
#define _GNU_SOURCE
#include "host.h"
#include "record.h"

#include <unistd.h>

#include <sys/stat.h>

enum { kRecord = 1116, kUntouched = 0xEE };

static const char kFile[] =
    "; wmt_gfx_util.ini\n\n"
    "[game]\n"
    "FullPath = /opt/game\n"
    "PreferGpuName = QV M-30\n"
    "PreferGpuBusID = 4660:86:120.154\n"
    "GpuPrefer = 16909060\n\n\n"
    "[app]\n"
    "FullPath = C:\\app\n"
    "PreferGpuName = \n"
    "PreferGpuBusID = 0000:00:00.0\n"
    "GpuPrefer = -2\n\n\n";

static void fill_game(unsigned char* record)
{
    static const unsigned char location[5] = {0x34, 0x12, 86, 120, 154};
    memset(record, 0, kRecord);
    memcpy(record, "game", 4);
    memcpy(record + 64, "/opt/game", 9);
    put_u32(record, 576, 0x01020304);
    memcpy(record + 580, "QV M-30", 7);
    memcpy(record + 596, location, sizeof location);
    memset(record + 601, 0x5A, 515);
}

static void fill_app(unsigned char* record)
{
    memset(record, 0, kRecord);
    memcpy(record, "app", 3);
    memcpy(record + 64, "C:\\app", 6);
    put_u32(record, 576, 0xFFFFFFFE);
}

static void check_file(const char* path)
{
    static char text[4096];
    FILE* file = fopen(path, "r");
    CHECK(file != NULL);
    if (file != NULL) {
        CHECK(fread(text, 1, sizeof text - 1, file) == sizeof kFile - 1);
        CHECK(strcmp(text, kFile) == 0);
        fclose(file);
    }
}

/* The entry points, or their workers. */
struct functions {
    const char* set;
    const char* get;
    const char* remove;
};

static void check_records(void* library, const struct functions* names, const char* path)
{
    int32_t (*set)(const void*);
    int32_t (*get)(void*, int32_t*);
    int32_t (*remove_record)(const void*);
    find_function(library, names->set, &set);
    find_function(library, names->get, &get);
    find_function(library, names->remove, &remove_record);
    static _Alignas(8) unsigned char given[2 * kRecord];
    static _Alignas(8) unsigned char got[3 * kRecord];
    fill_game(given);
    fill_app(given + kRecord);
    CHECK(set(given) == 0);
    CHECK(set(given + kRecord) == 0);
    CHECK(strcmp(symbol(library, "UTIL_CONFIG_PATH"), path) == 0);
    check_file(path);

    memset(got, kUntouched, sizeof got);
    int32_t count = 3;
    CHECK(get(got, &count) == 0);
    CHECK(count == 2);
    CHECK(memcmp(got, given, sizeof given) == 0);
    CHECK(all_bytes(got, 2 * kRecord, kRecord, kUntouched));

    CHECK(remove_record(given) == 0);
    memset(got, kUntouched, sizeof got);
    count = 3;
    CHECK(get(got, &count) == 0);
    CHECK(count == 1);
    CHECK(memcmp(got, given + kRecord, kRecord) == 0);
}

/* Each of both empties the list, which is kept as a first and a last address. */
static void check_emptying(void* library, const char* name)
{
    static _Alignas(8) unsigned char record[kRecord];
    int32_t (*set)(const void*);
    int32_t (*empty)(void);
    find_function(library, "set_gpu_preference", &set);
    find_function(library, name, &empty);
    const unsigned char* const* list = symbol(library, "interface_config_list");
    fill_game(record);
    CHECK(empty() == 0);
    CHECK(list[0] == list[1]);
    CHECK(set(record) == 0);
    CHECK(list[1] == list[0] + kRecord && memcmp(list[0], record, kRecord) == 0);
    CHECK(empty() == 0);
    CHECK(list[0] == list[1]);
}

static void check_library(void* library, const char* path)
{
    static const struct functions entries = {"set_gpu_preference", "get_gpu_preference",
                                             "remove_gpu_preference"};
    static const struct functions workers = {"SetGPUPreference_config", "GetGPUPreference_config",
                                             "RemoveGPUPreference_config"};
    check_records(library, &entries, path);
    check_emptying(library, "initGPUPreference_config");
    check_emptying(library, "uninitGPUPreference_config");
    check_records(library, &workers, path);
}

int main(int argc, char** argv)
{
    if (argc != 3) {
        fputs("usage: preference_layout_host LIBRARY EMPTY-DIRECTORY\n", stderr);
        return 2;
    }
    void* library = load_library(argv[1]);
    const char* home = argv[2];
    char local[512];
    char share[512];
    char path[512];
    snprintf(local, sizeof local, "%s/.local", home);
    snprintf(share, sizeof share, "%s/.local/share", home);
    snprintf(path, sizeof path, "%s/.local/share/wmt_gfx_util.ini", home);
    if (mkdir(local, 0700) != 0 || mkdir(share, 0700) != 0) {
        perror(share);
        return 2;
    }
    CHECK(setenv("HOME", home, 1) == 0);

    int32_t (*set_callback)(void*);
    find_function(library, "set_print_callback", &set_callback);
    set_callback(NULL);
    check_library(library, path);

    /* Nothing but the file was left there. */
    CHECK(unlink(path) == 0 && rmdir(share) == 0 && rmdir(local) == 0);
    return failed_checks == 0 ? 0 : 1;
}
