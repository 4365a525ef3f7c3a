/* SPDX-License-Identifier: MIT */
/* A host that knows the records of the allocation queries as bytes and offsets alone. */
#define _GNU_SOURCE
#include "host.h"
#include "record.h"

#include <unistd.h>

#include <sys/stat.h>

enum { kUntouched = 0xEE, kGuard = 64, kRecord = 92 };

static void make_directory(const char* parent, const char* name)
{
    char path[4096];
    snprintf(path, sizeof path, "%s/%s", parent, name);
    CHECK(mkdir(path, 0755) == 0);
}

/* Makes the node `name` with `text` in the directory. */
static void write_node(const char* directory, const char* name, const char* text)
{
    char path[4096];
    snprintf(path, sizeof path, "%s/%s", directory, name);
    FILE* file = fopen(path, "w");
    CHECK(file != NULL && fputs(text, file) >= 0 && fclose(file) == 0);
}

/* Two allocations of device 0x1f, alike but for their handles and segments, and this process. */
static void fill_debug_directory(const char* directory)
{
    static const char kFields[] =
        "device=1f\nwidth=3\nheight=4\npitch=5\nbit_cnt=6\nsecured=7\nsize=1572864\ntile=9\n"
        "cpu_visible=10\ncache_type=11\npool_type=12\nat_type=13\nhw_format=15\n"
        "compress_format=16\nbl_slot_index=17\ngpu_virt_addr=18\nimported=19\nfb_offset=20\n"
        "share=21\n";
    char text[1024];
    make_directory(directory, "allocations");
    make_directory(directory, "allocations/1");
    snprintf(text, sizeof text, "%shandle=7fffff01\nsegmentid=2\n", kFields);
    write_node(directory, "allocations/1/info", text);
    make_directory(directory, "allocations/2");
    snprintf(text, sizeof text, "%shandle=7fffff02\nsegmentid=4\n", kFields);
    write_node(directory, "allocations/2/info", text);
    make_directory(directory, "devices");
    make_directory(directory, "devices/1");
    snprintf(text, sizeof text, "pid = %d\nhandle = 1f\n", (int)getpid());
    write_node(directory, "devices/1/info", text);
    snprintf(text, sizeof text, "pid = %d\nhandle = 2f\n", (int)getpid());
    write_node(directory, "devices/1/1", text);
}

/* The fields of an allocation but its handle, device, segment and counts. */
static void check_fields(const unsigned char* record)
{
    CHECK(i32_at(record, 8) == 3);
    CHECK(i32_at(record, 12) == 4);
    CHECK(i32_at(record, 16) == 5);
    CHECK(i32_at(record, 20) == 6);
    CHECK(i32_at(record, 24) == 7);
    CHECK(i32_at(record, 28) == 1572864);
    CHECK(i32_at(record, 32) == 9);
    CHECK(i32_at(record, 36) == 10);
    CHECK(i32_at(record, 40) == 11);
    CHECK(i32_at(record, 44) == 12);
    CHECK(i32_at(record, 48) == 13);
    CHECK(i32_at(record, 56) == 15);
    CHECK(i32_at(record, 60) == 16);
    CHECK(i32_at(record, 64) == 17);
    CHECK(i32_at(record, 68) == 18);
    CHECK(i32_at(record, 72) == 19);
    CHECK(i32_at(record, 76) == 20);
    CHECK(i32_at(record, 80) == 21);
}

static int is_handle_and_segment(const unsigned char* record, int32_t handle, int32_t segment)
{
    return i32_at(record, 0) == handle && i32_at(record, 52) == segment;
}

/* Whether the list holds both allocations; the order of those of one device is not defined. */
static int holds_both(const unsigned char* records)
{
    const unsigned char* other = records + kRecord;
    return (is_handle_and_segment(records, 0x7FFFFF01, 2) &&
            is_handle_and_segment(other, 0x7FFFFF02, 4)) ||
           (is_handle_and_segment(records, 0x7FFFFF02, 4) &&
            is_handle_and_segment(other, 0x7FFFFF01, 2));
}

/* Before the first page 0 there is no list. */
static void check_page_of_no_list(int32_t (*raw_list)(void*, const void*), const void* adapter)
{
    static _Alignas(8) unsigned char list[1856];
    memset(list, kUntouched, sizeof list);
    put_u32(list, 0, 1);
    CHECK(raw_list(list, adapter) == 0);
    CHECK(i32_at(list, 0) == 1);
    CHECK(all_bytes(list, 4, 12, 0));
    CHECK(all_bytes(list, 16, 1840, kUntouched));
}

static void check_raw_list(void* library, const char* function)
{
    static _Alignas(8) unsigned char adapter[276];
    static _Alignas(8) unsigned char list[1856 + kGuard];
    int32_t (*raw_list)(void*, const void*);
    find_function(library, function, &raw_list);

    memset(adapter, kUntouched, sizeof adapter);
    put_u32(adapter, 92, 0); /* IS_VA_driver of slot 1 */
    put_u32(adapter, 272, 1);
    memset(list, kUntouched, sizeof list);
    put_u32(list, 0, 0);
    CHECK(raw_list(list, adapter) == 0);
    CHECK(i32_at(list, 0) == 0);
    CHECK(i32_at(list, 4) == 2);
    CHECK(i32_at(list, 8) == 2);
    CHECK(i32_at(list, 12) == 0);
    CHECK(holds_both(list + 16));
    for (size_t offset = 16; offset < 200; offset += kRecord) {
        check_fields(list + offset);
        CHECK(i32_at(list, offset + 4) == 0x1F);
        CHECK(i32_at(list, offset + 84) == 1);
        CHECK(i32_at(list, offset + 88) == 1);
    }
    CHECK(all_bytes(list, 200, 1656 + kGuard, kUntouched));

    put_u32(adapter, 92, 1);
    CHECK(raw_list(list, adapter) == 0);
    CHECK(i32_at(list, 20) == 1); /* "1f" in base 10 */
    CHECK(i32_at(list, 112) == 1);
}

static void check_summaries(void* library)
{
    static _Alignas(8) unsigned char summary[1200 + kGuard];
    static _Alignas(8) unsigned char wide[2400 + kGuard];
    int32_t (*summarise)(void*);
    int32_t (*summarise_wide)(void*);
    find_function(library, "get_device_allocation_summary", &summarise);
    find_function(library, "get_device_allocation_summary_ext1", &summarise_wide);

    memset(summary, kUntouched, sizeof summary);
    CHECK(summarise(summary) == 0);
    CHECK(i32_at(summary, 0) == 0x1F);
    CHECK(all_bytes(summary, 4, 8, 0));
    CHECK(u32_at(summary, 12) == 1572864);
    CHECK(u32_at(summary, 16) == 0);
    CHECK(u32_at(summary, 20) == 1572864);
    CHECK(all_bytes(summary, 24, 1176, 0));
    CHECK(all_bytes(summary, 1200, kGuard, kUntouched));

    memset(wide, kUntouched, sizeof wide);
    CHECK(summarise_wide(wide) == 0);
    CHECK(i32_at(wide, 0) == 0x1F);
    CHECK(all_bytes(wide, 4, 20, 0));
    CHECK(u32_at(wide, 24) == 1572864);
    CHECK(all_bytes(wide, 28, 12, 0));
    CHECK(u32_at(wide, 40) == 1572864);
    CHECK(all_bytes(wide, 44, 2356, 0));
    CHECK(all_bytes(wide, 2400, kGuard, kUntouched));
}

static void check_internal_summaries(void* library)
{
    static _Alignas(8) unsigned char summary[1200 + kGuard];
    static _Alignas(8) unsigned char wide[2400 + kGuard];
    int32_t (*summarise)(void*, uint32_t, int32_t);
    int32_t (*summarise_wide)(void*, uint32_t, int32_t);
    find_function(library, "get_device_allocation_summary_internal", &summarise);
    find_function(library, "get_device_allocation_summary_internal_ext1", &summarise_wide);

    memset(summary, kUntouched, sizeof summary);
    CHECK(summarise(summary, 0, 1) == 0);
    CHECK(i32_at(summary, 0) == 1);
    CHECK(u32_at(summary, 12) == 1572864);
    CHECK(all_bytes(summary, 1200, kGuard, kUntouched));

    memset(wide, kUntouched, sizeof wide);
    CHECK(summarise_wide(wide, 0, 1) == 0);
    CHECK(i32_at(wide, 0) == 1);
    CHECK(u32_at(wide, 24) == 1572864);
    CHECK(all_bytes(wide, 2400, kGuard, kUntouched));
}

static void check_segments(void* library)
{
    static _Alignas(8) unsigned char segments[20 + kGuard];
    int32_t (*segment_info)(void*, uint32_t, int32_t);
    find_function(library, "get_segment_info_through_allocation", &segment_info);
    memset(segments, kUntouched, sizeof segments);
    CHECK(segment_info(segments, 0, 0) == 0);
    CHECK(all_bytes(segments, 0, 8, 0));
    CHECK(i32_at(segments, 8) == 1); /* 1.5 MiB */
    CHECK(i32_at(segments, 12) == 0);
    CHECK(i32_at(segments, 16) == 1);
    CHECK(all_bytes(segments, 20, kGuard, kUntouched));
}

static int ends_with(const char* text, const char* end)
{
    const size_t length = strlen(text);
    return length >= strlen(end) && strcmp(text + length - strlen(end), end) == 0;
}

/* Checks the map of this process's one device context, which has this handle, and its fence. */
static void check_map_of_one(const unsigned char* map, int32_t handle)
{
    CHECK(i32_at(map, 0) == getpid());
    CHECK(i32_at(map, 4) == handle);
    CHECK(map[71] == 0);
    CHECK(ends_with((const char*)map + 8, "allocation_layout_host"));
    CHECK(all_bytes(map, 72, 3528, 0));
    CHECK(all_bytes(map, 3600, kGuard, kUntouched));
}

static void check_process_maps(void* library)
{
    static _Alignas(8) unsigned char map[3600 + kGuard];
    int32_t (*map_processes)(void*);
    int32_t (*map_processes_as_told)(void*, uint32_t, int32_t);
    find_function(library, "get_device_pid_maps", &map_processes);
    find_function(library, "get_device_pid_maps_internal", &map_processes_as_told);

    memset(map, kUntouched, sizeof map);
    CHECK(map_processes(map) == 0);
    check_map_of_one(map, 0x2F);

    memset(map, kUntouched, sizeof map);
    CHECK(map_processes_as_told(map, 0, 1) == 0);
    check_map_of_one(map, 0x1F);
}

/* Checks the report of both allocations, found in so many snapshots, and its fence. */
static void check_report_of_both(const unsigned char* report, int32_t hits)
{
    check_fields(report);
    CHECK(i32_at(report, 4) == 0x1F);
    CHECK(is_handle_and_segment(report, 0x7FFFFF01, 2) ||
          is_handle_and_segment(report, 0x7FFFFF02, 4));
    CHECK(i32_at(report, 84) == hits);
    CHECK(i32_at(report, 88) == 2);
    CHECK(all_bytes(report, kRecord, 1288, 0));
    CHECK(all_bytes(report, 1380, kGuard, kUntouched));
}

static void check_leak_reports(void* library)
{
    static _Alignas(8) unsigned char report[1380 + kGuard];
    int32_t (*find_leaks)(void*);
    void (*find_leaks_as_told)(void*, uint32_t, int32_t);
    find_function(library, "get_memleak_info", &find_leaks);
    find_function(library, "get_memleak_information", &find_leaks_as_told);

    for (int32_t hits = 1; hits <= 2; ++hits) {
        memset(report, kUntouched, sizeof report);
        CHECK(find_leaks(report) == 0);
        check_report_of_both(report, hits);
    }
    memset(report, kUntouched, sizeof report);
    find_leaks_as_told(report, 0, 1);
    check_report_of_both(report, 3); /* the device is the one that was read first */
}

int main(int argc, char** argv)
{
    if (argc != 3) {
        fputs("usage: allocation_layout_host LIBRARY DIRECTORY\n", stderr);
        return 2;
    }
    void* library = load_library(argv[1]);
    if (strlen(argv[2]) >= 50) {
        fputs("allocation_layout_host: the directory has a long path\n", stderr);
        return 2;
    }
    strcpy(symbol(library, "sys_kernel_debug_ID_dri_ADAPTER_path"), argv[2]);
    fill_debug_directory(argv[2]);

    static _Alignas(8) unsigned char adapter[276];
    int32_t (*raw_list)(void*, const void*);
    find_function(library, "get_allocation_raw_list", &raw_list);
    check_page_of_no_list(raw_list, adapter);
    check_raw_list(library, "get_allocation_raw_list");
    check_raw_list(library, "get_allocation_raw_list_internal");
    check_summaries(library);
    check_internal_summaries(library);
    check_segments(library);
    check_process_maps(library);
    check_leak_reports(library);
    return failed_checks == 0 ? 0 : 1;
}
