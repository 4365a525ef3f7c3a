/* SPDX-License-Identifier: MIT */
/* A host of a driver whose every text is a path. None of them is opened: the library opens files of
 * the node tree, and /proc files that are named by decimal numbers. */
#define _GNU_SOURCE
#include "record.h"
#include "redirect.h"

#include <sys/stat.h>

#define ELSEWHERE "/../../../../../../etc/passwd"

static const char* directory_of_test;
static int watched_paths;

/* Whether `path` is `before`, a decimal number and `behind`. */
static int has_number_between(const char* path, const char* before, const char* behind)
{
    const size_t length = strlen(before);
    if (strncmp(path, before, length) != 0) {
        return 0;
    }
    const char* rest = path + length + strspn(path + length, "-0123456789");
    return rest != path + length && strcmp(rest, behind) == 0;
}

static int begins_with(const char* path, const char* directory)
{
    return strncmp(path, directory, strlen(directory)) == 0;
}

static void check_path(const char* path)
{
    const int is_inside = path[0] != '/' || begins_with(path, directory_of_test) ||
                          begins_with(path, redirected_from);
    const int is_process_file = has_number_between(path, "/proc/", "/cmdline") ||
                                has_number_between(path, "/proc/gpuinfo_", "");
    if (strstr(path, "..") != NULL || strstr(path, "passwd") != NULL ||
        (!is_inside && !is_process_file)) {
        fprintf(stderr, "opened: %s\n", path);
        ++failed_checks;
    }
    ++watched_paths;
}

FILE* fopen_of_this_program(const char* path, const char* mode) __asm__("fopen");

FILE* fopen_of_this_program(const char* path, const char* mode)
{
    FILE* (*next)(const char*, const char*);
    find_function(RTLD_NEXT, "fopen", &next);
    return next(redirected(path), mode);
}

static void make_directory(const char* name)
{
    char path[4096];
    snprintf(path, sizeof path, "%s/%s", directory_of_test, name);
    CHECK(mkdir(path, 0755) == 0);
}

static void write_node(const char* name, const char* text)
{
    char path[4096];
    snprintf(path, sizeof path, "%s/%s", directory_of_test, name);
    FILE* file = fopen(path, "w");
    CHECK(file != NULL && fputs(text, file) >= 0 && fclose(file) == 0);
}

/* One directory is that of the page tables, of the adapter in debugfs, and of its nodes. */
static void show_driver(void)
{
    static const char* const nodes[] = {
        "temp1_input", "eclk",       "fps_count", "rxa_blt_scn_cnt",     "segment_info",
        "power_mode",  "dvfs_level", "dvfs_mode", "dvfs_control_params", "current_link_width"};
    for (size_t node = 0; node < sizeof nodes / sizeof *nodes; ++node) {
        write_node(nodes[node], "1" ELSEWHERE "\n");
    }
    make_directory("allocations");
    make_directory("allocations/1f");
    write_node("allocations/1f/info",
               "handle=1f" ELSEWHERE "\ndevice=2f" ELSEWHERE "\nsegmentid=1" ELSEWHERE "\n");
    write_node("allocations/1f/vm_info",
               "=====vm node info=====\ndevice_pid = " ELSEWHERE "\ndevice_pname = " ELSEWHERE
               "\ngpu_va = " ELSEWHERE "\nsize = " ELSEWHERE "\n");
    make_directory("devices");
    make_directory("devices/2f");
    write_node("devices/2f/info", "pid = 1" ELSEWHERE "\nhandle = 2f" ELSEWHERE "\n");
    write_node("devices/2f/2f", "pid = 1" ELSEWHERE "\nhandle = 2f" ELSEWHERE "\n");
    write_node("devices/2f/vm_info", "0:2: entry addr:" ELSEWHERE ", buffer:" ELSEWHERE
                                     "\n"
                                     "0:9 Snoop:1 Segment:2 LargePage:1 Addr:" ELSEWHERE "\n");
    make_directory("heaps");
    make_directory("heaps/heap_invalid");
    write_node("heaps/heap_invalid/info", "Total segment size:  1" ELSEWHERE "\n");
}

static void select_adapter(void* library, unsigned char* record)
{
    int32_t (*select)(void*);
    find_function(library, "gpuinfo_select_new_chip", &select);
    const int directory = open(directory_of_test, O_RDONLY);
    put_u32(record, 152, (uint32_t)directory);
    put_u32(record, 156, (uint32_t)directory);
    put_u32(record, 112, 7);
    CHECK(select(record) == 0);
    strcpy(symbol(library, "sys_bus_pci_devices_BUSID_path"), directory_of_test);
    strcpy(symbol(library, "sys_kernel_debug_ID_dri_ADAPTER_path"), directory_of_test);
}

/* What `function` fills needs no more than 4096 bytes, and a word behind a second pointer. */
static void call(void* library, const char* function, void* second)
{
    static _Alignas(8) unsigned char record[4096];
    int32_t (*query)(void*, void*);
    find_function(library, function, &query);
    memset(record, 0, sizeof record);
    query(record, second);
}

static void ask_everything(void* library, void* adapter)
{
    uint32_t word = 0;
    int32_t (*page_tables)(void*, uint32_t*);
    int32_t (*temperature)(uint32_t*);
    int32_t (*info_value)(int32_t);
    find_function(library, "get_pagetable_data", &page_tables);
    find_function(library, "gpuinfo_get_temparature_value_int", &temperature);
    find_function(library, "gpuinfo_get_jwinfoFD_value_int", &info_value);
    CHECK(page_tables(NULL, &word) == 0);
    CHECK(word == 2);
    CHECK(temperature(&word) == 1);
    CHECK(info_value(13) == 1);
    call(library, "get_allocation_raw_list", adapter);
    call(library, "get_device_allocation_summary", NULL);
    call(library, "get_device_pid_maps", NULL);
    call(library, "get_memleak_info", NULL);
    call(library, "gpuinfo_get_segment_info", NULL);
    call(library, "gpuinfo_get_kmd_segment_info", NULL);
    call(library, "get_fps_info", NULL);
    call(library, "get_data_from_dvfs_register", &word);
    call(library, "get_dvfs_info", NULL);
    call(library, "get_adapter_summary", adapter);
    call(library, "get_adapter_summary_ext2", adapter);
}

int main(int argc, char** argv)
{
    if (argc != 3 || strlen(argv[2]) >= 50) {
        fputs("usage: path_host LIBRARY DIRECTORY-OF-A-SHORT-PATH\n", stderr);
        return 2;
    }
    void* library = load_library(argv[1]);
    directory_of_test = argv[2];
    redirected_from = "/sys/kernel/debug/dri/0/qv";
    redirected_to = argv[2];
    static _Alignas(8) unsigned char adapter[276];
    int32_t (*set_callback)(void*);
    find_function(library, "set_print_callback", &set_callback);
    set_callback(NULL);
    show_driver();
    select_adapter(library, adapter);
    path_watcher = check_path;
    ask_everything(library, adapter);
    path_watcher = NULL;
    CHECK(watched_paths > 30);
    return failed_checks == 0 ? 0 : 1;
}
