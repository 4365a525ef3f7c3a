/* SPDX-License-Identifier: MIT */
/* A host that knows the records of discovery, and of the version handshake, as bytes and offsets
 * alone. It runs with stub_libdrm.c as libdrm, in the one directory of LD_LIBRARY_PATH; its own
 * expectations stand here. */
#define _GNU_SOURCE
#include "host.h"
#include "record.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

enum { kUntouched = 0xEE, kGuard = 64 };

/* Whether slot `slot` of drm_fd holds an open descriptor of /dev/null. */
static int holds_null_device(const unsigned char* record, size_t slot)
{
    struct stat status;
    return fstat(i32_at(record, 100 + 4 * slot), &status) == 0 && S_ISCHR(status.st_mode) &&
           status.st_rdev == makedev(1, 3);
}

static void check_find_adapter(const unsigned char* record)
{
    CHECK(all_bytes(record, 0, 4, kUntouched));
    CHECK(u32_at(record, 4) == 0xFFFF);
    CHECK(all_bytes(record, 8, 4, kUntouched));
    CHECK(i32_at(record, 12) == 2);
    CHECK(u32_at(record, 16) == EXPECTED_K1);
    CHECK(u32_at(record, 20) == EXPECTED_M30);
    CHECK(u32_at(record, 24) == 0x2204);
    CHECK(text_at(record, 28, "Gpu0:Nimba-K1"));
    CHECK(text_at(record, 48, "Gpu1:QV M-30"));
    CHECK(text_at(record, 68, "Gpu2:Nvidia-GPU"));
    CHECK(all_bytes(record, 88, 12, kUntouched)); /* no driver said "VA=1" */
    CHECK(holds_null_device(record, 0));
    CHECK(holds_null_device(record, 1));
    CHECK(i32_at(record, 100) != i32_at(record, 104));
    CHECK(all_bytes(record, 108, 4, kUntouched));
    CHECK(i32_at(record, 112) == 5);
    CHECK(i32_at(record, 116) == 12);
    CHECK(i32_at(record, 120) == 33);
    CHECK(all_bytes(record, 124, 4, kUntouched));

    CHECK(text_at(record, 128, "1234:56:1a.7"));
    CHECK(i32_at(record, 148) < 0);
    CHECK(all_bytes(record, 152, 8, kUntouched)); /* no info directory, no hwmon directory */
    CHECK(u16_at(record, 160) == EXPECTED_NIMBA);
    CHECK(all_bytes(record, 162, 14, kUntouched));
    CHECK(text_at(record, 176, "fffe:fd:02.0"));
    CHECK(i32_at(record, 196) < 0);
    CHECK(all_bytes(record, 200, 8, kUntouched));
    CHECK(u16_at(record, 208) == EXPECTED_QV);
    CHECK(all_bytes(record, 210, 14, kUntouched));
    CHECK(all_bytes(record, 224, 48, kUntouched));
    CHECK(i32_at(record, 272) == 1);
    CHECK(all_bytes(record, 276, kGuard, kUntouched));
}

static void check_find_adapter_ext1(const unsigned char* record)
{
    static const unsigned char locations[18] = {0x34, 0x12, 0x56, 0x1A, 7, 0,  /* slot 0 */
                                                0xFE, 0xFF, 0xFD, 0x02, 0, 0,  /* slot 1 */
                                                0x03, 0x00, 0xAB, 0x1F, 6, 0}; /* slot 2 */
    CHECK(all_bytes(record, 0, 132, 0));
    CHECK(i32_at(record, 132) == 1);
    CHECK(u32_at(record, 136) == EXPECTED_NIMBA);
    CHECK(u32_at(record, 140) == EXPECTED_QV);
    CHECK(u32_at(record, 144) == 0x10DE);
    CHECK(memcmp(record + 148, locations, sizeof locations) == 0);
    CHECK(all_bytes(record, 166, 2, 0));
    CHECK(u32_at(record, 168) == 0x1234);
    CHECK(u32_at(record, 172) == 0x00561A07);
    CHECK(u32_at(record, 176) == 0xFFFE);
    CHECK(u32_at(record, 180) == 0x00FD0200);
    CHECK(u32_at(record, 184) == 0x0003);
    CHECK(u32_at(record, 188) == 0x00AB1F06);
    CHECK(all_bytes(record, 192, 1512, 0));
}

/* The chip's kernel-interface libraries. */
static const char* const kKernelInterfaces[] = {"libmv9hwbridge_v2.so.0.0.0",
                                                "libdrm_mv9.so.0.0.0"};
enum { kKernelInterfaceCount = 2 };

static void library_path(char* path, size_t size, const char* name)
{
    const char* directory = getenv("LD_LIBRARY_PATH");
    if (directory == NULL || strchr(directory, ':') != NULL) {
        fputs("adapter_layout_host: set LD_LIBRARY_PATH to the directory of the stub libdrm\n",
              stderr);
        exit(2);
    }
    snprintf(path, size, "%s/%s", directory, name);
}

/* Files that the loader refuses, so that it looks for these libraries no further. */
static void hide_kernel_interfaces(void)
{
    for (int index = 0; index < kKernelInterfaceCount; ++index) {
        char path[4096];
        library_path(path, sizeof path, kKernelInterfaces[index]);
        FILE* file = fopen(path, "w");
        CHECK(file != NULL && fputs("no library\n", file) >= 0 && fclose(file) == 0);
        CHECK(dlopen(kKernelInterfaces[index], RTLD_LAZY) == NULL);
    }
}

static void remove_hidden_kernel_interfaces(void)
{
    for (int index = 0; index < kKernelInterfaceCount; ++index) {
        char path[4096];
        library_path(path, sizeof path, kKernelInterfaces[index]);
        CHECK(remove(path) == 0);
    }
}

static void check_current_adapter(void* library, unsigned char* record)
{
    int32_t (*init)(void*);
    int32_t (*finish)(int32_t);
    find_function(library, "gfx_global_init", &init);
    find_function(library, "gfx_global_exit", &finish);
    unsigned char before[276];
    memcpy(before, record, sizeof before);
    hide_kernel_interfaces();
    CHECK(init(record) == -1); /* there is no kernel-interface library */
    remove_hidden_kernel_interfaces();
    CHECK(memcmp(before, record, sizeof before) == 0);
    CHECK(*(unsigned char**)symbol(library, "pCurrent_gpu_infos") == record + 176);
    CHECK(strcmp(symbol(library, "sys_bus_pci_devices_BUSID_path"),
                 "/sys/bus/pci/devices/fffe:fd:02.0") == 0);
    CHECK(strcmp(symbol(library, "sys_kernel_debug_ID_dri_ADAPTER_path"),
                 "/sys/kernel/debug/dri/12/qv") == 0);
    CHECK(*(int32_t*)symbol(library, "__perf_event_fd") == i32_at(record, 104));
    CHECK(*(void**)symbol(library, "pdev") == NULL);
    CHECK(finish(1) == 0);
}

/* The steps of a discovery, one by one. */
static void check_steps(void* library)
{
    static _Alignas(8) unsigned char record[276 + kGuard];
    int32_t (*init)(void);
    int32_t (*get_handles)(void*);
    int32_t (*select)(void*);
    find_function(library, "gpuinfo_nimba_init", &init);
    find_function(library, "gpuinfo_nimba_get_device_handles", &get_handles);
    find_function(library, "gpuinfo_select_new_chip", &select);
    memset(record, kUntouched, sizeof record);
    put_u32(record, 4, 0xFFFF);
    put_u32(record, 272, 1);
    CHECK(init() == 1);
    CHECK(get_handles(record) == 1);
    check_find_adapter(record);
    put_u32(record, 272, 0);
    CHECK(select(record) == 0);
    CHECK(*(unsigned char**)symbol(library, "pCurrent_gpu_infos") == record + 128);
    CHECK(strcmp(symbol(library, "sys_bus_pci_devices_BUSID_path"),
                 "/sys/bus/pci/devices/1234:56:1a.7") == 0);
}

static void check_version(void* library)
{
    int32_t (*handshake)(void*);
    find_function(library, "get_interface_version_ext1", &handshake);
    unsigned char info[12 + kGuard];
    memset(info, kUntouched, sizeof info);
    put_u32(info, 4, 0x00010016);
    CHECK(handshake(info) == 0);
    CHECK(u32_at(info, 0) == 22);
    CHECK(u32_at(info, 4) == 0x00010016);
    CHECK(u32_at(info, 8) == 100);
    CHECK(all_bytes(info, 12, kGuard, kUntouched));
}

int main(int argc, char** argv)
{
    if (argc != 2) {
        fputs("usage: adapter_layout_host LIBRARY\n", stderr);
        return 2;
    }
    void* library = load_library(argv[1]);
    int32_t (*set_callback)(void*);
    int32_t (*find)(void*);
    int32_t (*find_ext1)(void*);
    find_function(library, "set_print_callback", &set_callback);
    find_function(library, "gfx_find_adapter", &find);
    find_function(library, "gfx_find_adapter_ext1", &find_ext1);
    set_callback(NULL);

    static _Alignas(8) unsigned char record[276 + kGuard];
    memset(record, kUntouched, sizeof record);
    put_u32(record, 4, 0xFFFF);
    put_u32(record, 272, 1);
    CHECK(find(record) == 0);
    check_find_adapter(record);
    CHECK(*(uint8_t*)symbol(library, "gpuinfo_control_enable") == 1);

    static _Alignas(8) unsigned char ext1[1704 + kGuard];
    memset(ext1, kUntouched, sizeof ext1);
    CHECK(find_ext1(ext1) == 0);
    check_find_adapter_ext1(ext1);
    CHECK(all_bytes(ext1, 1704, kGuard, kUntouched));
    CHECK(memcmp(symbol(library, "find_adapter_ext1_cache"), ext1, 1704) == 0);

    check_current_adapter(library, record);
    check_steps(library);
    check_version(library);
    return failed_checks == 0 ? 0 : 1;
}
