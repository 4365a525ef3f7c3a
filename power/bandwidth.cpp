// SPDX-License-Identifier: MIT
// Hardware information of the kernel-interface library, memory bandwidth among it.
#include "core/current_adapter.hpp"
#include "nimba_mgmt_interface.h"
#include "power/kernel_function.hpp"

#include <algorithm>

namespace nimba {
namespace {

using Prepare = int (*)(int drm_fd, void* device);
using GetInformation = int (*)(int drm_fd, void* device, uint32_t* words);

// Chosen by bandwidth_init alone; none to get information with when it failed.
KernelFunction<Prepare> prepare;
KernelFunction<Prepare> finish;  // required, never called
KernelFunction<GetInformation> get_information;
KernelFunction<GetInformation> get_information_ext;

bool can_get()
{
    return get_information_ext || get_information;
}

// The older names stand in for all of the newer ones but the extended getter.
bool choose_functions()
{
    prepare.choose("gfx_init_hwinfo");
    finish.choose("gfx_deinit_hwinfo");
    get_information_ext.choose("gfx_get_hwinfo_ext");
    get_information.choose("gfx_get_hwinfo");
    if (!prepare || !can_get() || !finish) {
        prepare.choose("qv_init_hwinfo");
        get_information.choose("qv_get_hwinfo");
        finish.choose("qv_deinit_hwinfo");
    }
    return prepare && can_get() && finish;
}

int32_t fail(const char* message)
{
    lib_print_func("%s", message);
    get_information = {};
    get_information_ext = {};
    return -1;
}

void copy_information(const BandwidthInfo& from, BandwidthInfo& to)
{
    std::copy_n(from.words, 4, to.words);
    if (current_chip_id == DEVICE_ID_QV_M20) {
        std::copy_n(from.words + 5, 2, to.words + 8);
    } else {
        std::copy_n(from.words + 4, 8, to.words + 4);
    }
}

}  // namespace
}  // namespace nimba

int32_t bandwidth_init(void)
{
    const bool has_functions = nimba::choose_functions();
    const auto prepare = nimba::prepare.get();
    if (!has_functions || prepare == nullptr) {
        return nimba::fail("gfx_xxx interface functions init fail. \n ");
    }
    if (pdev != nullptr && prepare(__perf_event_fd, pdev) != 0) {
        return nimba::fail("gfx_init_hwinfo fail. \n ");
    }
    return 0;
}

int32_t get_bandwidth_info(BandwidthInfo* info)
{
    if (nimba::get_information_ext) {
        if (const auto get = nimba::get_information_ext.get()) {
            get(__perf_event_fd, pdev, info->words);
        }
    } else if (const auto get = nimba::get_information.get()) {
        BandwidthInfo information{};
        get(__perf_event_fd, pdev, information.words);
        nimba::copy_information(information, *info);
    }
    return 0;
}
