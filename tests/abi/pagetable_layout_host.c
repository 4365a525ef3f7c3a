/* SPDX-License-Identifier: MIT */
/* A host that knows the records of the page-table queries as bytes and offsets alone. */
#define _GNU_SOURCE
#include "host.h"
#include "record.h"
#include "redirect.h"

#include <sys/stat.h>

enum { kUntouched = 0xEE, kGuard = 64, kPageTable = 48, kAllocation = 56, kPageTables = 3 };

static const char* root_of_test;

static void make_directory(const char* name)
{
    char path[4096];
    snprintf(path, sizeof path, "%s/%s", root_of_test, name);
    CHECK(mkdir(path, 0755) == 0);
}

static void write_node(const char* name, const char* text)
{
    char path[4096];
    snprintf(path, sizeof path, "%s/%s", root_of_test, name);
    FILE* file = fopen(path, "w");
    CHECK(file != NULL && fputs(text, file) >= 0 && fclose(file) == 0);
}

/* One device of a process that is no process, with three entries, and one allocation. */
static void show_driver(void)
{
    make_directory("devices");
    make_directory("devices/1");
    write_node("devices/1/info", "pid = 2147483647\n");
    write_node("devices/1/vm_info",
               "0:2: entry addr:7fffffff, buffer:root\n"
               "0:3: entry addr:10, buffer:other\n"
               "0:1025 Snoop:257 Segment:514 LargePage:771 Addr:12345678\n");
    make_directory("allocations");
    make_directory("allocations/123456789abcdef0");
    write_node("allocations/123456789abcdef0/vm_info",
               "=====vm node info=====\ndevice_pid = 2147483646\ndevice_pname = viewer\n"
               "gpu_va = 23456789abcdef01\nsize = 3456789abcdef012\n");
}

static int is_i64_at(const unsigned char* record, size_t offset, uint32_t low, uint32_t high)
{
    return u32_at(record, offset) == low && u32_at(record, offset + 4) == high;
}

static void check_page_table(const unsigned char* record, uint32_t address, int32_t index)
{
    CHECK(is_i64_at(record, 0, 2147483647, 0));
    CHECK(is_i64_at(record, 8, address, 0));
    CHECK(all_bytes(record, 16, 8, 0));
    CHECK(i32_at(record, 24) == 0);
    CHECK(i32_at(record, 28) == index);
    CHECK(all_bytes(record, 32, 8, 0));
    CHECK(i32_at(record, 40) == 1);
    CHECK(all_bytes(record, 44, 4, 0));
}

static void check_sub_table(const unsigned char* record)
{
    CHECK(is_i64_at(record, 0, 2147483647, 0));
    CHECK(is_i64_at(record, 8, 0x12345678, 0));
    CHECK(u16_at(record, 16) == 257);
    CHECK(u16_at(record, 18) == 514);
    CHECK(u16_at(record, 20) == 771);
    CHECK(u16_at(record, 22) == 0);
    CHECK(i32_at(record, 24) == 0);
    CHECK(i32_at(record, 28) == 1025);
    CHECK(i32_at(record, 32) == 0);
    CHECK(i32_at(record, 36) == 3);
    CHECK(i32_at(record, 40) == -1);
    CHECK(all_bytes(record, 44, 4, 0));
}

static void check_page_tables(void* library)
{
    static _Alignas(8) unsigned char records[kPageTables * kPageTable + kGuard];
    int32_t (*page_tables)(void*, uint32_t*);
    find_function(library, "get_pagetable_data", &page_tables);
    uint32_t count = 42;
    CHECK(page_tables(NULL, &count) == 0);
    CHECK(count == kPageTables);

    memset(records, kUntouched, sizeof records);
    CHECK(page_tables(records, NULL) == 0);
    check_page_table(records, 0x7FFFFFFF, 2);
    check_page_table(records + kPageTable, 0x10, 3);
    check_sub_table(records + (size_t)2 * kPageTable);
    CHECK(all_bytes(records, (size_t)kPageTables * kPageTable, kGuard, kUntouched));
}

static void check_allocations(void* library)
{
    static _Alignas(8) unsigned char record[kAllocation + kGuard];
    int32_t (*allocations)(void*, uint32_t*);
    find_function(library, "get_allocation_data", &allocations);
    uint32_t count = 42;
    CHECK(allocations(NULL, &count) == 0);
    CHECK(count == 1);

    memset(record, kUntouched, sizeof record);
    CHECK(allocations(record, NULL) == 0);
    CHECK(i32_at(record, 0) == 2147483646);
    CHECK(all_bytes(record, 4, 4, 0));
    CHECK(is_i64_at(record, 8, 0x9ABCDEF0, 0x12345678));
    CHECK(is_i64_at(record, 16, 0xBCDEF012, 0x3456789A));
    CHECK(is_i64_at(record, 24, 0xABCDEF01, 0x23456789));
    CHECK(all_bytes(record, 32, 24, 0));
    CHECK(all_bytes(record, kAllocation, kGuard, kUntouched));
}

/* Nothing is kept and no reading has failed when the library has just been loaded. */
static void check_load(void* library)
{
    static _Alignas(8) unsigned char record[kPageTable + kGuard];
    int32_t (*page_tables)(void*, uint32_t*);
    int32_t (*allocations)(void*, uint32_t*);
    find_function(library, "get_pagetable_data", &page_tables);
    find_function(library, "get_allocation_data", &allocations);
    CHECK(i32_at(symbol(library, "Get_Local_Data_Status"), 0) == 0);
    CHECK(all_bytes(symbol(library, "Pagetable_List"), 0, 24, 0));
    CHECK(all_bytes(symbol(library, "Allocation_List"), 0, 24, 0));
    uint32_t count = 42;
    CHECK(allocations(NULL, &count) == 0);
    CHECK(count == 0);
    memset(record, kUntouched, sizeof record);
    CHECK(page_tables(record, &count) == 0);
    CHECK(all_bytes(record, 0, sizeof record, kUntouched));
}

static void check_failure(void* library)
{
    int32_t (*page_tables)(void*, uint32_t*);
    find_function(library, "get_pagetable_data", &page_tables);
    redirected_to = "/dev/null";
    uint32_t count = 42;
    CHECK(page_tables(NULL, &count) == 0);
    CHECK(count == 42);
    CHECK(i32_at(symbol(library, "Get_Local_Data_Status"), 0) == -1);
}

int main(int argc, char** argv)
{
    if (argc != 3) {
        fputs("usage: pagetable_layout_host LIBRARY DIRECTORY\n", stderr);
        return 2;
    }
    void* library = load_library(argv[1]);
    root_of_test = argv[2];
    redirected_from = "/sys/kernel/debug/dri/0/qv";
    redirected_to = argv[2];
    show_driver();
    check_load(library);
    check_page_tables(library);
    check_allocations(library);
    check_failure(library);
    return failed_checks == 0 ? 0 : 1;
}
