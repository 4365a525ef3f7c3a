// SPDX-License-Identifier: MIT
// A management library that does as it is told, for the tests of the Python package. STAND_IN in
// the environment is CALL:ACTION, what goes wrong where. It has one adapter, the functions below
// and no others. It prints on standard output and error when it is loaded.
//   abort, throw, crash, exit: end the process in that way
//   hang, hang-with-child: never come back; a child leaves its process id in the file STAND_IN_PID
//   fail: return -1
//   message: hand texts to the print callback, one of them with a percent sign
// "dlopen" is a CALL, too. STAND_IN_MAJOR is the major version of its interface (0).
// STAND_IN_FOREIGN: if set, three adapters, the last of which a GPU of another vendor has
// overwritten. STAND_IN_LOG is a file that gets the name of every call.
#include "nimba_mgmt_interface.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>

uint8_t gpuinfo_control_enable = 1;
nimba_print_callback pServerPrintCallback = nullptr;

namespace {

std::string setting(const char* name, const char* otherwise)
{
    const char* const value = std::getenv(name);
    return value == nullptr ? otherwise : value;
}

[[noreturn]] void hang()
{
    while (true) {
        ::pause();
    }
}

void leave_pid(pid_t pid)
{
    std::ofstream{setting("STAND_IN_PID", "/dev/null")} << pid << std::flush;
}

[[noreturn]] void hang_with_child()
{
    const pid_t child = ::fork();
    if (child != 0) {
        leave_pid(child);
    }
    hang();
}

// Returns whether the call shall fail.
bool act(const std::string& action)
{
    if (action == "abort") {
        std::fputs("a complaint before the end\n", stderr);
        std::abort();
    } else if (action == "throw") {
        throw std::invalid_argument{"stoi"};
    } else if (action == "crash") {
        std::raise(SIGSEGV);
    } else if (action == "exit") {
        ::_exit(7);
    } else if (action == "hang") {
        leave_pid(::getpid());
        hang();
    } else if (action == "hang-with-child") {
        hang_with_child();
    } else if (action == "message") {
        pServerPrintCallback("first\n");
        pServerPrintCallback("100%d \xff\n");
    }
    return action == "fail";
}

bool enter(const std::string& call)
{
    std::ofstream{setting("STAND_IN_LOG", "/dev/null"), std::ios::app} << call << '\n';
    const std::string fault = setting("STAND_IN", "");
    return fault.rfind(call + ':', 0) == 0 && act(fault.substr(call.size() + 1));
}

__attribute__((constructor)) void load()
{
    std::puts("loaded on standard output");
    std::fputs("loaded on standard error\n", stderr);
    enter("dlopen");
}

uint32_t major()
{
    return static_cast<uint32_t>(std::stoi(setting("STAND_IN_MAJOR", "0")));
}

bool foreign_here()
{
    return std::getenv("STAND_IN_FOREIGN") != nullptr;
}

void fill_slot(find_adapter& rec, int slot, const char* bus_id)
{
    rec.header.chip_num = slot + 1;
    rec.header.chip_id[slot] = 0x1001;
    rec.header.drm_card_idx[slot] = 4;
    std::strcpy(rec.header.chip_name[slot], "Gpu0:Nimba-K1");
    std::strcpy(rec.gpu_infos[slot].busid, bus_id);
    rec.gpu_infos[slot].vendor_id = 0x4E4D;
}

uint32_t entered_chip = 0;
int32_t entered_card = 0;

}  // namespace

int32_t set_print_callback(nimba_print_callback callback)
{
    pServerPrintCallback = callback;
    enter("set_print_callback");
    return 0;
}

int32_t get_interface_version(void)
{
    enter("get_interface_version");
    return static_cast<int32_t>(major() << 16 | 22U);
}

int32_t get_interface_version_ext1(interface_version_info* info)
{
    enter("get_interface_version_ext1");
    info->server_interface_version = major() << 16 | 22U;
    info->version_match_result = info->client_interface_version >> 16 == major() ? 200 : 100;
    return 0;
}

int32_t gpuinfo_nimba_init(void)
{
    return 1;
}

int32_t gfx_find_adapter(find_adapter* rec)
{
    enter("gfx_find_adapter");
    fill_slot(*rec, 0, "0000:03:00.0");
    if (foreign_here()) {
        fill_slot(*rec, 1, "0000:04:00.0");
        fill_slot(*rec, 2, "0001:03:00.0");
        rec->header.chip_id[2] = 0x2684;
        rec->header.drm_card_idx[2] = 7;
        std::strcpy(rec->header.chip_name[2], "Gpu2:Nvidia-GPU");
    }
    return 0;
}

int32_t gfx_find_adapter_ext1(find_adapter_ext1* rec)
{
    rec->luid[0] = {0, 0x30000};
    if (foreign_here()) {
        rec->other_vendor_chip_num = 1;
        rec->vendor_id[2] = 0x10DE;
        rec->busid_info[2] = {0, 9, 0, 0, 0};
        rec->luid[2] = {0, 0x90000};
    }
    return 0;
}

int32_t gfx_global_init(find_adapter* rec)
{
    entered_chip = rec->header.chip_id[rec->chip_id_idx];
    entered_card = rec->header.drm_card_idx[rec->chip_id_idx];
    return enter("gfx_global_init") ? -1 : static_cast<int32_t>(entered_chip);
}

int32_t gfx_global_exit(int32_t /*chip_id_idx*/)
{
    enter("gfx_global_exit");
    return 0;
}

int32_t gpuinfo_get_temparature_value_int(uint32_t* count)
{
    enter("gpuinfo_get_temparature_value_int");
    *count = 1;
    return 61;
}

// What gfx_global_init was told of the adapter: node 0 its chip, any other its card.
int32_t gpuinfo_get_jwinfoFD_value_int(int32_t index)
{
    return index == 0 ? static_cast<int32_t>(entered_chip) : entered_card;
}

int32_t get_fps_info(FpsInfo* info)
{
    info->flips = 60;
    info->average_since = 59.5F;
    return 0;
}

int32_t fps_init(void)
{
    return 0;
}
