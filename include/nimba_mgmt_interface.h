/* SPDX-License-Identifier: MIT */
/*
 * libnimba_mgmt_interface: inspect and tune the adapters of the Nimba and QV chips.
 *
 * Order of use:
 *   1. load the library (its constructor writes one line to standard output and installs printf as
 *      the print callback);
 *   2. set_print_callback and get_interface_version_ext1, both optional;
 *   3. gfx_find_adapter with a find_adapter record that is zeroed but for vendor_id_filter, which
 * is 0xFFFF (a zero accepts no adapter), then optionally gfx_find_adapter_ext1;
 *   4. set the record's chip_id_idx to one of its slots and call gfx_global_init;
 *   5. any query or setting;
 *   6. gfx_global_exit.
 *
 * Conventions. Every record is a fixed little-endian layout that the caller owns; a field that the
 * library cannot fill stays as the caller set it, so pass zeroed records. Pointer arguments must
 * not be null unless a comment says that they may. The library starts no thread and locks nothing:
 * serialise the calls, and run initialisation and exit while no other call runs. The only
 * environment variable it reads is HOME. Without memory for its own work a call ends in the C++
 * exception std::bad_alloc, leaks nothing, and leaves the library fit for the next call; a host
 * in C ends there.
 *
 * The header compiles as C11 and as C++20; C++ hosts get a few more declarations at the end.
 */
#ifndef NIMBA_MGMT_INTERFACE_H
#define NIMBA_MGMT_INTERFACE_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#include <string>
#include <vector>
#endif

#if defined(__GNUC__)
#define NIMBA_MGMT_API __attribute__((visibility("default")))
#define NIMBA_MGMT_PRINTF(format_index, first_value) \
    __attribute__((format(printf, format_index, first_value)))
#else
#define NIMBA_MGMT_API
#define NIMBA_MGMT_PRINTF(format_index, first_value)
#endif

#ifdef __cplusplus
#define NIMBA_MGMT_ASSERT(condition) static_assert(condition, #condition)
#else
#define NIMBA_MGMT_ASSERT(condition) _Static_assert(condition, #condition)
#endif

/* Checks, when the header is compiled, that `field` stands at byte `offset` of `record`. */
#define NIMBA_MGMT_ASSERT_OFFSET(record, field, offset) \
    NIMBA_MGMT_ASSERT(offsetof(record, field) == (offset))

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------
 * Identifiers. A board vendor chooses them when the library is configured (one -DNAME=0x… each);
 * the installed header, the pkg-config file and the CMake package carry the chosen values.
 * ------------------------------------------------------------------------------------------- */

/* PCI vendor identifiers of the product. */
#define NIMBA_VENDOR_ID 0x4E4D
#define QV_VENDOR_ID 0x5156

/* PCI device identifiers of the chips, as an adapter's slot shows in chip_id. They differ pairwise,
 * also across the two vendors, since initialisation goes by the device identifier alone. */
#define DEVICE_ID_NIMBA_K1 0x1001
#define DEVICE_ID_NIMBA_K2 0x1002
#define DEVICE_ID_NIMBA_K3 0x1003
#define DEVICE_ID_NIMBA_K3T 0x1013
#define DEVICE_ID_NIMBA_K5 0x1005
#define DEVICE_ID_NIMBA_K6 0x1006
#define DEVICE_ID_QV_M20 0x2020
#define DEVICE_ID_QV_M30 0x2030
#define DEVICE_ID_QV_M40 0x2040

/* Adapter slots of a find_adapter record, numbered from 0. */
#define MAX_CHIP_NUM 3

/* ---------------------------------------------------------------------------------------------
 * Logging and interface version
 * ------------------------------------------------------------------------------------------- */

/* The interface version that this header describes: major (high 16 bits) 0, minor 22. */
#define NIMBA_INTERFACE_VERSION 22

/* Values of interface_version_info.version_match_result. */
#define NIMBA_VERSION_MAJOR_MISMATCH 100 /* the client's major version is not 0 */
#define NIMBA_VERSION_MATCH 200          /* the client's version is 22 */
#define NIMBA_VERSION_CLIENT_OLDER 201   /* the client's minor version is below 22: compatible */
#define NIMBA_VERSION_CLIENT_NEWER 202   /* above 22: the library may lack what the client wants */

/* A printf-compatible receiver of messages. The library passes one finished text and no further
 * arguments, so a function of one `const char *` works as well. */
typedef int (*nimba_print_callback)(const char* format, ...);

/* The receiver of the library's messages; null silences them. `printf` from the time the library is
 * loaded until it is replaced; nothing resets it. A few lines bypass it and go to standard output:
 * one when the library is loaded, one when it is unloaded, and discovery's warning about devices
 * that it did not examine. With `printf`, a percent sign in a finished text is
 * read as a conversion: hosts that show texts from files or the driver install a callback. */
extern NIMBA_MGMT_API nimba_print_callback pServerPrintCallback;

/* The version handshake, 12 bytes. */
typedef struct interface_version_info {
    uint32_t server_interface_version; /*  0, out: always 22 */
    uint32_t client_interface_version; /*  4, in: major in the high 16 bits, minor in the low */
    uint32_t version_match_result;     /*  8, out: one of NIMBA_VERSION_* */
} interface_version_info;

NIMBA_MGMT_ASSERT(sizeof(interface_version_info) == 12);
NIMBA_MGMT_ASSERT_OFFSET(interface_version_info, server_interface_version, 0);
NIMBA_MGMT_ASSERT_OFFSET(interface_version_info, client_interface_version, 4);
NIMBA_MGMT_ASSERT_OFFSET(interface_version_info, version_match_result, 8);

/* Formats a message by printf's rules and hands the finished text, cut to 1023 characters, to
 * pServerPrintCallback. With a null callback nothing is formatted.
 * Return: 0 always; the callback's result is ignored. */
NIMBA_MGMT_API int32_t lib_print_func(const char* format, ...) NIMBA_MGMT_PRINTF(1, 2);

/* Installs the receiver of messages.
 * callback: the new receiver; null silences the library.
 * The new receiver gets "set_print_callback.\n" as its first message.
 * Return: 0 always. */
NIMBA_MGMT_API int32_t set_print_callback(nimba_print_callback callback);

/* Tells the interface version.
 * Return: 22. */
NIMBA_MGMT_API int32_t get_interface_version(void);

/* Compares the version that the caller was built for with the library's.
 * info: client_interface_version is read; the other two fields are written in every case. The
 * outcome is also logged.
 * Return: 0 always; the outcome is in version_match_result. */
NIMBA_MGMT_API int32_t get_interface_version_ext1(interface_version_info* info);

/* A stable entry point without an effect in this version.
 * Return: 0. */
NIMBA_MGMT_API int32_t get_driver_info(void);

/* Reports the state of the tool; no problem is ever reported in this version.
 * status: set to 0.
 * Return: 0. */
NIMBA_MGMT_API int32_t selfcheck_current_tool_status(uint32_t* status);

/* ---------------------------------------------------------------------------------------------
 * Text helpers
 * ------------------------------------------------------------------------------------------- */

/* Finds the value behind a key such as "Driver Version : " in node text.
 * buffer, length: the bytes to search, which need not be NUL-terminated.
 * key: NUL-terminated text.
 * A key that ends exactly at the buffer's last byte is not found: pass the size of a buffer that is
 * larger than its text. An empty key is never found.
 * Return: the index of the byte after the key's first occurrence, or -1. */
NIMBA_MGMT_API int32_t find_str_in_buffer(const char* buffer, int32_t length, const char* key);

/* Copies the first line of a text, without its newline, and NUL-terminates the copy.
 * destination, size: receives at most size - 1 characters and the NUL. Pass the true size: a size
 * of 0 leaves the copy bounded by the line's length alone.
 * source: NUL-terminated text.
 * Return: the number of bytes stored, the NUL included. */
NIMBA_MGMT_API uint32_t safe_str_copy_till_return(char* destination, const char* source,
                                                  uint64_t size);

/* ---------------------------------------------------------------------------------------------
 * Adapter discovery
 * ------------------------------------------------------------------------------------------- */

/* One adapter's handles in sysfs, 48 bytes. */
typedef struct gpu_infos {
    char busid[20];         /*  0: PCI address, "%04x:%02x:%02x.%d": domain, bus, device, func. */
    int32_t pci_dir_fd;     /* 20: directory /sys/bus/pci/devices/<busid>; negative: not opened */
    int32_t jw_info_dir_fd; /* 24: the driver's info directory in it: "jw_info" or "qv_info" */
    int32_t hwmon_dir_fd;   /* 28: the first directory "hwmon*" in its "hwmon" directory */
    uint16_t vendor_id;     /* 32: PCI vendor identifier */
    uint8_t reserved[14];   /* 34: not written */
} gpu_infos;

NIMBA_MGMT_ASSERT(sizeof(gpu_infos) == 48);
NIMBA_MGMT_ASSERT_OFFSET(gpu_infos, busid, 0);
NIMBA_MGMT_ASSERT_OFFSET(gpu_infos, pci_dir_fd, 20);
NIMBA_MGMT_ASSERT_OFFSET(gpu_infos, jw_info_dir_fd, 24);
NIMBA_MGMT_ASSERT_OFFSET(gpu_infos, hwmon_dir_fd, 28);
NIMBA_MGMT_ASSERT_OFFSET(gpu_infos, vendor_id, 32);
NIMBA_MGMT_ASSERT_OFFSET(gpu_infos, reserved, 34);

/* The identity of the adapters in the slots, 128 bytes. */
typedef struct find_adapter_header {
    uint32_t reserved0;                 /*   0: not read or written */
    uint32_t vendor_id_filter;          /*   4, in: vendor to accept; 0xFFFF accepts both */
    uint32_t reserved1;                 /*   8: not read or written */
    int32_t chip_num;                   /*  12, out: product adapters found, 0 to 3 */
    uint32_t chip_id[MAX_CHIP_NUM];     /*  16, out: PCI device identifier */
    char chip_name[MAX_CHIP_NUM][20];   /*  28, out: such as "Gpu0:Nimba-K1", NUL-terminated */
    int32_t IS_VA_driver[MAX_CHIP_NUM]; /*  88, out: 1: the driver says "VA=1"; else as it was */
    int32_t drm_fd[MAX_CHIP_NUM];       /* 100, out: open descriptor of an adapter's DRM node */
    int32_t drm_card_idx[MAX_CHIP_NUM]; /* 112, out: N of the primary node /dev/dri/cardN */
    uint32_t reserved2;                 /* 124: not read or written */
} find_adapter_header;

/* The discovery record, 276 bytes. It must live as long as the library is used, since
 * pCurrent_gpu_infos points into it. */
typedef struct find_adapter {
    find_adapter_header header;               /*   0 */
    struct gpu_infos gpu_infos[MAX_CHIP_NUM]; /* 128, out: handles by slot */
    int32_t chip_id_idx; /* 272, in: slot to make current, 0 to 2; the range is not checked */
} find_adapter;

NIMBA_MGMT_ASSERT(sizeof(find_adapter_header) == 128);
NIMBA_MGMT_ASSERT(sizeof(find_adapter) == 276);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter, header.vendor_id_filter, 4);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter, header.chip_num, 12);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter, header.chip_id, 16);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter, header.chip_name, 28);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter, header.IS_VA_driver, 88);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter, header.drm_fd, 100);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter, header.drm_card_idx, 112);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter, gpu_infos, 128);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter, chip_id_idx, 272);

/* A PCI location, 6 bytes. */
typedef struct busid_info {
    uint16_t domain;  /* 0 */
    uint8_t bus;      /* 2 */
    uint8_t device;   /* 3 */
    uint8_t function; /* 4 */
    uint8_t reserved; /* 5: zero */
} busid_info;

/* A locally unique identifier made from the PCI location, 8 bytes. */
typedef struct gfx_luid {
    uint32_t low;  /* 0: PCI domain */
    uint32_t high; /* 4: bus * 65536 + device * 256 + function */
} gfx_luid;

/* The extended identity of the same slots, 1704 bytes. */
typedef struct find_adapter_ext1 {
    uint8_t reserved0[132];                     /*   0: zero */
    int32_t other_vendor_chip_num;              /* 132: 1 once a GPU of another vendor was found */
    uint32_t vendor_id[MAX_CHIP_NUM];           /* 136: PCI vendor identifier */
    struct busid_info busid_info[MAX_CHIP_NUM]; /* 148: PCI location */
    uint8_t reserved1[2];                       /* 166: zero */
    gfx_luid luid[MAX_CHIP_NUM];                /* 168: locally unique identifier */
    uint8_t reserved2[1512];                    /* 192: zero */
} find_adapter_ext1;

NIMBA_MGMT_ASSERT(sizeof(busid_info) == 6);
NIMBA_MGMT_ASSERT_OFFSET(busid_info, domain, 0);
NIMBA_MGMT_ASSERT_OFFSET(busid_info, bus, 2);
NIMBA_MGMT_ASSERT_OFFSET(busid_info, device, 3);
NIMBA_MGMT_ASSERT_OFFSET(busid_info, function, 4);
NIMBA_MGMT_ASSERT(sizeof(gfx_luid) == 8);
NIMBA_MGMT_ASSERT_OFFSET(gfx_luid, low, 0);
NIMBA_MGMT_ASSERT_OFFSET(gfx_luid, high, 4);
NIMBA_MGMT_ASSERT(sizeof(find_adapter_ext1) == 1704);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter_ext1, other_vendor_chip_num, 132);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter_ext1, vendor_id, 136);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter_ext1, busid_info, 148);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter_ext1, luid, 168);
NIMBA_MGMT_ASSERT_OFFSET(find_adapter_ext1, reserved2, 192);

/* What gfx_find_adapter_ext1 returns. Zero at load; a later discovery overwrites the slots that it
 * reaches and never clears other_vendor_chip_num. */
extern NIMBA_MGMT_API find_adapter_ext1 find_adapter_ext1_cache;

/* 1 after a gfx_find_adapter that could list DRM devices, 0 after one that could not. */
extern NIMBA_MGMT_API uint8_t gpuinfo_control_enable;

/* The current adapter's entry inside the caller's find_adapter record; null until a slot is made
 * current. Set by gpuinfo_select_new_chip. */
extern NIMBA_MGMT_API struct gpu_infos* pCurrent_gpu_infos;

/* "/sys/bus/pci/devices/<busid>" of the current adapter. Set by gpuinfo_select_new_chip. */
extern NIMBA_MGMT_API char sys_bus_pci_devices_BUSID_path[60];

/* Finds up to three of the product's adapters and at most one GPU of another vendor.
 * rec: vendor_id_filter is read. Each product adapter among the first three DRM devices fills the
 * next slot; chip_num counts them. A GPU of another vendor writes chip_id, chip_name and
 * drm_card_idx of slot 2, over a third adapter if there is one; chip_num does not count it.
 * A field whose node, directory or file cannot be opened stays as it was, but for pci_dir_fd, which
 * is then negative. In a zeroed record a directory that did not open thus reads as descriptor 0,
 * standard input: set jw_info_dir_fd and hwmon_dir_fd to -1 before the call to tell.
 * A product device that is no known chip is not counted, but leaves the number of its closed
 * descriptor in drm_fd, and its vendor in the extended record, of the slot that the next chip
 * takes. Every call opens its descriptors anew, and they stay open for the life of the process, one
 * of the other vendor's GPU among them: discover once. Return: 0 always. Nothing found: chip_num 0.
 * libdrm ("libdrm.so" or "libdrm.so.2") missing or unusable: the record is untouched and
 * gpuinfo_control_enable is 0. Sources: drmGetDevices2 or drmGetDevices, drmGetVersion on the
 * render, control or primary node, /sys/bus/pci/devices/<busid>, /sys/kernel/debug/dri/<n>/jw/info
 * or qv/info. */
NIMBA_MGMT_API int32_t gfx_find_adapter(find_adapter* rec);

/* Copies the extended identity of the slots that gfx_find_adapter filled.
 * rec: all 1704 bytes are written.
 * Return: 0 always. */
NIMBA_MGMT_API int32_t gfx_find_adapter_ext1(find_adapter_ext1* rec);

/* Loads libdrm ("libdrm.so", else "libdrm.so.2") and looks its functions up, anew on every call.
 * With neither file they are looked for among the symbols that are already in the process. Return:
 * 1, or 0 when a function that discovery needs is absent. */
NIMBA_MGMT_API int32_t gpuinfo_nimba_init(void);

/* Runs a discovery with the libdrm that gpuinfo_nimba_init loaded.
 * rec: as for gfx_find_adapter; chip_num is set to 0 first.
 * Return: 1, or 0 when no DRM device could be listed. */
NIMBA_MGMT_API int32_t gpuinfo_nimba_get_device_handles(find_adapter* rec);

/* Makes the slot rec->chip_id_idx current: sets pCurrent_gpu_infos and
 * sys_bus_pci_devices_BUSID_path.
 * Return: 0 always. */
NIMBA_MGMT_API int32_t gpuinfo_select_new_chip(find_adapter* rec);

/* ---------------------------------------------------------------------------------------------
 * Life cycle
 * ------------------------------------------------------------------------------------------- */

/* The current adapter's open DRM descriptor: the first argument of the kernel-interface library's
 * functions. Set by gfx_global_init. */
extern NIMBA_MGMT_API int32_t __perf_event_fd;

/* The device block that the kernel-interface library works in; null when there is none. Allocated
 * by gfx_global_init, freed by gfx_global_exit. */
extern NIMBA_MGMT_API void* pdev;

/* The current adapter's directory in debugfs: "/sys/kernel/debug/dri/<n>/jw" or ".../qv". Empty
 * until gfx_global_init meets a chip that it knows. */
extern NIMBA_MGMT_API char sys_kernel_debug_ID_dri_ADAPTER_path[50];

/* Makes the slot rec->chip_id_idx current, empties the list of GPU preferences, loads the chip's
 * kernel-interface library, switches the driver's usage accounting on and allocates the device
 * block. It may be called again for the same or another slot without an exit in between.
 * rec: a record that gfx_find_adapter filled; it is read only, and must outlive the use of the
 * slot. Return: the slot's chip_id, or -1: the chip is not known, its kernel-interface library or
 * the library's size function is missing, the size is 0, or there is no memory. After a failure the
 * slot is current all the same, and what was switched on stays on.
 * Writes "1" to the node "enable_usage" in the driver's info directory, unless chip_id is 0. */
NIMBA_MGMT_API int32_t gfx_global_init(find_adapter* rec);

/* Switches usage accounting off, closes the kernel-interface library, frees the device block and
 * empties the list of GPU preferences. The slot stays current, so that its nodes can still be read,
 * and discovery's descriptors stay open. A second call does the same again.
 * chip_id_idx: only logged.
 * Return: 0 always. */
NIMBA_MGMT_API int32_t gfx_global_exit(int32_t chip_id_idx);

/* Writes to the driver's usage-accounting switch, the node "enable_usage" in the current adapter's
 * info directory.
 * text: "1" or "0". It is used as a printf format: no percent signs.
 * Return: the number of characters written; 0 when the node cannot be opened or no slot was made
 * current. A value that the driver rejects still counts as written. */
NIMBA_MGMT_API int32_t gpuinfo_set_enable_usage(const char* text);

/* ---------------------------------------------------------------------------------------------
 * Video-memory allocations of the current adapter. The driver shows each live allocation as a
 * directory <debug directory>/allocations/<entry> with a text node "info" of lines "key=value",
 * where <debug directory> is sys_kernel_debug_ID_dri_ADAPTER_path. Every function here that reads
 * them reads them afresh, in the order in which the system lists the directory:
 *   - A pass fails when the directory cannot be opened ("Error opening directory"), when a node
 *     cannot be opened or read, as when its allocation vanished ("Fail to read allocation info.
 *     skip..."), or when the listing breaks off. A failed pass is tried again after 5 ms, ten
 *     passes in all. What failed passes read stays: a result holds an allocation once more for each
 *     failed pass that came as far as it.
 *   - A "handle" or "device" value without digits, or outside the signed 32-bit range (handles from
 *     2^31 on), raises std::invalid_argument or std::out_of_range, which leaves the library through
 *     the function that was called. A C host is terminated by it.
 *   - A key of more than 127 characters, or a value of more than 127 with its newline, ends the
 *     process: one line on standard error, then abort(). A host that must go on whatever the driver
 *     prints calls from a process of its own.
 * Before an adapter is current the debug directory is empty, and the calls fail. Messages of this
 * section go to standard output, not to pServerPrintCallback.
 * ------------------------------------------------------------------------------------------- */

/* Memory segments that the summaries tell apart: 0, 1, 2, 3, and in the last slot all from 4 on. */
#define SEGMENT_SLOT_NUM 5

/* Records in one block of the raw list. */
#define RAW_LIST_BLOCK_MAX 20

/* Entries of the summaries and of the process map. */
#define ALLOCATION_SUMMARY_MAX 50

/* Groups in a leak report. */
#define MEMLEAK_REPORT_MAX 15

/* One video-memory allocation, 92 bytes. A field whose key the node lacks is 0. Values are base 10
 * where nothing else is said: the low 32 bits of what strtol reads, which is 0 without a digit;
 * handle and device as std::stoi reads them. */
typedef struct _GFX_ALLOCATION_INFO {
    int32_t handle;          /*  0: "handle", base 16; the driver may give it out again */
    int32_t device;          /*  4: "device": base 10 with a VA driver, else 16; its owner */
    int32_t width;           /*  8: "width", pixels */
    int32_t height;          /* 12: "height", pixels */
    int32_t pitch;           /* 16: "pitch", bytes from row to row */
    int32_t bit_cnt;         /* 20: "bit_cnt", bits of a pixel */
    int32_t secured;         /* 24: "secured" */
    int32_t size;            /* 28: "size", bytes */
    int32_t tile;            /* 32: "tile", tiling mode */
    int32_t cpu_visible;     /* 36: "cpu_visible" */
    int32_t cache_type;      /* 40: "cache_type" */
    int32_t pool_type;       /* 44: "pool_type" */
    int32_t at_type;         /* 48: "at_type", allocation type */
    int32_t segmentid;       /* 52: "segmentid", memory segment; negative: none */
    int32_t hw_format;       /* 56: "hw_format", pixel format of the hardware */
    int32_t compress_format; /* 60: "compress_format" */
    int32_t bl_slot_index;   /* 64: "bl_slot_index" */
    int32_t gpu_virt_addr;   /* 68: "gpu_virt_addr", the low 32 bits of the address */
    int32_t imported;        /* 72: "imported" */
    int32_t fb_offset;       /* 76: "fb_offset" */
    int32_t share;           /* 80: "share" */
    int32_t hit_count;       /* 84: 1; in the leak detector: snapshots in a row that hold it */
    int32_t sum_count;       /* 88: 1; in a leak report: allocations in the group */
} _GFX_ALLOCATION_INFO;

NIMBA_MGMT_ASSERT(sizeof(_GFX_ALLOCATION_INFO) == 92);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, handle, 0);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, device, 4);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, width, 8);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, height, 12);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, pitch, 16);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, bit_cnt, 20);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, secured, 24);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, size, 28);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, tile, 32);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, cpu_visible, 36);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, cache_type, 40);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, pool_type, 44);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, at_type, 48);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, segmentid, 52);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, hw_format, 56);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, compress_format, 60);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, bl_slot_index, 64);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, gpu_virt_addr, 68);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, imported, 72);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, fb_offset, 76);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, share, 80);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, hit_count, 84);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_INFO, sum_count, 88);

/* A block of the raw list, 1856 bytes. */
typedef struct _GFX_ALLOCATION_RAW_LIST {
    int32_t page_index;  /*  0, in: which block of 20 records; 0: read the driver again */
    int32_t total_cnt;   /*  4, out: records in the kept list */
    int32_t trasfer_cnt; /*  8, out: records in this block, 0 to 20 */
    int32_t more_flag;   /* 12, out: 1 when records remain behind this block, else 0 */
    _GFX_ALLOCATION_INFO records[RAW_LIST_BLOCK_MAX]; /* 16, out: the first trasfer_cnt of them */
} _GFX_ALLOCATION_RAW_LIST;

NIMBA_MGMT_ASSERT(sizeof(_GFX_ALLOCATION_RAW_LIST) == 1856);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_RAW_LIST, page_index, 0);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_RAW_LIST, total_cnt, 4);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_RAW_LIST, trasfer_cnt, 8);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_RAW_LIST, more_flag, 12);
NIMBA_MGMT_ASSERT_OFFSET(_GFX_ALLOCATION_RAW_LIST, records, 16);

/* The memory of one device, 24 bytes. */
typedef struct gfx_device_allocation {
    int32_t device;                          /* 0: device of the allocations */
    uint32_t segment_size[SEGMENT_SLOT_NUM]; /* 4: bytes by segment, modulo 2^32 */
} gfx_device_allocation;

/* The memory of the devices, 1200 bytes, in the order in which the devices are first met. Unused
 * entries are zero; the last entry always is. */
typedef struct _GFX_DEVICE_ALLOCATION_SUMMARY {
    gfx_device_allocation entries[ALLOCATION_SUMMARY_MAX]; /* 0 */
} _GFX_DEVICE_ALLOCATION_SUMMARY;

/* The same with wide sums: one entry, 48 bytes, and the summary, 2400 bytes. */
typedef struct gfx_device_allocation_ext1 {
    int32_t device;                         /* 0: device of the allocations */
    uint32_t reserved;                      /* 4: zero */
    int64_t segment_size[SEGMENT_SLOT_NUM]; /* 8: sum of the signed sizes by segment, bytes */
} gfx_device_allocation_ext1;

typedef struct _GFX_DEVICE_ALLOCATION_SUMMARY_EXT1 {
    gfx_device_allocation_ext1 entries[ALLOCATION_SUMMARY_MAX]; /* 0 */
} _GFX_DEVICE_ALLOCATION_SUMMARY_EXT1;

NIMBA_MGMT_ASSERT(sizeof(gfx_device_allocation) == 24);
NIMBA_MGMT_ASSERT_OFFSET(gfx_device_allocation, device, 0);
NIMBA_MGMT_ASSERT_OFFSET(gfx_device_allocation, segment_size, 4);
NIMBA_MGMT_ASSERT(sizeof(_GFX_DEVICE_ALLOCATION_SUMMARY) == 1200);
NIMBA_MGMT_ASSERT(sizeof(gfx_device_allocation_ext1) == 48);
NIMBA_MGMT_ASSERT_OFFSET(gfx_device_allocation_ext1, device, 0);
NIMBA_MGMT_ASSERT_OFFSET(gfx_device_allocation_ext1, reserved, 4);
NIMBA_MGMT_ASSERT_OFFSET(gfx_device_allocation_ext1, segment_size, 8);
NIMBA_MGMT_ASSERT(sizeof(_GFX_DEVICE_ALLOCATION_SUMMARY_EXT1) == 2400);

/* One device context, 72 bytes. */
typedef struct gfx_device_pid {
    int32_t pid;           /* 0: process id, from the node's "pid", base 10 */
    int32_t handle;        /* 4: the node's "handle", base 16: the device of its allocations */
    char process_name[64]; /* 8: see getPackageNameFromPid; NUL-terminated */
} gfx_device_pid;

/* The open device contexts, 3600 bytes, in the order in which the system lists them. Unused entries
 * are zero. */
typedef struct _GFX_DEVICE_PID_MAP {
    gfx_device_pid entries[ALLOCATION_SUMMARY_MAX]; /* 0 */
} _GFX_DEVICE_PID_MAP;

NIMBA_MGMT_ASSERT(sizeof(gfx_device_pid) == 72);
NIMBA_MGMT_ASSERT_OFFSET(gfx_device_pid, pid, 0);
NIMBA_MGMT_ASSERT_OFFSET(gfx_device_pid, handle, 4);
NIMBA_MGMT_ASSERT_OFFSET(gfx_device_pid, process_name, 8);
NIMBA_MGMT_ASSERT(sizeof(_GFX_DEVICE_PID_MAP) == 3600);

/* A leak report, 1380 bytes: the largest groups of like allocations, largest first. Each record is
 * the first kept allocation of its group, with the group's size in sum_count. Records behind the
 * last group are zero. */
typedef struct _GFX_MEMLEAK_INFO {
    _GFX_ALLOCATION_INFO groups[MEMLEAK_REPORT_MAX]; /* 0 */
} _GFX_MEMLEAK_INFO;

NIMBA_MGMT_ASSERT(sizeof(_GFX_MEMLEAK_INFO) == 1380);

/* Hands out the allocations sorted by device, 20 at a time. Page 0 reads the driver and keeps the
 * list; the other pages are copied from the kept list without a read, so call with page_index 0, 1,
 * 2 and on while more_flag is 1, and all pages come from one reading. The list is kept until the
 * next page 0, or until the library is unloaded.
 * buffer: page_index is read. On success total_cnt, trasfer_cnt, more_flag and the first
 * trasfer_cnt records are written; the other records stay as they were. Allocations of one device
 * come in no defined order.
 * rec: read for page 0 only: IS_VA_driver of the slot chip_id_idx, 0 to 2, tells how "device" is
 * written. The allocations are those of the current adapter, whatever the slot.
 * Return: 0, or -1:
 *   - the driver could not be read: the buffer and the kept list stay as they were, as they do when
 *     an error leaves;
 *   - there is no memory for the list ("allocate memory for global_allocation_raw_list fail."): the
 *     buffer stays, and the kept list is gone: until the next page 0 the other pages have total_cnt
 *     but no records.
 * A page behind the last record (page 2 of 40 records; any before the first page 0) and a negative
 * one give status 0, trasfer_cnt 0, more_flag 0 and the message
 * "get_allocation_raw_list_internal, invalid trasfer_cnt !!!"; page 0 of no allocations is silent.
 * Source: <debug directory>/allocations/<entry>/info. */
NIMBA_MGMT_API int32_t get_allocation_raw_list(_GFX_ALLOCATION_RAW_LIST* buffer,
                                               const find_adapter* rec);

/* The worker of get_allocation_raw_list, with the same arguments and results. */
NIMBA_MGMT_API int32_t get_allocation_raw_list_internal(_GFX_ALLOCATION_RAW_LIST* buffer,
                                                        const find_adapter* rec);

/* Sums the sizes of the allocations by device and segment.
 * buffer: all of it is written; zero when there is nothing to tell.
 * The first 49 devices get an entry; each allocation of another is left out with the message
 * "exceed ALLOCATION_SUMMARY_MAX !!! ". An allocation with a negative segmentid is left out with
 * "invalid segmentid !!! "; its device has an entry all the same.
 * Return: 0, or -1 when the driver could not be read.
 * Source: <debug directory>/allocations/<entry>/info. */
NIMBA_MGMT_API int32_t get_device_allocation_summary(_GFX_DEVICE_ALLOCATION_SUMMARY* buffer);

/* As get_device_allocation_summary, with sums of 64 bits. */
NIMBA_MGMT_API int32_t
get_device_allocation_summary_ext1(_GFX_DEVICE_ALLOCATION_SUMMARY_EXT1* buffer);

/* The workers of the two above.
 * chip_id: not used.
 * va_driver: not 0 when "device" is written in base 10, 0 for base 16. */
NIMBA_MGMT_API int32_t get_device_allocation_summary_internal(
    _GFX_DEVICE_ALLOCATION_SUMMARY* buffer, uint32_t chip_id, int32_t va_driver);
NIMBA_MGMT_API int32_t get_device_allocation_summary_internal_ext1(
    _GFX_DEVICE_ALLOCATION_SUMMARY_EXT1* buffer, uint32_t chip_id, int32_t va_driver);

/* Sums the sizes of all allocations by segment.
 * segment_size: receives SEGMENT_SLOT_NUM values in mebibytes, rounded toward zero; all 0 when the
 * driver could not be read, as they were when an error leaves. Sizes count as signed; negative
 * segments do not count. The sums are kept in single precision: beyond 16 million bytes they are
 * rounded. A result outside 32 bits becomes the nearest that fits.
 * chip_id, va_driver: as for get_device_allocation_summary_internal.
 * Return: 0, or -1 when the driver could not be read.
 * Source: <debug directory>/allocations/<entry>/info. */
NIMBA_MGMT_API int32_t get_segment_info_through_allocation(int32_t* segment_size, uint32_t chip_id,
                                                           int32_t va_driver);

/* Lists the open device contexts of the current adapter with their processes.
 * buffer: all of it is written. Up to 50 contexts are listed; as soon as there are 50 the message
 * "exceed ALLOCATION_SUMMARY_MAX!!! " comes, also when no other follows. The names are the
 * processes' own bytes: whoever shows them cleans them. See getPackageNameFromPid for when one is
 * empty.
 * Return: 0; -1 when the directory cannot be opened ("Error opening directory") or listed to its
 * end, or a node cannot be opened or read ("Fail to read devices info. skip..."). The entries
 * before it stay; those from it on are zero. There is no second try. A "handle" without hexadecimal
 * digits or outside the signed 32-bit range raises std::invalid_argument or std::out_of_range; a
 * key or a value, the latter with its newline, of more than 127 characters ends the process.
 * Source: <debug directory>/devices/<entry>/info with a VA driver, else
 * <debug directory>/devices/<entry>/<entry>: lines "key = value"; /proc/<pid>/cmdline, which may
 * wait for the process. */
NIMBA_MGMT_API int32_t get_device_pid_maps(_GFX_DEVICE_PID_MAP* buffer);

/* The worker of get_device_pid_maps.
 * chip_id: not used.
 * va_driver: not 0 for the nodes of a VA driver. */
NIMBA_MGMT_API int32_t get_device_pid_maps_internal(_GFX_DEVICE_PID_MAP* buffer, uint32_t chip_id,
                                                    int32_t va_driver);

/* Takes a snapshot of the current adapter's allocations, merges it into vec_memleak_result and
 * reports the 15 largest groups of like allocations: those of equal width, height, size, hw_format
 * and at_type. Allocations that stay over many calls show a growing hit_count, shapes that pile up
 * a growing sum_count. Groups of equal size come in no defined order.
 * An allocation is the same in two snapshots when handle, width, height, size, hw_format and
 * at_type are. The list is kept over initialisation, exit and a change of the adapter.
 * buffer: all of it is written, or none when the driver could not be read; the kept list then stays
 * as it was, too, also when a value's error leaves. To tell, fill the buffer with something that
 * cannot be a report, such as a negative sum_count. Return: 0 always. Source: <debug
 * directory>/allocations/<entry>/info. */
NIMBA_MGMT_API int32_t get_memleak_info(_GFX_MEMLEAK_INFO* buffer);

/* The worker of get_memleak_info.
 * chip_id, va_driver: as for get_device_allocation_summary_internal. */
NIMBA_MGMT_API void get_memleak_information(_GFX_MEMLEAK_INFO* buffer, uint32_t chip_id,
                                            int32_t va_driver);

/* ---------------------------------------------------------------------------------------------
 * GPU page tables. The driver shows each GPU virtual-memory device, that is the address space of a
 * process, as a directory devices/<entry> with the text nodes "info", which names the process, and
 * "vm_info", the dump of its page tables; and the virtual-memory nodes of each allocation as a text
 * node allocations/<handle>/vm_info. All of it is read below /sys/kernel/debug/dri/0/qv, whatever
 * adapter is current: page tables are those of DRM minor 0, and need no initialisation.
 *
 * Order of use: get_pagetable_data with a null buffer reads the driver and tells the number of
 * records; then, without another read, get_pagetable_data with a buffer copies them out, and
 * get_allocation_data tells and copies the allocations.
 *
 *   - A pass over the devices fails when the directory cannot be opened or listed, when a node of
 *     a device cannot be opened or read, as when the device vanished, or when "ps" cannot be
 *     started; a pass over the allocations when the directory or a node cannot be. "Fail to read
 *     pid info. skip..." and "Fail to read allocation info.. skip and try it again..." tell of
 *     "info" and of the nodes of allocations. A failed pass is tried again after 1 ms, ten passes
 *     in all. What failed passes read stays: a result holds a device once more for each failed pass
 *     that came as far as it.
 *   - The devices "00000000" and "02000000", which belong to no process, and those whose process id
 *     is 0 are left out.
 *   - A number without digits or outside the signed 32-bit range raises std::invalid_argument or
 *     std::out_of_range, which leaves the library through the function that was called. A C host is
 *     terminated by it.
 *   - Every device runs the command "ps -p <pid> -o comm=" through the shell. A process id that is
 *     not decimal digits alone reaches it quoted, as one word.
 * Messages of this section go to standard output, not to pServerPrintCallback.
 * ------------------------------------------------------------------------------------------- */

/* Values of _PAGETABLE_DATA.kind. */
#define PAGETABLE_KIND_PAGE_TABLE 1
#define PAGETABLE_KIND_SUB_TABLE (-1)

/* One entry of a page table or of a sub-table, 48 bytes. An entry is known by its level and index
 * in the address space, and a sub-table entry's owner by these, too. */
typedef struct _PAGETABLE_DATA {
    int64_t pid;          /*  0: process id, from "pid = " of the node "info", base 10 */
    int64_t addr;         /*  8: "addr:" or "Addr:", base 16: at most 0x7FFFFFFF */
    uint16_t Snoop;       /* 16: "Snoop:", the low 16 bits; 0 for a page-table entry */
    uint16_t Segment;     /* 18: "Segment:", memory segment, the low 16 bits; 0 likewise */
    uint16_t LargePage;   /* 20: "LargePage:", the low 16 bits; 0 likewise */
    uint16_t reserved0;   /* 22: zero */
    int32_t level;        /* 24: 0 to 2; 0 is the root's */
    int32_t index;        /* 28: number of the entry */
    int32_t parent_level; /* 32: level of the owning page-table entry; 0 when there is none */
    int32_t parent_index; /* 36: its index; 0 likewise, as always for a page-table entry */
    int32_t kind;         /* 40: PAGETABLE_KIND_PAGE_TABLE or PAGETABLE_KIND_SUB_TABLE */
    uint32_t reserved1;   /* 44: zero */
} _PAGETABLE_DATA;

NIMBA_MGMT_ASSERT(sizeof(_PAGETABLE_DATA) == 48);
NIMBA_MGMT_ASSERT_OFFSET(_PAGETABLE_DATA, pid, 0);
NIMBA_MGMT_ASSERT_OFFSET(_PAGETABLE_DATA, addr, 8);
NIMBA_MGMT_ASSERT_OFFSET(_PAGETABLE_DATA, Snoop, 16);
NIMBA_MGMT_ASSERT_OFFSET(_PAGETABLE_DATA, Segment, 18);
NIMBA_MGMT_ASSERT_OFFSET(_PAGETABLE_DATA, LargePage, 20);
NIMBA_MGMT_ASSERT_OFFSET(_PAGETABLE_DATA, reserved0, 22);
NIMBA_MGMT_ASSERT_OFFSET(_PAGETABLE_DATA, level, 24);
NIMBA_MGMT_ASSERT_OFFSET(_PAGETABLE_DATA, index, 28);
NIMBA_MGMT_ASSERT_OFFSET(_PAGETABLE_DATA, parent_level, 32);
NIMBA_MGMT_ASSERT_OFFSET(_PAGETABLE_DATA, parent_index, 36);
NIMBA_MGMT_ASSERT_OFFSET(_PAGETABLE_DATA, kind, 40);
NIMBA_MGMT_ASSERT_OFFSET(_PAGETABLE_DATA, reserved1, 44);

/* One allocation in the address space of a device, 56 bytes. */
typedef struct _ALLOCATION_DATA {
    int32_t device_pid;        /*  0: "device_pid", base 10 */
    uint32_t reserved0;        /*  4: zero */
    int64_t allocation_handle; /*  8: the name of the allocation's directory, base 16 */
    int64_t size;              /* 16: "size", base 16, bytes */
    int64_t gpu_va;            /* 24: "gpu_va", base 16: GPU virtual address */
    uint8_t reserved1[24];     /* 32: zero */
} _ALLOCATION_DATA;

NIMBA_MGMT_ASSERT(sizeof(_ALLOCATION_DATA) == 56);
NIMBA_MGMT_ASSERT_OFFSET(_ALLOCATION_DATA, device_pid, 0);
NIMBA_MGMT_ASSERT_OFFSET(_ALLOCATION_DATA, reserved0, 4);
NIMBA_MGMT_ASSERT_OFFSET(_ALLOCATION_DATA, allocation_handle, 8);
NIMBA_MGMT_ASSERT_OFFSET(_ALLOCATION_DATA, size, 16);
NIMBA_MGMT_ASSERT_OFFSET(_ALLOCATION_DATA, gpu_va, 24);
NIMBA_MGMT_ASSERT_OFFSET(_ALLOCATION_DATA, reserved1, 32);

/* How the last get_pagetable_data with a null buffer ended: 0, or -1 when the driver could not be
 * read, and also when an error left it. 0 at load. */
extern NIMBA_MGMT_API int32_t Get_Local_Data_Status;

/* Reads the page tables and the allocations of all devices, or copies the page tables out.
 * buffer: null: the driver is read, and what an earlier call kept is replaced. Else it receives all
 * records that the last reading kept, each of them whole: device by device, of each the page-table
 * entries of level 0, 1 and 2, then the sub-table entries of level 0, 1 and 2, each level in the
 * order of the dump.
 * count: with a null buffer the number of records is written; else it is not read and may be null.
 * When the driver could not be read the count stays as it was, and an empty line and "The function
 * is being tested on this Chip......" are written to standard output; so they are by every further
 * call of this function with a buffer and of get_allocation_data, which then write nothing else,
 * until a reading succeeds. To tell, read Get_Local_Data_Status.
 * Errors, with a null buffer: those of the numbers of a dump but its addresses; with a buffer:
 * those of the process ids and addresses, and the records before it are written.
 * Return: 0 always.
 * Source: devices/<entry>/info and vm_info, allocations/<handle>/vm_info, and the command ps. */
NIMBA_MGMT_API int32_t get_pagetable_data(_PAGETABLE_DATA* buffer, uint32_t* count);

/* Copies out the allocations that the last get_pagetable_data with a null buffer kept; it never
 * reads the driver.
 * buffer: null asks for the number of records. Else it receives all of them, in the order in which
 * the system listed them; an allocation has one for each address space that maps it.
 * count: with a null buffer the number of records is written, 0 before the first reading; else it
 * is not read and may be null. It stays as it was when the last reading failed; see
 * get_pagetable_data.
 * Errors, with a buffer: those of the four numbers of a record, and the records before it are
 * written.
 * Return: 0 always. */
NIMBA_MGMT_API int32_t get_allocation_data(_ALLOCATION_DATA* buffer, uint32_t* count);

/* ---------------------------------------------------------------------------------------------
 * Sensors and single values of the current adapter: nodes in the driver's info directory
 * (<pci device>/jw_info or qv_info) and in its hwmon directory. A missing node reads as 0, and so
 * does every node before an adapter is current; nothing of this section is logged.
 * ------------------------------------------------------------------------------------------- */

/* What gpuinfo_get_hwmonFD_value_int takes: nodes of the hwmon directory. */
enum hwmon_node {
    HWMON_NODE_TEMP1_INPUT = 0, /* "temp1_input" */
    HWMON_NODE_FAN0_INPUT = 1,  /* "fan0_input" */
    HWMON_NODE_FAN1_INPUT = 2,  /* "fan1_input" */
    HWMON_NODE_NONE = 3         /* "none" */
};

/* What gpuinfo_get_jwinfoFD_value_int takes: nodes of the info directory. */
enum info_node {
    INFO_NODE_ENGINE_3D_USAGE = 0,      /* "engine_3d_usage" */
    INFO_NODE_ENGINE_VCP_USAGE = 1,     /* "engine_vcp_usage" */
    INFO_NODE_ENGINE_VCP_INFO = 2,      /* "engine_vcp_info" */
    INFO_NODE_ENGINE_VPP_USAGE = 3,     /* "engine_vpp_usage" */
    INFO_NODE_FAN_SPEED = 4,            /* "fan_speed" */
    INFO_NODE_VBIOS_VERSION = 5,        /* "vbios_version" */
    INFO_NODE_PMP_VERSION = 6,          /* "pmp_version" */
    INFO_NODE_RELEASE_DATE = 7,         /* "release_date" */
    INFO_NODE_DRIVER_VERSION = 8,       /* "driver_version" */
    INFO_NODE_MIU_CHANNEL_NUM = 9,      /* "miu_channel_num" */
    INFO_NODE_SLICE_MASK = 10,          /* "slice_mask" */
    INFO_NODE_FB_SIZE = 11,             /* "fb_size" */
    INFO_NODE_FREE_FB_MEM = 12,         /* "free_fb_mem" */
    INFO_NODE_ECLK = 13,                /* "eclk": engine clock */
    INFO_NODE_VCLK = 14,                /* "vclk": video clock */
    INFO_NODE_MCLK = 15,                /* "mclk": memory clock */
    INFO_NODE_ENABLE_PERF = 16,         /* "enable_perf" */
    INFO_NODE_ENABLE_USAGE = 17,        /* "enable_usage" */
    INFO_NODE_FPS_COUNT = 18,           /* "fps_count" */
    INFO_NODE_RXA_BLT_SCN_CNT = 19,     /* "rxa_blt_scn_cnt" */
    INFO_NODE_MISC_CTL_FLAG = 20,       /* "misc_ctl_flag" */
    INFO_NODE_POWER_MODE = 21,          /* "power_mode" */
    INFO_NODE_POWER_CASE = 22,          /* "power_case" */
    INFO_NODE_PWM_WAIT_COUNT = 23,      /* "pwm_wait_count" */
    INFO_NODE_DVFS_MODE = 24,           /* "dvfs_mode" */
    INFO_NODE_DVFS_CONTROL_PARAMS = 25, /* "dvfs_control_params" */
    INFO_NODE_DVFS_CLK_VOLTAGE = 26,    /* "dvfs_clk_voltage" */
    INFO_NODE_DVFS_LEVEL = 27,          /* "dvfs_level" */
    INFO_NODE_SEGMENT_INFO = 28,        /* "segment_info" */
    INFO_NODE_CORECLK = 29,             /* "coreclk": core clock */
    INFO_NODE_NONE = 30                 /* "none" */
};

/* Reads the temperature.
 * count: the number of values read: 1, or 0 when the node is missing, empty or without a number.
 * Return: the number that begins the node "temp1_input" of the hwmon directory, in the driver's
 * unit (a text such as "45 *C" is in degrees Celsius); 0 when there is none. */
NIMBA_MGMT_API int32_t gpuinfo_get_temparature_value_int(uint32_t* count);

/* Reads a number from the hwmon directory.
 * index: one of enum hwmon_node. The names of enum info_node follow: 4 stands for
 * "engine_3d_usage", which is then looked for in the hwmon directory. Outside 0 to 34 there is no
 * node.
 * count: the number of bytes read, 0 to 64.
 * Return: the decimal integer that begins the node's first 64 bytes; 0 when there is none. */
NIMBA_MGMT_API int32_t gpuinfo_get_hwmonFD_value_int(int32_t index, uint32_t* count);

/* Reads a number from the info directory.
 * index: one of enum info_node; -4 to -1 stand for the names of enum hwmon_node, and outside -4 to
 * 30 there is no node.
 * Return: the decimal integer that begins the node's first 64 bytes; 0 when there is none. */
NIMBA_MGMT_API int32_t gpuinfo_get_jwinfoFD_value_int(int32_t index);

/* Sets and clears bits of the driver's control flag: reads the node "misc_ctl_flag" of the info
 * directory, writes it once, in decimal, and reads it again for the driver's sake.
 * set, clear: bits; one that is in both is set. A node without a number counts as 0. */
NIMBA_MGMT_API void gpuinfo_set_misc_ctl_flag(int32_t set, int32_t clear);

/* ---------------------------------------------------------------------------------------------
 * Power and DVFS (dynamic voltage and frequency scaling) of the current adapter: text nodes in the
 * driver's info directory. The driver takes one command per write; one that it rejects is not
 * reported, so read again after writing.
 * ------------------------------------------------------------------------------------------- */

/* Values of DvfsRegisterState.dvfs_level. */
#define DVFS_LEVEL_BALANCE 0
#define DVFS_LEVEL_LOW_POWER 1
#define DVFS_LEVEL_PERFORMANCE 2

/* The power and DVFS settings, 108 bytes. Clocks and voltage are in the driver's units. */
typedef struct DvfsRegisterState {
    uint32_t power_mode;          /*   0: "power_mode" */
    int16_t power_gating_3d;      /*   4: "pwm_wait_count", as all gating: the low 16 bits */
    int16_t clock_gating_3d;      /*   6 */
    int16_t power_gating_vcp;     /*   8 */
    int16_t clock_gating_vcp;     /*  10 */
    int16_t power_gating_vpp;     /*  12 */
    int16_t clock_gating_vpp;     /*  14 */
    uint32_t dvfs_mode;           /*  16: "dvfs_mode" */
    uint32_t gfx_check_size;      /*  20: "dvfs_control_params", as all sizes and thresholds */
    uint32_t gfx_high_threshold;  /*  24 */
    uint32_t gfx_low_threshold;   /*  28 */
    uint32_t vcp0_check_size;     /*  32 */
    uint32_t vcp0_high_threshold; /*  36 */
    uint32_t vcp0_low_threshold;  /*  40 */
    uint32_t vcp1_check_size;     /*  44 */
    uint32_t vcp1_high_threshold; /*  48 */
    uint32_t vcp1_low_threshold;  /*  52 */
    uint32_t vpp_check_size;      /*  56 */
    uint32_t vpp_high_threshold;  /*  60 */
    uint32_t vpp_low_threshold;   /*  64 */
    int32_t gfx_clock;            /*  68: "dvfs_clk_voltage" */
    uint32_t video_clock;         /*  72: "vclk"; never written to the driver; 0: no such node */
    uint32_t reserved0[2];        /*  76: neither filled nor written to the driver */
    int32_t gfx_voltage;          /*  84: "dvfs_clk_voltage" */
    uint32_t reserved1[3];        /*  88: neither filled nor written to the driver */
    uint32_t memory_clock;        /* 100: "mclk"; never written to the driver; 0: no such node */
    uint32_t dvfs_level;          /* 104: "dvfs_level": one of DVFS_LEVEL_* */
} DvfsRegisterState;

NIMBA_MGMT_ASSERT(sizeof(DvfsRegisterState) == 108);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, power_mode, 0);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, power_gating_3d, 4);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, clock_gating_3d, 6);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, power_gating_vcp, 8);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, clock_gating_vcp, 10);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, power_gating_vpp, 12);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, clock_gating_vpp, 14);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, dvfs_mode, 16);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, gfx_check_size, 20);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, gfx_high_threshold, 24);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, gfx_low_threshold, 28);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, vcp0_check_size, 32);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, vcp0_high_threshold, 36);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, vcp0_low_threshold, 40);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, vcp1_check_size, 44);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, vcp1_high_threshold, 48);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, vcp1_low_threshold, 52);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, vpp_check_size, 56);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, vpp_high_threshold, 60);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, vpp_low_threshold, 64);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, gfx_clock, 68);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, video_clock, 72);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, reserved0, 76);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, gfx_voltage, 84);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, reserved1, 88);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, memory_clock, 100);
NIMBA_MGMT_ASSERT_OFFSET(DvfsRegisterState, dvfs_level, 104);

/* Three clocks, 12 bytes, in the driver's unit. */
typedef struct DvfsClockInfo {
    uint32_t engine_clock; /* 0: "eclk" */
    uint32_t video_clock;  /* 4: "vclk" */
    uint32_t memory_clock; /* 8: "mclk" */
} DvfsClockInfo;

NIMBA_MGMT_ASSERT(sizeof(DvfsClockInfo) == 12);
NIMBA_MGMT_ASSERT_OFFSET(DvfsClockInfo, engine_clock, 0);
NIMBA_MGMT_ASSERT_OFFSET(DvfsClockInfo, video_clock, 4);
NIMBA_MGMT_ASSERT_OFFSET(DvfsClockInfo, memory_clock, 8);

/* Whether the state that was last seen is the driver's: 1 after get_data_from_dvfs_register and at
 * load, 0 after set_data_to_dvfs_register. The library never reads it. */
extern NIMBA_MGMT_API int32_t dvfs_register_state_data_flushed;

/* Reads the settings. The library keeps a copy of the whole record, reserved words included, with
 * which later writes compare.
 * state: a field whose node or key is missing, or has no number behind the key, stays as it was;
 * the two read-only clocks are then 0, and the level stays when no known word is found. A key that
 * its own node lacks is also found in the text that a longer node read before it left in the same
 * 512 bytes.
 * valid: set to 1.
 * Return: 0 always.
 * Source: "power_mode", "pwm_wait_count", "dvfs_mode", "dvfs_control_params", "dvfs_clk_voltage",
 * "vclk", "mclk", "dvfs_level" of the info directory. */
NIMBA_MGMT_API int32_t get_data_from_dvfs_register(DvfsRegisterState* state, uint32_t* valid);

/* Writes each field that differs from what was last read to its node, one command each: power mode;
 * gating: power of 3D, VCP, VPP, then clock of the same; DVFS mode; level, where any other value
 * than 1 and 2 stands for balance; check sizes of GFX, VCP0, VCP1, VPP, then high, then low
 * thresholds of the same; clock; voltage. Before the first read the fields are compared with 0. A
 * write does not change what is compared with: the same write does the same again, and a field that
 * is set back to what was read is not written. A negative gating value is written as eight digits.
 * Return: 0 always, also when a node is missing or the driver rejects a command. */
NIMBA_MGMT_API int32_t set_data_to_dvfs_register(const DvfsRegisterState* state);

/* The same, without a change of dvfs_register_state_data_flushed. Return: 0 always. */
NIMBA_MGMT_API int32_t gpuinfo_get_data_from_dvfs_register(DvfsRegisterState* state);
NIMBA_MGMT_API int32_t gpuinfo_set_data_to_dvfs_register(const DvfsRegisterState* state);

/* Reads the three clocks, as gpuinfo_get_jwinfoFD_value_int reads them: 0 for one without a node.
 * Return: 0 always. */
NIMBA_MGMT_API int32_t get_dvfs_info(DvfsClockInfo* info);

/* ---------------------------------------------------------------------------------------------
 * Memory segments of the current adapter, and the memory of the system
 * ------------------------------------------------------------------------------------------- */

/* Memory segments in a SegmentInfo. */
#define SEGMENT_INFO_NUM 16

/* Use and size of the memory segments, 128 bytes. The unit is the source's: the node "segment_info"
 * is divided by 1000, the other sources are in MiB. */
typedef struct SegmentInfo {
    uint32_t used_size[SEGMENT_INFO_NUM];  /*  0 */
    uint32_t total_size[SEGMENT_INFO_NUM]; /* 64 */
} SegmentInfo;

NIMBA_MGMT_ASSERT(sizeof(SegmentInfo) == 128);
NIMBA_MGMT_ASSERT_OFFSET(SegmentInfo, used_size, 0);
NIMBA_MGMT_ASSERT_OFFSET(SegmentInfo, total_size, 64);

/* Chooses where get_segment_info reads, once for the adapter in slot rec->chip_id_idx, which must
 * be the current one: a Nimba chip's node "segment_info", any other chip's heaps, or, when the
 * attempt to read them fails, the allocations.
 * Return: 1, or -1 when the attempt failed. Without a directory of heaps "Error opening directory"
 * is written to standard output. */
NIMBA_MGMT_API int32_t segment_init(find_adapter* rec);

/* Reads use and size of the segments from the source that segment_init chose; before it, from the
 * allocations.
 * info: all 32 words are written. From the node: segments 0 to 15, those from 5 on added to segment
 * 4, too. From the heaps: heaps 0 to 3, to which the use by allocations is added, with 4 standing
 * for the allocations of all segments from 4 on. From the allocations: their use alone, in segments
 * 0 to 4, and no sizes.
 * Errors, with the allocations: as told for video memory; passes may take 50 ms. That heaps cannot
 * be read is not told but by "Error opening directory" on standard output. Return: from the node 1
 * or -1; else what get_segment_info_through_allocation returned: 0 or -1. */
NIMBA_MGMT_API int32_t get_segment_info(SegmentInfo* info);

/* Reads the node "segment_info" of the info directory, up to 512 bytes of it.
 * info: zero it before: what a segment's line does not tell is divided, too. Segments are read from
 * 0 on until one is missing, at most 16; both sizes of each are divided by 1000. With more than
 * five, those from 5 on are added to segment 4 and stay. Return: 1, or -1: fewer than 20 bytes
 * could be read, or there is no segment 0. */
NIMBA_MGMT_API int32_t gpuinfo_get_segment_info(SegmentInfo* info);

/* Reads the driver's heaps: <debug directory>/heaps/<heap>/info of heap_invalid, heap_local,
 * heap_pcie_unsnoop and heap_pcie_snoop, up to 512 bytes of each, which are segments 0 to 3.
 * info: sizes in MiB, each cut to 32 bits of bytes before: a heap of 4 GiB and more shows its size
 * modulo 4 GiB; one without a number behind its key is 0. Segment 4 is set to 0, the others stay as
 * they were. Behind the text of a heap stands the rest of a longer one before it, so that a heap
 * without a node shows the sizes of the heap before.
 * unused: ignored.
 * Return: 1, or -1: no such directory ("Error opening directory" on standard output), or a heap
 * lacks a size; what was read before stays. */
NIMBA_MGMT_API int32_t gpuinfo_get_kmd_segment_info(SegmentInfo* info, int32_t unused);

/* Runs a shell command and reads what it writes on standard output.
 * buf, size: all size bytes are cleared; at most size - 1 are read, and then the command's end is
 * waited for. With a size of 0 nothing is read.
 * Return: the number of bytes read, or 1 when the command cannot be started ("Failed to run
 * command" on standard output, and the buffer as it was). */
NIMBA_MGMT_API int32_t runShellCommand(const char* command, char* buf, uint32_t size);

/* Asks "dmidecode -t memory" for the width of the system's memory.
 * Return: bits: of two modules of one width on two channels, or of four in two equal pairs, the
 * sum; else the width of the first; 0: it tells none, as for a user who may not read it; 1: no
 * command can be started ("Failed to run command" on standard output). */
NIMBA_MGMT_API int32_t runShellCommand_getBitWidth(void);

/* Asks "dmidecode -t memory" for the DDR generation of the system's memory.
 * Return: 4 or 5, that of the first module, and 4 when it is another or unknown; 1: no command can
 * be started ("Failed to run command" on standard output). */
NIMBA_MGMT_API int32_t runShellCommand_getMemoryTYpe(void);

/* ---------------------------------------------------------------------------------------------
 * Frame rate, memory bandwidth and engine use of the current adapter, from the info directory or
 * from functions of the kernel-interface library. Run the *_init functions after gfx_global_init,
 * which does not; they choose the functions by name. A query of hardware information or engine use
 * before a success of its *_init writes nothing, and neither does one whose function is gone with
 * its library. After another gfx_global_init the functions of the same names are called: run the
 * *_init functions again.
 * ------------------------------------------------------------------------------------------- */

/* Frame rates, 16 bytes. When time stamps differ by less than single precision shows, a rate is
 * infinite or no number. */
typedef struct FpsInfo {
    float flips;         /*  0: flips per second since the call before */
    float blits;         /*  4: blits per second since the call before */
    float flips_blits;   /*  8: the sum of the two */
    float average_since; /* 12: since fps_init: the sum; from the library: flips alone */
} FpsInfo;

NIMBA_MGMT_ASSERT(sizeof(FpsInfo) == 16);
NIMBA_MGMT_ASSERT_OFFSET(FpsInfo, flips, 0);
NIMBA_MGMT_ASSERT_OFFSET(FpsInfo, blits, 4);
NIMBA_MGMT_ASSERT_OFFSET(FpsInfo, flips_blits, 8);
NIMBA_MGMT_ASSERT_OFFSET(FpsInfo, average_since, 12);

/* The kernel-interface library's hardware information, 48 bytes; the words are its own. */
typedef struct BandwidthInfo {
    uint32_t words[12]; /* 0 */
} BandwidthInfo;

NIMBA_MGMT_ASSERT(sizeof(BandwidthInfo) == 48);

/* The kernel-interface library's figures of how busy the engines are, 40 bytes; the words are its
 * own. Words 0, 1, 3 and 6 are never written. */
typedef struct GpuBusyInfo {
    uint32_t words[10]; /* 0 */
} GpuBusyInfo;

NIMBA_MGMT_ASSERT(sizeof(GpuBusyInfo) == 40);

/* 1: frames are counted by the kernel-interface library; 0, also at load: by the driver's nodes.
 * Set by fps_init. */
extern NIMBA_MGMT_API int32_t use_IOCTL_get_fps;

/* Which function tells engine use: 1 "qvGetHwqInfo", 2, also at load, "gfx_get_usage_info", 3
 * "gfx_get_usage_info_ext". Set by gfxbusy_init; a host may set it to another that was found. */
extern NIMBA_MGMT_API int32_t gfxbusy_apiversion;

/* Reads the driver's counts of frames.
 * flip_count, time_stamp: from "fps_count": flips, and the time of the last one in nanoseconds.
 * blit_count: from "rxa_blt_scn_cnt". What a node does not tell stays as it was: pass zeros.
 * Return: the number of values read from "rxa_blt_scn_cnt": 1, 0, or -1 when it is empty. */
NIMBA_MGMT_API int32_t gpuinfo_get_fps_count(uint32_t* flip_count, int64_t* time_stamp,
                                             int64_t* blit_count);

/* Chooses where frames are counted (see use_IOCTL_get_fps) and takes the first sample. The
 * kernel-interface library counts when it has "gfx_flip_count" and "gfx_get_struct_size".
 * Return: 0 always. */
NIMBA_MGMT_API int32_t fps_init(void);

/* Computes frame rates since the last call that returned 0 (or fps_init) and since fps_init, in
 * single precision. Before fps_init the driver's nodes are read, and rates are those since zero.
 * info: all four are written in node mode; flips and average_since alone in library mode.
 * Return: 0, or -1 when the time stamp is still that of before, as also when nothing tells it; then
 * nothing is written. */
NIMBA_MGMT_API int32_t get_fps_info(FpsInfo* info);

/* Chooses the functions that tell hardware information, and prepares it by calling the first of
 * them once, unless pdev is null: "gfx_init_hwinfo", "gfx_deinit_hwinfo", and "gfx_get_hwinfo_ext"
 * or else "gfx_get_hwinfo". Where one of the three is missing, "qv_init_hwinfo", "qv_deinit_hwinfo"
 * and "qv_get_hwinfo" take their places; "gfx_get_hwinfo_ext" is kept, and goes before the last.
 * Return: 0; or -1, logged: one of the three is still missing, or the preparation failed. */
NIMBA_MGMT_API int32_t bandwidth_init(void);

/* Reads hardware information.
 * info: with "gfx_get_hwinfo_ext" whatever that writes; else words 0 to 3, and on DEVICE_ID_QV_M20
 * words 8 and 9, which are the library's 5 and 6, on other chips words 4 to 11.
 * Return: 0 always. */
NIMBA_MGMT_API int32_t get_bandwidth_info(BandwidthInfo* info);

/* Chooses the function that tells engine use (see gfxbusy_apiversion), and logs which.
 * Return: 0; or -1, logged, when the library has neither of the first two; the version then stays.
 */
NIMBA_MGMT_API int32_t gfxbusy_init(void);

/* Reads engine use.
 * info: version 3: words 2, 4, 5, and on DEVICE_ID_QV_M40 words 7, 8, 9, on other chips word 7,
 * which is the library's 3. Versions 1 and 2: words 2, 4 and 7, which are the library's 0, 1, 2.
 * Any other version: nothing. Return: 0 always. */
NIMBA_MGMT_API int32_t get_gpubusy_info(GpuBusyInfo* info);

/* ---------------------------------------------------------------------------------------------
 * Adapter summary of the slot rec->chip_id_idx, of which chip and card are used. The first summary
 * reads nodes of the current adapter, too: run gfx_global_init for the slot first. What cannot
 * change is "kept": read at the first call for a chip, and until a call for another chip_id. Two
 * adapters of one chip share what the first one's call found, and gfx_global_exit forgets nothing.
 * "The driver's file" is /proc/gpuinfo_<card>, of which the first 1024 bytes are read.
 * ------------------------------------------------------------------------------------------- */

/* A type of display connector, 16 bytes. */
typedef struct connect_type {
    char name[12]; /*  0: as the driver and DRM name it */
    uint32_t bit;  /* 12: in adapter_summary.display_type_mask */
} connect_type;

NIMBA_MGMT_ASSERT(sizeof(connect_type) == 16);
NIMBA_MGMT_ASSERT_OFFSET(connect_type, name, 0);
NIMBA_MGMT_ASSERT_OFFSET(connect_type, bit, 12);

#define NIMBA_CONNECT_TYPE_NUM 5

/* The connectors that are known: "VGA" 1, "DVI" 2, "HDMI" 4, "DP" 8, "EDP" 16. */
extern NIMBA_MGMT_API const connect_type support_CONNECT_type_list[NIMBA_CONNECT_TYPE_NUM];

/* Clocks, memory, display outputs and PCIe link, 48 bytes. Clocks are in the driver's units. Nodes
 * are those of the info directory. */
typedef struct adapter_summary {
    uint32_t eclk;              /*  0: node "eclk" */
    uint32_t vclk;              /*  4: node "vclk" */
    uint32_t mclk;              /*  8: node "mclk" */
    uint32_t fb_size;           /* 12: node "fb_size", in the driver's unit; kept */
    uint32_t memory_data_rate;  /* 16: Nimba chips: mclk * 2; others: MT/s, from dmidecode, kept */
    uint32_t coreclk;           /* 20: node "coreclk" */
    uint32_t display_port_num;  /* 24: display outputs; kept */
    uint32_t display_type_mask; /* 28: bits of support_CONNECT_type_list; kept */
    uint32_t miu_channel_num;   /* 32: node "miu_channel_num": memory channels; kept */
    uint32_t pcie_link_width;   /* 36: lanes, from "current_link_width" of the PCI device; kept */
    uint32_t memory_type;       /* 40: DDR generation, see runShellCommand_getMemoryTYpe; kept.
                                 * Not written for Nimba chips. */
    uint32_t memory_bit_width;  /* 44: bits, see runShellCommand_getBitWidth; kept. Not written
                                 * for Nimba chips. */
} adapter_summary;

NIMBA_MGMT_ASSERT(sizeof(adapter_summary) == 48);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary, eclk, 0);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary, vclk, 4);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary, mclk, 8);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary, fb_size, 12);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary, memory_data_rate, 16);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary, coreclk, 20);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary, display_port_num, 24);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary, display_type_mask, 28);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary, miu_channel_num, 32);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary, pcie_link_width, 36);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary, memory_type, 40);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary, memory_bit_width, 44);

/* Versions, fill rates, resolutions, use and temperature, 232 bytes, all from the driver's file,
 * in its units. "Kept": read at the first call for the chip. A resolution is (width << 48) +
 * (height << 32) + refresh rate. */
typedef struct adapter_summary_ext2 {
    uint64_t driver_version;         /*   0: (a << 32) + (b << 16) + c of "a.b.c" in hex; kept */
    uint64_t firmware_version;       /*   8: (a << 48) + (b << 32) + (c << 16) + d; kept */
    char firmware_name[32];          /*  16: up to 31 characters and a NUL; kept */
    uint32_t pixel_fillrate;         /*  48: kept */
    uint32_t texture_fillrate;       /*  52: kept */
    uint32_t memory_clock_freq;      /*  56 */
    uint32_t reserved_60;            /*  60: 0 */
    uint64_t max_resolution_hdmi_dp; /*  64: of HDMI, or else of DP; kept */
    uint64_t max_resolution_vga;     /*  72: kept */
    uint32_t gpu_memory_usage;       /*  80: 0xFFFFFFFF: not told, as for the next four */
    uint32_t gpu_use_rate_3d;        /*  84 */
    uint32_t gpu_use_rate_video;     /*  88 */
    uint32_t gpu_use_rate_vpp;       /*  92 */
    uint32_t realtime_temperature;   /*  96 */
    uint32_t reserved_100[3];        /* 100: 0 */
    uint32_t pcie_gen;               /* 112: generation of the PCIe link; kept */
    uint32_t reserved_116[29];       /* 116: 0 */
} adapter_summary_ext2;

NIMBA_MGMT_ASSERT(sizeof(adapter_summary_ext2) == 232);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, driver_version, 0);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, firmware_version, 8);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, firmware_name, 16);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, pixel_fillrate, 48);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, texture_fillrate, 52);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, memory_clock_freq, 56);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, max_resolution_hdmi_dp, 64);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, max_resolution_vga, 72);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, gpu_memory_usage, 80);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, gpu_use_rate_3d, 84);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, gpu_use_rate_video, 88);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, gpu_use_rate_vpp, 92);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, realtime_temperature, 96);
NIMBA_MGMT_ASSERT_OFFSET(adapter_summary_ext2, pcie_gen, 112);

/* Describes the adapter in slot rec->chip_id_idx, which should be the current one.
 * out: all words but the last two; those also unless the chip is a Nimba one (chip_id 0, of an
 * empty slot, is none). What cannot be read is 0; memory type and width then are what the
 * runShellCommand functions return: 4 and 0 when dmidecode tells nothing, as for any user but root,
 * and 1 when no command can be started. Display outputs are those of the driver's file, if it has
 * the chip's device id, a count of ports and a type that is known; else, but for Nimba chips, those
 * of the PCI device's directory drm/card<card>. In the list of the driver's file "EDP" counts as
 * "DP", too.
 * On standard output, when what is kept is read: "Failed to run command", up to three times;
 * "get_line_from_string fail, string too long!!!" when that list has 100 characters or more, and is
 * ignored; "Error opening drm directory". Then dmidecode runs three times, whatever the chip.
 * Return: 0 always. */
NIMBA_MGMT_API int32_t get_adapter_summary(adapter_summary* out, find_adapter* rec);

/* Describes the adapter in slot rec->chip_id_idx by the driver's file of its card.
 * out: all 232 bytes; what is not told, or has no number, is 0, or 0xFFFFFFFF in the five words at
 * the bytes 80 to 99. When the file cannot be read nothing else is told, not even what is kept. The
 * lines of what is kept are read in the order versions, fill rates, resolutions, PCIe generation: a
 * number that one of them lacks is the one that was read last in its place, by whichever line
 * before it, and 0 before the first. Return: 0 always. */
NIMBA_MGMT_API int32_t get_adapter_summary_ext2(adapter_summary_ext2* out, find_adapter* rec);

/* The workers of the two. Return: 0 always. */
NIMBA_MGMT_API int32_t gpu_info_get_adapter_summary(adapter_summary* out, find_adapter* rec);
NIMBA_MGMT_API int32_t gpu_info_get_adapter_summary_ext2(adapter_summary_ext2* out,
                                                         find_adapter* rec);

/* ---------------------------------------------------------------------------------------------
 * GPU preferences: which GPU an application should use, kept in the user's file
 * $HOME/.local/share/wmt_gfx_util.ini (the directory is not created).
 * ------------------------------------------------------------------------------------------- */

/* One application's preference, 1116 bytes. Texts are NUL-terminated when shorter than their field.
 * Texts with a newline, ";" or, in FileName, "]" do not survive the file; blanks at either end of
 * FullPath and PreferGpuName are dropped on reading. */
typedef struct _UTIL_GPU_PREFERENCE_NODE {
    char FileName[64];      /*    0: the application's file name without directory: the key */
    char FullPath[512];     /*   64: full path of the executable */
    int32_t GpuPrefer;      /*  576: the preference value */
    char PreferGpuName[16]; /*  580: display name of the preferred GPU */
    uint16_t domain;        /*  596: PCI location of the preferred GPU ("PreferGpuBusID") */
    uint8_t bus;            /*  598 */
    uint8_t device;         /*  599 */
    uint8_t function;       /*  600 */
    uint8_t reserved[515];  /*  601: zero in records read from the file; compared with the rest */
} _UTIL_GPU_PREFERENCE_NODE;

NIMBA_MGMT_ASSERT(sizeof(_UTIL_GPU_PREFERENCE_NODE) == 1116);
NIMBA_MGMT_ASSERT_OFFSET(_UTIL_GPU_PREFERENCE_NODE, FileName, 0);
NIMBA_MGMT_ASSERT_OFFSET(_UTIL_GPU_PREFERENCE_NODE, FullPath, 64);
NIMBA_MGMT_ASSERT_OFFSET(_UTIL_GPU_PREFERENCE_NODE, GpuPrefer, 576);
NIMBA_MGMT_ASSERT_OFFSET(_UTIL_GPU_PREFERENCE_NODE, PreferGpuName, 580);
NIMBA_MGMT_ASSERT_OFFSET(_UTIL_GPU_PREFERENCE_NODE, domain, 596);
NIMBA_MGMT_ASSERT_OFFSET(_UTIL_GPU_PREFERENCE_NODE, bus, 598);
NIMBA_MGMT_ASSERT_OFFSET(_UTIL_GPU_PREFERENCE_NODE, device, 599);
NIMBA_MGMT_ASSERT_OFFSET(_UTIL_GPU_PREFERENCE_NODE, function, 600);
NIMBA_MGMT_ASSERT_OFFSET(_UTIL_GPU_PREFERENCE_NODE, reserved, 601);

/* Path of the preference file; empty until the first set or get, and empty after one that found
 * HOME unset, empty or too long for it. */
extern NIMBA_MGMT_API char UTIL_CONFIG_PATH[512];

/* Records an application's preference and rewrites the file. The file is loaded first if neither a
 * set nor a get ran since the library was loaded. The first record whose FileName is the file name
 * in node->FullPath is replaced; without one the node is added. An unchanged record writes nothing.
 * node: FileName must be the file name in FullPath, or every set adds a record.
 * Return: 0 always; a file that cannot be written is logged. */
NIMBA_MGMT_API int32_t set_gpu_preference(const _UTIL_GPU_PREFERENCE_NODE* node);

/* Copies the preferences out, in file order. The file is loaded first if neither a set nor a get
 * ran since the library was loaded; after gfx_global_exit and gfx_global_init the list is empty.
 * buffer: receives the records; null asks for their number only.
 * count: in, the buffer's capacity in records; out, the number copied (of all records when buffer
 * is null). Size the buffer for at least one record: one is copied whatever the capacity, if there
 * is one. Return: 0 always. */
NIMBA_MGMT_API int32_t get_gpu_preference(_UTIL_GPU_PREFERENCE_NODE* buffer, int32_t* count);

/* Removes the first record whose FileName is the file name in node->FullPath and rewrites the file,
 * also when there is none. It never loads the file: before the first set or get it changes
 * nothing, and after gfx_global_exit and gfx_global_init it leaves a file without records. To
 * remove safely, call get_gpu_preference first and do not initialise or exit in between. node: only
 * FullPath is read. Return: 0 always; a file that cannot be written is logged. */
NIMBA_MGMT_API int32_t remove_gpu_preference(const _UTIL_GPU_PREFERENCE_NODE* node);

/* The workers of the three above, with the same arguments and results. */
NIMBA_MGMT_API int32_t SetGPUPreference_config(const _UTIL_GPU_PREFERENCE_NODE* node);
NIMBA_MGMT_API int32_t GetGPUPreference_config(_UTIL_GPU_PREFERENCE_NODE* buffer, int32_t* count);
NIMBA_MGMT_API int32_t RemoveGPUPreference_config(const _UTIL_GPU_PREFERENCE_NODE* node);

/* Empty the list of preferences; gfx_global_init and gfx_global_exit call them. The file stays.
 * Return: 0. */
NIMBA_MGMT_API int32_t initGPUPreference_config(void);
NIMBA_MGMT_API int32_t uninitGPUPreference_config(void);

#ifdef __cplusplus
} /* extern "C" */

/* ---------------------------------------------------------------------------------------------
 * C++ hosts: globals and functions with C++ types, exported under type-qualified names. The host
 * and the library must share the C++ standard library.
 * ------------------------------------------------------------------------------------------- */

/* The leak detector's list: every allocation of the last snapshot, those that were known before it
 * first. Empty at load and after a snapshot without allocations; replaced by every get_memleak_info
 * that can read the driver. */
extern NIMBA_MGMT_API std::vector<_GFX_ALLOCATION_INFO> vec_memleak_result;

/* Appends a record for each allocation to `list` in listing order, without clearing it: one pass.
 * chip_id: not used.
 * va_driver: not 0 when "device" is written in base 10, 0 for base 16.
 * Return: 0, or -1 when the pass failed; the records before the failure are in the list. */
NIMBA_MGMT_API int32_t get_current_allocation_data_try(std::vector<_GFX_ALLOCATION_INFO>& list,
                                                       uint32_t chip_id, int32_t va_driver);

/* The same with up to ten passes, 5 ms after each that failed. Records of failed passes stay in
 * front. Return: that of the last pass. */
NIMBA_MGMT_API int32_t get_current_allocation_data(std::vector<_GFX_ALLOCATION_INFO>& list,
                                                   uint32_t chip_id, int32_t va_driver);

/* Merges a snapshot into the kept list. A kept record for which the snapshot holds the same
 * allocation gets 1 more in hit_count, and the first such record leaves the snapshot; a kept record
 * without one leaves the kept list. What is left in the snapshot is then appended to the kept list
 * and stays in the snapshot, too. The two are different lists. Without memory std::bad_alloc
 * leaves, and both are as they were. */
NIMBA_MGMT_API void compare_memleak_list(std::vector<_GFX_ALLOCATION_INFO>& snapshot,
                                         std::vector<_GFX_ALLOCATION_INFO>& kept);

/* The order of a leak report. Return: whether the sum_count of `a` is greater than that of `b`. */
NIMBA_MGMT_API bool compare_allo_sum(const _GFX_ALLOCATION_INFO& a, const _GFX_ALLOCATION_INFO& b);

/* Tells the name of a process: the first argument of its command line, whole with its directory
 * when it is shorter than `size`. Of a longer one, what stands before its first space and there
 * behind the last "/", cut to size - 1 bytes. It is the process's own text: any bytes but NUL, a
 * newline at its end included. pid: the process id. destination, size: receives the name and a NUL,
 * nothing when size is 0 or less. The name is empty when the command line cannot be opened, as when
 * the process has gone. Return: 0, or -1 when the command line is empty, as that of a kernel
 * thread, or cannot be read; the destination then stays as it was: in a process map, empty. Source:
 * the first 511 characters of the first line of /proc/<pid>/cmdline. */
NIMBA_MGMT_API int32_t getPackageNameFromPid(int32_t pid, char* destination, int32_t size);

/* The texts of one virtual-memory node, as the driver printed them. */
struct allcation_Info {
    std::string device_pid;        /* "device_pid": process id, decimal */
    std::string device_pname;      /* "device_pname": name of the process */
    std::string allocation_handle; /* name of the allocation's directory, hexadecimal */
    std::string gpu_va;            /* "gpu_va": GPU virtual address, hexadecimal */
    std::string size;              /* "size": bytes, hexadecimal */
};

struct vidmm_vm_pte_elt3k;

/* One page-table entry, 144 bytes. Texts are NUL-terminated and cut to 47 bytes. */
struct vidmm_vm_pt {
    char Buffer[48];                    /*   0: "buffer:" */
    char Addr[48];                      /*  48: "addr:", hexadecimal digits */
    vidmm_vm_pt* entries;               /*  96: first child in the next level, or null */
    vidmm_vm_pt* parent;                /* 104: owner in the level above, or null: only the first of
                                                a run of siblings has it */
    int32_t PT_Level;                   /* 112: 0, 1 or 2 */
    int32_t PT_index;                   /* 116: index */
    vidmm_vm_pte_elt3k* PT_sub_entries; /* 120: first entry of its sub-table, or null */
    vidmm_vm_pt* next;                  /* 128: next sibling, or null */
    vidmm_vm_pt* pre;                   /* 136: previous sibling, or null */
};

/* One sub-table entry, 104 bytes. */
struct vidmm_vm_pte_elt3k {
    uint16_t Snoop;           /*  0: "Snoop:", the low 16 bits */
    uint16_t Segment;         /*  2: "Segment:", the low 16 bits */
    char Addr[48];            /*  4: "Addr:", hexadecimal digits */
    int32_t LargePage;        /* 52: "LargePage:"; without it that of the sub-table line before */
    int32_t ST_Level;         /* 56: 0, 1 or 2 */
    int32_t Index;            /* 60: index */
    vidmm_vm_pte_elt3k* next; /* 64: next entry of the run, or null */
    vidmm_vm_pte_elt3k* pre;  /* 72: previous entry of the run, or null */
    vidmm_vm_pt* parent;      /* 80: owner, or null: only the first of a run has it */
    int32_t found;            /* 88: 1 in what Find_SubTable_2_node found, else 0 */
    int32_t parent_level;     /* 92: level of the owner; see generate_DigitalIndex */
    int32_t parent_index;     /* 96: index of the owner */
};

NIMBA_MGMT_ASSERT(sizeof(vidmm_vm_pt) == 144);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pt, Addr, 48);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pt, entries, 96);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pt, parent, 104);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pt, PT_Level, 112);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pt, PT_index, 116);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pt, PT_sub_entries, 120);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pt, next, 128);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pt, pre, 136);
NIMBA_MGMT_ASSERT(sizeof(vidmm_vm_pte_elt3k) == 104);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pte_elt3k, Addr, 4);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pte_elt3k, LargePage, 52);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pte_elt3k, ST_Level, 56);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pte_elt3k, Index, 60);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pte_elt3k, next, 64);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pte_elt3k, pre, 72);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pte_elt3k, parent, 80);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pte_elt3k, found, 88);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pte_elt3k, parent_level, 92);
NIMBA_MGMT_ASSERT_OFFSET(vidmm_vm_pte_elt3k, parent_index, 96);

/* The page tables of one device. The links of its entries lead to other entries of the same record:
 * they hold as long as the record is filled by get_pagetable_info alone and is not copied.
 * create_vector reserves what a driver usually shows, so that nothing moves; a device with more
 * entries gets larger arrays, and the links of what moves are moved along. */
struct data_vectors {
    char pid[48];      /* process id as the node "info" has it, cut to 47 bytes */
    char app_name[48]; /* name of the process, cut to 47 bytes; "0" for process id 0 */
    std::string note;  /* empty */
    /* Page-table entries by level, in the order of the dump; reserved: 100, 1000, 20000. */
    std::vector<vidmm_vm_pt> pt_level0;
    std::vector<vidmm_vm_pt> pt_level1;
    std::vector<vidmm_vm_pt> pt_level2;
    /* Sub-table entries likewise; reserved: 100, 20000, 300000. */
    std::vector<vidmm_vm_pte_elt3k> st_level0;
    std::vector<vidmm_vm_pte_elt3k> st_level1;
    std::vector<vidmm_vm_pte_elt3k> st_level2;
};

/* What the last get_pagetable_data with a null buffer read, also when it failed. The entries'
 * links lead nowhere: use their numbers and texts. Empty at load. */
extern NIMBA_MGMT_API std::vector<data_vectors> Pagetable_List;
extern NIMBA_MGMT_API std::vector<allcation_Info> Allocation_List;

/* Splits the text of an allocation's node "vm_info". Return: the blocks, each from one line
 * "=====vm node info=====" to the next or to the end; none when there is no such line. */
NIMBA_MGMT_API std::vector<std::string> split_VmNode_Info(const std::string& text);

/* Tells the value of a line "key = value". Return: what begins two bytes behind the first "=" at or
 * behind the first occurrence of `key`, be it within a longer key, and ends at the first newline
 * there or at the end of the text. Empty without the key, and when the newline or the end comes
 * first. With the key but no "=" behind it, it begins at the second byte of the text. */
NIMBA_MGMT_API std::string extractValue(const std::string& text, const std::string& key);

/* Appends a record for each virtual-memory node of each allocation to `list` in listing order,
 * without clearing it: one pass. A key that is missing leaves its text empty.
 * Return: 0, or -1 when the pass failed; the records before the failure are in the list. */
NIMBA_MGMT_API int32_t get_alloction_data_try(std::vector<allcation_Info>& list);

/* The same with up to ten passes, 1 ms after each that failed. Records of failed passes stay in
 * front. Return: 0, or -1 after ten. */
NIMBA_MGMT_API int32_t get_alloction_data(std::vector<allcation_Info>& list);

/* Fills device->pid from the first line of the node with "pid" in it. Without one it stays.
 * Return: 0, or -1 when the node cannot be opened or read ("Fail to read pid info. skip..."). */
NIMBA_MGMT_API int32_t get_Pid_info(data_vectors* device, const char* path);

/* Fills device->app_name with what "ps -p <device->pid> -o comm=" writes, less a newline at its
 * end: empty when there is no such process, or no ps. Process id "0" has the name "0" and runs
 * nothing. Return: 0, or -1 when no command can be started. */
NIMBA_MGMT_API int32_t get_AppName_info(data_vectors* device);

/* Appends the entries of a dump to the arrays of the device and links them. Lines are cut at 511
 * bytes, what follows is a line of its own, and end at a NUL. A line with "entry" is a page-table
 * entry, "level:index: entry addr:address, buffer:buffer"; another with "Snoop" is a sub-table
 * entry, "level:index Snoop:n Segment:n LargePage:n Addr:address"; all other lines are skipped.
 * Entries of levels other than 0, 1 and 2 are, too; so is a page-table entry of level 1 before any
 * other, and one of level 2 before any other or behind one of level 0.
 * Return: 0, or -1 when the node cannot be opened or not be read to its end. */
NIMBA_MGMT_API int32_t get_pagetable_info(data_vectors* device, const char* path);

/* The parts of a line. Numbers are base 10, as std::stoi reads them, with its errors. */

/* Return: what is behind "pid = ", without blanks, tabs and line ends at its end; or empty. */
NIMBA_MGMT_API std::string find_Pid_number(const std::string& line);

/* Return: the number before the first ":"; -1 without a ":". */
NIMBA_MGMT_API int32_t find_Level_in_Table(const std::string& line);

/* Return: the number behind the first ":", up to the next ":" in a line with "entry", else up to
 * the next blank; 0 without a ":". */
NIMBA_MGMT_API int32_t find_Index_in_Table(const std::string& line);

/* Return: the number between `key` and the next blank; 0 without the key. */
NIMBA_MGMT_API int32_t find_value_in_subTable(const std::string& line, const std::string& key);

/* Return: for "addr:" what is behind the key up to the next ",", or all of it; for any other key
 * all of it without blanks, tabs and line ends at its end; empty without the key. */
NIMBA_MGMT_API std::string find_Addr_in_Table(const std::string& line, const std::string& key);

/* Return: what is behind the key, without blanks, tabs and line ends at its end; or empty. */
NIMBA_MGMT_API std::string find_Buffer_in_Table(const std::string& line, const std::string& key);

/* Makes the flag of `level` true and the others false; all of them for another level.
 * Return: 1 for level 2, else 0. */
NIMBA_MGMT_API int32_t update_PageTable_Flags(bool& level0, bool& level1, bool& level2,
                                              int32_t level);

/* Write one line about an entry to standard output. */
NIMBA_MGMT_API void Print_PageTable(const vidmm_vm_pt* entry);
NIMBA_MGMT_API void Print_SubTable(const vidmm_vm_pte_elt3k* entry);

/* Empties the note and reserves the arrays' usual capacities; larger ones stay. */
NIMBA_MGMT_API void create_vector(data_vectors& device);

/* Empties the arrays. Their capacities stay. */
NIMBA_MGMT_API void clean_vector(data_vectors* device);

/* Writes level and index of the owner into all entries of a run of sub-table entries, given its
 * first; does nothing for another entry, and for a run without an owner. */
NIMBA_MGMT_API void append_DigitalIndex(vidmm_vm_pte_elt3k& entry);

/* Does so for all sub-table entries of the device. */
NIMBA_MGMT_API void generate_DigitalIndex(data_vectors& device);

/* Looks for a sub-table entry by the page number of its table.
 * address: hexadecimal with a prefix of two characters; three zeros behind it make it the address
 * of the page-table entry of level 2, 1 or 0 that owns the sub-table. The first such entry counts,
 * and of its sub-table the first entry with that index.
 * Find_SubTable_2_node returns a copy of the entry with `found` 1, or an entry that is all 0;
 * the others return the entry's "Addr", or an empty text. */
NIMBA_MGMT_API vidmm_vm_pte_elt3k Find_SubTable_2_node(int32_t index, const data_vectors* device,
                                                       const std::string& address);
NIMBA_MGMT_API std::string Find_SubTable_1_addr(int32_t index, const data_vectors* device,
                                                const std::string& address);
NIMBA_MGMT_API std::string Find_SubTable_0_addr(int32_t index, const data_vectors* device,
                                                const std::string& address);

/* Appends the page tables of each device to `list` in listing order, without clearing it: one pass.
 * Return: 0, or -1 when the pass failed; the devices before the failure are in the list. */
NIMBA_MGMT_API int32_t get_PageTable_data(std::vector<data_vectors>& list);

/* The same with up to ten passes, 1 ms after each that failed. Devices of failed passes stay in
 * front. Return: 0, or -1 after ten. */
NIMBA_MGMT_API int32_t get_PageTable_data_try(std::vector<data_vectors>& list);

/* get_alloction_data, then get_PageTable_data_try, also when the first failed.
 * Return: 0 when both succeeded, else -1. */
NIMBA_MGMT_API int32_t get_current_PageTable_data(std::vector<data_vectors>& pagetables,
                                                  std::vector<allcation_Info>& allocations);

/* The preferences in file order; empty at load. Filled by the first set or get, emptied by
 * gfx_global_init and gfx_global_exit. */
extern NIMBA_MGMT_API std::vector<_UTIL_GPU_PREFERENCE_NODE> interface_config_list;

/* Sets UTIL_CONFIG_PATH from HOME and appends the file's records to interface_config_list. With
 * HOME unset, empty or too long the path stays empty, nothing is read and one line is logged.
 * Return: 0 always. */
NIMBA_MGMT_API int32_t util_init_config_files();

/* Appends the records of the preference file at `path` to interface_config_list, without clearing
 * it, and logs each.
 * Return: the number of section headers read, or -1 when the file cannot be opened. */
NIMBA_MGMT_API int32_t parseINI(const char* path);

/* Rewrites the file at `path` from interface_config_list and logs each record. A file that cannot
 * be opened is logged; one that cannot be written to the end (a full disk) is logged and gets its
 * previous text back. While the file at UTIL_CONFIG_PATH is there but its last loading could not
 * read it to the end, the list lacks some of its records: saving it there counts as a file that
 * cannot be opened, and leaves it as it is. */
NIMBA_MGMT_API void savefile_INI(const char* path);

/* Logs one record behind `prefix`. */
NIMBA_MGMT_API void printConfigNodeLog(const char* prefix, const _UTIL_GPU_PREFERENCE_NODE* node);

/* Removes white space (space and \t \n \v \f \r) from both ends of a NUL-terminated text, in place.
 */
NIMBA_MGMT_API void trimWhitespace(char* text);

/* Return: the part of `path` behind its last "/" or "\"; all of it when there is neither. */
NIMBA_MGMT_API std::string get_filename(const std::string& path);

#endif /* __cplusplus */

#undef NIMBA_MGMT_ASSERT_OFFSET
#undef NIMBA_MGMT_ASSERT

#endif /* NIMBA_MGMT_INTERFACE_H */
