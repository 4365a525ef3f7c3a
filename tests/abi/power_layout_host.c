/* SPDX-License-Identifier: MIT */
/* A host that knows the records of sensors, settings, segments and counters as bytes and offsets
 * alone. */
#include "host.h"
#include "record.h"

#include <fcntl.h>

#include <sys/stat.h>

enum { kUntouched = 0xEE, kGuard = 64, kState = 108, kClocks = 12, kSegments = 128, kRates = 16 };

static const char* directory_of_test;

static void write_node(const char* name, const char* text)
{
    char path[4096];
    snprintf(path, sizeof path, "%s/%s", directory_of_test, name);
    FILE* file = fopen(path, "w");
    CHECK(file != NULL && fputs(text, file) >= 0 && fclose(file) == 0);
}

static int node_is(const char* name, const char* text)
{
    char path[4096];
    char held[64] = "";
    snprintf(path, sizeof path, "%s/%s", directory_of_test, name);
    FILE* file = fopen(path, "r");
    if (file == NULL) {
        return 0;
    }
    held[fread(held, 1, sizeof held - 1, file)] = '\0';
    fclose(file);
    return strcmp(held, text) == 0;
}

/* Makes slot 2 of the record current; one directory is its info and its hwmon directory. */
static void select_adapter(void* library, unsigned char* record)
{
    int32_t (*select)(void*);
    find_function(library, "gpuinfo_select_new_chip", &select);
    const int directory = open(directory_of_test, O_RDONLY);
    CHECK(directory >= 0);
    for (size_t slot = 0; slot < 3; ++slot) {
        put_u32(record, 152 + 48 * slot, slot == 2 ? (uint32_t)directory : UINT32_MAX);
        put_u32(record, 156 + 48 * slot, slot == 2 ? (uint32_t)directory : UINT32_MAX);
    }
    put_u32(record, 24, EXPECTED_K1);
    put_u32(record, 272, 2);
    CHECK(select(record) == 0);
    CHECK(*(unsigned char**)symbol(library, "pCurrent_gpu_infos") == record + 224);
}

static void check_load(void* library)
{
    CHECK(i32_at(symbol(library, "dvfs_register_state_data_flushed"), 0) == 1);
    CHECK(i32_at(symbol(library, "use_IOCTL_get_fps"), 0) == 0);
    CHECK(i32_at(symbol(library, "gfxbusy_apiversion"), 0) == 2);
}

static void check_values(void* library)
{
    int32_t (*temperature)(uint32_t*);
    int32_t (*hwmon_value)(int32_t, uint32_t*);
    int32_t (*info_value)(int32_t);
    void (*set_flag)(int32_t, int32_t);
    int32_t (*set_usage)(const char*);
    find_function(library, "gpuinfo_get_temparature_value_int", &temperature);
    find_function(library, "gpuinfo_get_hwmonFD_value_int", &hwmon_value);
    find_function(library, "gpuinfo_get_jwinfoFD_value_int", &info_value);
    find_function(library, "gpuinfo_set_misc_ctl_flag", &set_flag);
    find_function(library, "gpuinfo_set_enable_usage", &set_usage);
    write_node("temp1_input", "45 *C\n");
    write_node("fan1_input", "1200\n");
    write_node("coreclk", "-3\n");
    write_node("misc_ctl_flag", "3\n");
    uint32_t count = 42;
    CHECK(temperature(&count) == 45);
    CHECK(count == 1);
    CHECK(hwmon_value(2, &count) == 1200);
    CHECK(count == 5);
    CHECK(info_value(29) == -3);
    set_flag(4, 1);
    CHECK(node_is("misc_ctl_flag", "6\n"));
    write_node("enable_usage", "");
    CHECK(set_usage("1") == 1);
    CHECK(node_is("enable_usage", "1"));
}

static void show_settings(void)
{
    write_node("power_mode", "power_mode:0x1a2b3c4d\n");
    write_node("pwm_wait_count",
               "pg_3d:0x101\ncg_3d:0x202\npg_vcp:0x303\ncg_vcp:0x404\npg_vpp:0x505\n"
               "cg_vpp:0xfffe\n");
    write_node("dvfs_mode", "dvfs_mode:0x10000001\n");
    write_node("dvfs_control_params",
               "gfx_dvfs_checksize:0x10000002\ngfx_dvfs_h_threshold:0x10000003\n"
               "gfx_dvfs_l_threshold:0x10000004\nvcp0_dvfs_checksize:0x10000005\n"
               "vcp0_dvfs_h_threshold:0x10000006\nvcp0_dvfs_l_threshold:0x10000007\n"
               "vcp1_dvfs_checksize:0x10000008\nvcp1_dvfs_h_threshold:0x10000009\n"
               "vcp1_dvfs_l_threshold:0x1000000a\nvpp_dvfs_checksize:0x1000000b\n"
               "vpp_dvfs_h_threshold:0x1000000c\nvpp_dvfs_l_threshold:0x1000000d\n");
    write_node("dvfs_clk_voltage", "gfx_clock:-800\ngfx_voltage:900\n");
    write_node("eclk", "700\n");
    write_node("vclk", "500\n");
    write_node("mclk", "2400\n");
    write_node("dvfs_level", "dvfs_level:performance\n");
}

static void check_state(const unsigned char* record)
{
    static const uint32_t gating[6] = {0x101, 0x202, 0x303, 0x404, 0x505, 0xfffe};
    CHECK(u32_at(record, 0) == 0x1a2b3c4d);
    for (size_t field = 0; field < 6; ++field) {
        CHECK(u16_at(record, 4 + 2 * field) == gating[field]);
    }
    for (size_t word = 0; word < 13; ++word) {
        CHECK(u32_at(record, 16 + 4 * word) == 0x10000001 + word);
    }
    CHECK(i32_at(record, 68) == -800);
    CHECK(u32_at(record, 72) == 500);
    CHECK(all_bytes(record, 76, 8, kUntouched));
    CHECK(i32_at(record, 84) == 900);
    CHECK(all_bytes(record, 88, 12, kUntouched));
    CHECK(u32_at(record, 100) == 2400);
    CHECK(u32_at(record, 104) == 2);
    CHECK(all_bytes(record, kState, kGuard, kUntouched));
}

static void check_settings(void* library)
{
    static _Alignas(8) unsigned char record[kState + kGuard];
    int32_t (*get)(void*, uint32_t*);
    int32_t (*set)(const void*);
    find_function(library, "get_data_from_dvfs_register", &get);
    find_function(library, "set_data_to_dvfs_register", &set);
    show_settings();
    memset(record, kUntouched, sizeof record);
    uint32_t valid = 42;
    CHECK(get(record, &valid) == 0);
    CHECK(valid == 1);
    check_state(record);

    record[14] = 0xff; /* clock gating of VPP: -1 */
    put_u32(record, 64, 0xabc);
    put_u32(record, 104, 0);
    CHECK(set(record) == 0);
    CHECK(i32_at(symbol(library, "dvfs_register_state_data_flushed"), 0) == 0);
    CHECK(node_is("power_mode", "power_mode:0x1a2b3c4d\n"));
    CHECK(node_is("dvfs_mode", "dvfs_mode:0x10000001\n"));
    CHECK(node_is("dvfs_clk_voltage", "gfx_clock:-800\ngfx_voltage:900\n"));
    CHECK(node_is("dvfs_level", "balance\nel:performance\n"));
    write_node("pwm_wait_count", "");
    write_node("dvfs_control_params", "");
    CHECK(set(record) == 0);
    CHECK(node_is("pwm_wait_count", "1 2 ffffffff\n"));
    CHECK(node_is("dvfs_control_params", "3 2 abc\n"));
}

static void check_workers(void* library)
{
    static _Alignas(8) unsigned char record[kState + kGuard];
    int32_t (*get)(void*);
    int32_t (*set)(const void*);
    find_function(library, "gpuinfo_get_data_from_dvfs_register", &get);
    find_function(library, "gpuinfo_set_data_to_dvfs_register", &set);
    show_settings();
    memset(record, kUntouched, sizeof record);
    CHECK(get(record) == 0);
    check_state(record);
    CHECK(set(record) == 0);
    CHECK(node_is("power_mode", "power_mode:0x1a2b3c4d\n"));
}

static void check_clocks(void* library)
{
    static _Alignas(8) unsigned char record[kClocks + kGuard];
    int32_t (*clocks)(void*);
    find_function(library, "get_dvfs_info", &clocks);
    memset(record, kUntouched, sizeof record);
    CHECK(clocks(record) == 0);
    CHECK(u32_at(record, 0) == 700);
    CHECK(u32_at(record, 4) == 500);
    CHECK(u32_at(record, 8) == 2400);
    CHECK(all_bytes(record, kClocks, kGuard, kUntouched));
}

static void check_segments(void* library, unsigned char* adapter)
{
    static _Alignas(8) unsigned char record[kSegments + kGuard];
    int32_t (*init)(void*);
    int32_t (*segments)(void*);
    int32_t (*read_node)(void*);
    find_function(library, "segment_init", &init);
    find_function(library, "get_segment_info", &segments);
    find_function(library, "gpuinfo_get_segment_info", &read_node);
    write_node("segment_info",
               "segment_id:0,total_size:8000,used_size:1000\n"
               "segment_id:1,total_size:9000,used_size:2000\n");
    CHECK(init(adapter) == 1);
    memset(record, kUntouched, sizeof record);
    CHECK(segments(record) == 1);
    CHECK(u32_at(record, 0) == 1);
    CHECK(u32_at(record, 4) == 2);
    CHECK(all_bytes(record, 8, 56, 0));
    CHECK(u32_at(record, 64) == 8);
    CHECK(u32_at(record, 68) == 9);
    CHECK(all_bytes(record, 72, 56, 0));
    CHECK(all_bytes(record, kSegments, kGuard, kUntouched));

    memset(record, kUntouched, sizeof record);
    CHECK(read_node(record) == 1);
    CHECK(u32_at(record, 4) == 2);
    CHECK(u32_at(record, 68) == 9);
    CHECK(all_bytes(record, 8, 56, kUntouched));
    CHECK(all_bytes(record, 72, 56 + kGuard, kUntouched));
}

static void write_heap(const char* name, unsigned total, unsigned used)
{
    char directory[4096];
    char node[64];
    char text[128];
    snprintf(directory, sizeof directory, "%s/heaps/%s", directory_of_test, name);
    snprintf(node, sizeof node, "heaps/%s/info", name);
    snprintf(text, sizeof text, "Total segment size:  %u\nKMD used segment memory:  %u\n",
             total << 20, used << 20);
    CHECK(mkdir(directory, 0755) == 0);
    write_node(node, text);
}

/* The heaps are below the debug directory, whose path has a place for 50 bytes. */
static void check_heaps(void* library)
{
    static _Alignas(8) unsigned char record[kSegments + kGuard];
    int32_t (*read_heaps)(void*, int32_t);
    find_function(library, "gpuinfo_get_kmd_segment_info", &read_heaps);
    char directory[4096];
    snprintf(directory, sizeof directory, "%s/heaps", directory_of_test);
    CHECK(mkdir(directory, 0755) == 0);
    write_heap("heap_invalid", 11, 1);
    write_heap("heap_local", 12, 2);
    write_heap("heap_pcie_unsnoop", 13, 3);
    write_heap("heap_pcie_snoop", 14, 4);
    strcpy(symbol(library, "sys_kernel_debug_ID_dri_ADAPTER_path"), directory_of_test);
    memset(record, kUntouched, sizeof record);
    CHECK(read_heaps(record, 5) == 1);
    for (size_t heap = 0; heap < 4; ++heap) {
        CHECK(u32_at(record, 4 * heap) == heap + 1);
        CHECK(u32_at(record, 64 + 4 * heap) == heap + 11);
    }
    CHECK(u32_at(record, 16) == 0);
    CHECK(u32_at(record, 80) == 0);
    CHECK(all_bytes(record, 20, 44, kUntouched));
    CHECK(all_bytes(record, 84, 44 + kGuard, kUntouched));
}

static void check_frame_rate(void* library)
{
    static _Alignas(8) unsigned char record[kRates + kGuard];
    int32_t (*count_frames)(uint32_t*, int64_t*, int64_t*);
    int32_t (*init)(void);
    int32_t (*rates)(void*);
    find_function(library, "gpuinfo_get_fps_count", &count_frames);
    find_function(library, "fps_init", &init);
    find_function(library, "get_fps_info", &rates);
    write_node("fps_count", "100 1000000000\n");
    write_node("rxa_blt_scn_cnt", "8589934592\n");
    uint32_t flips = 42;
    int64_t time_stamp = 42;
    int64_t blits = 42;
    CHECK(count_frames(&flips, &time_stamp, &blits) == 1);
    CHECK(flips == 100);
    CHECK(time_stamp == 1000000000);
    CHECK(blits == 8589934592);
    CHECK(init() == 0);
    memset(record, kUntouched, sizeof record);
    CHECK(rates(record) == -1);
    CHECK(all_bytes(record, 0, sizeof record, kUntouched));

    write_node("fps_count", "132 2000000000\n");
    write_node("rxa_blt_scn_cnt", "8589934608\n");
    CHECK(rates(record) == 0);
    CHECK(u32_at(record, 0) == 0x42000000);  /* 32 */
    CHECK(u32_at(record, 4) == 0x41800000);  /* 16 */
    CHECK(u32_at(record, 8) == 0x42400000);  /* 48 */
    CHECK(u32_at(record, 12) == 0x42400000); /* 48 */
    CHECK(all_bytes(record, kRates, kGuard, kUntouched));
}

/* There is no kernel-interface library: no function is found, and no record written. */
static void check_kernel_interface(void* library)
{
    static _Alignas(8) unsigned char record[64];
    int32_t (*bandwidth_init)(void);
    int32_t (*bandwidth)(void*);
    int32_t (*busy_init)(void);
    int32_t (*busy)(void*);
    find_function(library, "bandwidth_init", &bandwidth_init);
    find_function(library, "get_bandwidth_info", &bandwidth);
    find_function(library, "gfxbusy_init", &busy_init);
    find_function(library, "get_gpubusy_info", &busy);
    memset(record, kUntouched, sizeof record);
    CHECK(bandwidth_init() == -1);
    CHECK(bandwidth(record) == 0);
    CHECK(busy_init() == -1);
    CHECK(busy(record) == 0);
    CHECK(all_bytes(record, 0, sizeof record, kUntouched));
    CHECK(i32_at(symbol(library, "gfxbusy_apiversion"), 0) == 2);
}

static void check_shell_command(void* library)
{
    static unsigned char text[16];
    int32_t (*run)(const char*, char*, uint32_t);
    find_function(library, "runShellCommand", &run);
    memset(text, kUntouched, sizeof text);
    CHECK(run("echo one two", (char*)text, 8) == 7);
    CHECK(text_at(text, 0, "one two"));
    CHECK(all_bytes(text, 8, 8, kUntouched));
}

int main(int argc, char** argv)
{
    if (argc != 3 || strlen(argv[2]) >= 50) {
        fputs("usage: power_layout_host LIBRARY DIRECTORY-OF-A-SHORT-PATH\n", stderr);
        return 2;
    }
    void* library = load_library(argv[1]);
    directory_of_test = argv[2];
    static _Alignas(8) unsigned char adapter[276];
    int32_t (*set_callback)(void*);
    find_function(library, "set_print_callback", &set_callback);
    set_callback(NULL);
    check_load(library);
    select_adapter(library, adapter);
    check_values(library);
    check_settings(library);
    check_workers(library);
    check_clocks(library);
    check_segments(library, adapter);
    check_heaps(library);
    check_frame_rate(library);
    check_kernel_interface(library);
    check_shell_command(library);
    return failed_checks == 0 ? 0 : 1;
}
