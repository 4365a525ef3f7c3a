/* SPDX-License-Identifier: MIT */
/* A host that knows the records of the adapter summaries as bytes and offsets alone. */
#define _GNU_SOURCE
#include "record.h"
#include "redirect.h"

#include <sys/stat.h>

enum { kUntouched = 0xEE, kGuard = 64, kSummary = 48, kSummaryExt2 = 232 };

static const char* directory_of_test;

static void write_file(const char* name, const char* text)
{
    char path[4096];
    snprintf(path, sizeof path, "%s/%s", directory_of_test, name);
    FILE* file = fopen(path, "w");
    CHECK(file != NULL && fputs(text, file) >= 0 && fclose(file) == 0);
}

/* One directory holds the nodes, the driver's file and the program dmidecode. */
static void show_adapter(void)
{
    write_file("eclk", "101\n");
    write_file("vclk", "102\n");
    write_file("mclk", "103\n");
    write_file("fb_size", "104\n");
    write_file("coreclk", "105\n");
    write_file("miu_channel_num", "106\n");
    write_file("current_link_width", "16\n");
    write_file("7",
               "Driver Version : 12.34.56\nFirmware Version : 1.2.3.4\n"
               "Firmware Name : a name of 31 characters and all\n"
               "Pixel Fillrate : 201\nTexture Fillrate : 202\n"
               "HDMI Max Display Resolution : 3840 x 2160@60\n"
               "VGA Max Display Resolution : 1920 x 1080@75\n"
               "Bus Type : PCIE 4.0 x16\n"
               "Memory Clock Freq : 203\nGPU Memory Usage : 204\nGPU Use Rate(3d) : 205\n"
               "GPU Use Rate(video) : 206\nGPU Use Rate(vpp) : 207\n"
               "Realtime Temperature : 208\n"
               "Device ID : 2fff\nMax Display Port : 3\nSupport Display Type :HDMI VGA\n");
    write_file("dmidecode",
               "#!/bin/sh\n"
               "echo 'Total Width: 72 bits'\n"
               "echo 'Bank Locator: P0 CHANNEL A'\n"
               "echo 'Type: DDR5'\n"
               "echo 'Configured Memory Speed: 4800 MT/s'\n");
    char path[4096];
    snprintf(path, sizeof path, "%s/dmidecode", directory_of_test);
    CHECK(chmod(path, 0755) == 0);
    snprintf(path, sizeof path, "%s:/usr/bin:/bin", directory_of_test);
    CHECK(setenv("PATH", path, 1) == 0);
}

/* Slot 1, with a chip that is none of the product's and card 7, is made current. */
static void select_adapter(void* library, unsigned char* record)
{
    int32_t (*select)(void*);
    find_function(library, "gpuinfo_select_new_chip", &select);
    const int directory = open(directory_of_test, O_RDONLY);
    CHECK(directory >= 0);
    put_u32(record, 20, 0x2FFF);
    put_u32(record, 116, 7);
    put_u32(record, 200, (uint32_t)directory);
    put_u32(record, 272, 1);
    CHECK(select(record) == 0);
    strcpy(symbol(library, "sys_bus_pci_devices_BUSID_path"), directory_of_test);
}

static void check_summary(void* library, const char* function, const void* adapter)
{
    static const uint32_t words[12] = {101, 102, 103, 104, 4800, 105, 3, 5, 106, 16, 5, 72};
    static _Alignas(8) unsigned char record[kSummary + kGuard];
    int32_t (*summary)(void*, const void*);
    find_function(library, function, &summary);
    memset(record, kUntouched, sizeof record);
    CHECK(summary(record, adapter) == 0);
    for (size_t word = 0; word < 12; ++word) {
        CHECK(u32_at(record, 4 * word) == words[word]);
    }
    CHECK(all_bytes(record, kSummary, kGuard, kUntouched));
}

static void check_summary_ext2(void* library, const char* function, const void* adapter)
{
    static const unsigned char versions[16] = {0x56, 0, 0x34, 0, 0x12, 0, 0, 0,
                                               4,    0, 3,    0, 2,    0, 1, 0};
    static const unsigned char resolutions[16] = {60, 0, 0, 0, 0x70, 0x08, 0x00, 0x0F,
                                                  75, 0, 0, 0, 0x38, 0x04, 0x80, 0x07};
    static _Alignas(8) unsigned char record[kSummaryExt2 + kGuard];
    int32_t (*summary)(void*, const void*);
    find_function(library, function, &summary);
    memset(record, kUntouched, sizeof record);
    CHECK(summary(record, adapter) == 0);
    CHECK(memcmp(record, versions, sizeof versions) == 0);
    CHECK(text_at(record, 16, "a name of 31 characters and all"));
    CHECK(u32_at(record, 48) == 201);
    CHECK(u32_at(record, 52) == 202);
    CHECK(u32_at(record, 56) == 203);
    CHECK(u32_at(record, 60) == 0);
    CHECK(memcmp(record + 64, resolutions, sizeof resolutions) == 0);
    for (size_t word = 0; word < 5; ++word) {
        CHECK(u32_at(record, 80 + 4 * word) == 204 + word);
    }
    CHECK(all_bytes(record, 100, 12, 0));
    CHECK(u32_at(record, 112) == 4);
    CHECK(all_bytes(record, 116, 116, 0));
    CHECK(all_bytes(record, kSummaryExt2, kGuard, kUntouched));
}

static void check_connectors(const unsigned char* list)
{
    static const char* const names[5] = {"VGA", "DVI", "HDMI", "DP", "EDP"};
    for (size_t type = 0; type < 5; ++type) {
        CHECK(text_at(list, 16 * type, names[type]));
        CHECK(u32_at(list, 16 * type + 12) == 1U << type);
    }
}

static void check_memory(void* library)
{
    int32_t (*width)(void);
    int32_t (*generation)(void);
    find_function(library, "runShellCommand_getBitWidth", &width);
    find_function(library, "runShellCommand_getMemoryTYpe", &generation);
    CHECK(width() == 72);
    CHECK(generation() == 5);
}

int main(int argc, char** argv)
{
    if (argc != 3 || strlen(argv[2]) >= 60) {
        fputs("usage: summary_layout_host LIBRARY DIRECTORY-OF-A-SHORT-PATH\n", stderr);
        return 2;
    }
    void* library = load_library(argv[1]);
    directory_of_test = argv[2];
    char files[4096];
    snprintf(files, sizeof files, "%s/", argv[2]);
    redirected_from = "/proc/gpuinfo_";
    redirected_to = files;

    static _Alignas(8) unsigned char adapter[276];
    int32_t (*set_callback)(void*);
    find_function(library, "set_print_callback", &set_callback);
    set_callback(NULL);
    show_adapter();
    select_adapter(library, adapter);
    check_connectors(symbol(library, "support_CONNECT_type_list"));
    check_memory(library);
    check_summary(library, "get_adapter_summary", adapter);
    check_summary(library, "gpu_info_get_adapter_summary", adapter);
    check_summary_ext2(library, "get_adapter_summary_ext2", adapter);
    check_summary_ext2(library, "gpu_info_get_adapter_summary_ext2", adapter);
    return failed_checks == 0 ? 0 : 1;
}
