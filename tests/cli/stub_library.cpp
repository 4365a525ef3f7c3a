// SPDX-License-Identifier: MIT
// A management library that does as it is told, for nimba-smi's tests. The environment tells:
//   NIMBA_STUB_ADAPTERS  adapters in the slots, 0 to 3 (1)
//   NIMBA_STUB_FOREIGN   1: a GPU of another vendor is there as well
//   NIMBA_STUB_NAME      the name in slot 0, any bytes
//   NIMBA_STUB_MESSAGE   a message that gfx_find_adapter hands to the callback
//   NIMBA_STUB_LIBDRM    0: no libdrm
//   NIMBA_STUB_MATCH     the handshake's result code (200)
//   NIMBA_STUB_PCI_DIR   the PCI directory of every adapter
//   NIMBA_STUB_GONE      the slot from which on there is no adapter in that slot's own worker
//   NIMBA_STUB_FAULT     WHO/CALL/ACTION: what goes wrong where; the action "note" is nothing. WHO
//                        is "discovery" (any worker without a slot), a slot, "adapters" (any slot)
//                        or "all"
//   NIMBA_STUB_DEBUG_DIR the debug directory that gfx_global_init sets ("/nonexistent")
//   NIMBA_STUB_INIT      what gfx_global_init returns (0)
//   NIMBA_STUB_PIDS      a directory that gets a file for every process that meets its fault
// Its adapters have three allocations, one of them listed twice, and one device context.
// It prints on standard output at load and whenever it is called, and on standard error at load.
#include "nimba_mgmt_interface.h"
#include "stub.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

uint8_t gpuinfo_control_enable = 0;
nimba_print_callback pServerPrintCallback = nullptr;
char sys_kernel_debug_ID_dri_ADAPTER_path[50];
std::vector<_GFX_ALLOCATION_INFO> vec_memleak_result;

namespace {

struct StubAdapter {
    uint16_t vendor;
    uint32_t device;
    const char* name;
    const char* bus_id;
    busid_info location;
    gfx_luid luid;
    int32_t card;
    int32_t va;
};

constexpr StubAdapter kAdapters[MAX_CHIP_NUM] = {
    {0x4E4D, 0x1001, "Gpu0:Nimba-K1", "0000:03:00.0", {0, 3, 0, 0, 0}, {0, 0x30000}, 0, 1},
    {0x5156, 0x2030, "Gpu1:QV M-30", "0000:04:00.0", {0, 4, 0, 0, 0}, {0, 0x40000}, 1, 0},
    {0x4E4D,
     0x1013,
     "Gpu2:Nimba-GT-K3t",
     "0001:8f:1f.7",
     {1, 0x8F, 0x1F, 7, 0},
     {1, 0x8F1F07},
     12,
     1},
};

constexpr StubAdapter kForeign = {
    0x10DE, 0x2684, "Gpu2:Nvidia-GPU", "", {0, 1, 0, 0, 0}, {0, 0x10000}, 3, 0};

std::string setting(const char* name, const char* otherwise)
{
    const char* const value = std::getenv(name);
    return value == nullptr ? otherwise : value;
}

int number(const char* name, const char* otherwise)
{
    return std::stoi(setting(name, otherwise));
}

// The value behind "--slot" on this process's command line, or "discovery".
std::string who()
{
    std::ifstream file{"/proc/self/cmdline", std::ios::binary};
    const std::string words{std::istreambuf_iterator<char>{file}, {}};
    const std::string key{"\0--slot\0", 8};
    const auto at = words.find(key);
    return at == std::string::npos ? "discovery" : words.c_str() + at + key.size();
}

void leave_pid(pid_t pid)
{
    const std::string directory = setting("NIMBA_STUB_PIDS", "");
    if (!directory.empty()) {
        std::ofstream{directory + '/' + std::to_string(pid)};
    }
}

// A sanitizer would catch the signal.
void crash()
{
    std::signal(SIGSEGV, SIG_DFL);
    std::raise(SIGSEGV);
}

[[noreturn]] void hang()
{
    while (true) {
        ::pause();
    }
}

[[noreturn]] void hang_with_child()
{
    const pid_t child = ::fork();
    if (child == 0) {
        hang();
    }
    leave_pid(child);
    hang();
}

// Returns once as many processes as there are adapters are here at the same time.
void meet()
{
    const std::filesystem::path directory = setting("NIMBA_STUB_PIDS", "");
    const auto everybody = number("NIMBA_STUB_ADAPTERS", "1");
    const auto here = [&] {
        return std::distance(std::filesystem::directory_iterator{directory}, {});
    };
    while (here() < everybody) {
        ::usleep(1000);
    }
}

// Made at the first use, which may be before this file's globals are.
const std::function<void()>& action(const std::string& name)
{
    static const std::map<std::string, std::function<void()>> actions{
        {"abort", [] { std::abort(); }},
        {"throw", [] { throw std::invalid_argument{"stoi"}; }},
        {"throw-number", [] { throw 7; }},
        {"crash", crash},
        {"exit", [] { ::_exit(3); }},
        {"hang", hang},
        {"hang-with-child", hang_with_child},
        {"meet", meet},
        {"note", [] {}},
    };
    return actions.at(name);
}

void maybe_misbehave(std::string_view call)
{
    const std::string fault = setting("NIMBA_STUB_FAULT", "");
    const std::string self = who();
    const std::string group = self == "discovery" ? self : "adapters";
    for (const std::string& subject : {self, group, std::string{"all"}}) {
        const std::string mine = subject + '/' + std::string{call} + '/';
        if (fault.starts_with(mine)) {
            leave_pid(::getpid());
            action(fault.substr(mine.size()))();
            return;
        }
    }
}

int adapters_here()
{
    const std::string self = who();
    const bool gone = self != "discovery" && self >= setting("NIMBA_STUB_GONE", "9");
    return gone ? 0 : number("NIMBA_STUB_ADAPTERS", "1");
}

bool foreign_here()
{
    return number("NIMBA_STUB_FOREIGN", "0") == 1;
}

// Unlike in the real library, a text that fills its field gets no NUL.
template <std::size_t Size>
void put(char (&field)[Size], std::string_view text)
{
    std::fill(std::begin(field), std::end(field), '\0');
    text.copy(field, Size);
}

void fill_identity(find_adapter_header& header, int slot, const StubAdapter& adapter)
{
    header.chip_id[slot] = adapter.device;
    put(header.chip_name[slot], adapter.name);
    header.drm_card_idx[slot] = adapter.card;
}

void fill_extended(find_adapter_ext1& identity, int slot, const StubAdapter& adapter)
{
    identity.vendor_id[slot] = adapter.vendor;
    identity.busid_info[slot] = adapter.location;
    identity.luid[slot] = adapter.luid;
}

_GFX_ALLOCATION_INFO allocation(int32_t handle, int32_t device, int32_t size)
{
    _GFX_ALLOCATION_INFO record{};
    record.handle = handle;
    record.device = device;
    record.size = size;
    record.hit_count = 1;
    record.sum_count = 1;
    return record;
}

// One from 2 GiB on, one with a device and a handle of their own, and one listed twice.
std::vector<_GFX_ALLOCATION_INFO> allocations()
{
    return {allocation(1, 16, INT32_MIN), allocation(2, 16, 4096), allocation(2, 16, 4096),
            allocation(-2, -1, 1)};
}

__attribute__((constructor)) void load()
{
    std::puts("stub: loaded");
    std::fputs("stub: a complaint\n", stderr);
    maybe_misbehave("dlopen");
}

}  // namespace

void stub::enter(const char* call)
{
    std::printf("stub: %s\n", call);
    if (pServerPrintCallback == nullptr) {
        std::fprintf(stderr, "stub: %s without a callback\n", call);
        ::_exit(99);
    }
    maybe_misbehave(call);
}

using stub::enter;

int32_t set_print_callback(nimba_print_callback callback)
{
    pServerPrintCallback = callback;
    enter("set_print_callback");
    callback("set_print_callback.\n");
    return 0;
}

int32_t get_interface_version(void)
{
    enter("get_interface_version");
    return 22;
}

int32_t get_interface_version_ext1(interface_version_info* info)
{
    enter("get_interface_version_ext1");
    info->server_interface_version = 22;
    info->version_match_result = static_cast<uint32_t>(number("NIMBA_STUB_MATCH", "200"));
    return 0;
}

int32_t gfx_find_adapter(find_adapter* rec)
{
    enter("gfx_find_adapter");
    pServerPrintCallback(setting("NIMBA_STUB_MESSAGE", "").c_str());
    gpuinfo_control_enable = static_cast<uint8_t>(number("NIMBA_STUB_LIBDRM", "1"));
    rec->header.chip_num = adapters_here();
    for (int slot = 0; slot < rec->header.chip_num && slot < MAX_CHIP_NUM; ++slot) {
        const StubAdapter& adapter = kAdapters[slot];
        fill_identity(rec->header, slot, adapter);
        rec->header.IS_VA_driver[slot] = adapter.va;
        put(rec->gpu_infos[slot].busid, adapter.bus_id);
        rec->gpu_infos[slot].vendor_id = adapter.vendor;
        rec->gpu_infos[slot].pci_dir_fd =
            ::open(setting("NIMBA_STUB_PCI_DIR", "/").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }
    if (const char* const name = std::getenv("NIMBA_STUB_NAME"); name != nullptr) {
        put(rec->header.chip_name[0], name);
    }
    if (foreign_here()) {
        fill_identity(rec->header, 2, kForeign);
    }
    return 0;
}

int32_t gfx_find_adapter_ext1(find_adapter_ext1* rec)
{
    enter("gfx_find_adapter_ext1");
    *rec = {};
    for (int slot = 0; slot < adapters_here() && slot < MAX_CHIP_NUM; ++slot) {
        fill_extended(*rec, slot, kAdapters[slot]);
    }
    if (foreign_here()) {
        fill_extended(*rec, 2, kForeign);
        rec->other_vendor_chip_num = 1;
    }
    return 0;
}

int32_t gpuinfo_nimba_init(void)
{
    enter("gpuinfo_nimba_init");
    return number("NIMBA_STUB_LIBDRM", "1");
}

int32_t gfx_global_init(find_adapter* rec)
{
    enter("gfx_global_init");
    static_cast<void>(rec);
    std::fill(std::begin(sys_kernel_debug_ID_dri_ADAPTER_path),
              std::end(sys_kernel_debug_ID_dri_ADAPTER_path), '\0');
    setting("NIMBA_STUB_DEBUG_DIR", "/nonexistent")
        .copy(sys_kernel_debug_ID_dri_ADAPTER_path,
              sizeof sys_kernel_debug_ID_dri_ADAPTER_path - 1);
    return number("NIMBA_STUB_INIT", "0");
}

int32_t gfx_global_exit(int32_t /*chip_id_idx*/)
{
    enter("gfx_global_exit");
    return 0;
}

int32_t get_allocation_raw_list(_GFX_ALLOCATION_RAW_LIST* buffer, const find_adapter* /*rec*/)
{
    enter("get_allocation_raw_list");
    const auto records = allocations();
    std::copy(records.begin(), records.end(), buffer->records);
    buffer->total_cnt = static_cast<int32_t>(records.size());
    buffer->trasfer_cnt = buffer->total_cnt;
    buffer->more_flag = 0;
    return 0;
}

int32_t get_device_pid_maps(_GFX_DEVICE_PID_MAP* buffer)
{
    enter("get_device_pid_maps");
    *buffer = {};
    buffer->entries[0] = {4100001, 16, "stub"};
    return 0;
}

int32_t get_memleak_info(_GFX_MEMLEAK_INFO* buffer)
{
    enter("get_memleak_info");
    vec_memleak_result = allocations();
    *buffer = {};
    return 0;
}
