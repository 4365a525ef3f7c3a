// SPDX-License-Identifier: MIT
// How busy the engines are, as the kernel-interface library tells.
#include "core/current_adapter.hpp"
#include "nimba_mgmt_interface.h"
#include "power/kernel_function.hpp"

#include <array>

int32_t gfxbusy_apiversion = 2;

namespace nimba {
namespace {

// Values of gfxbusy_apiversion.
constexpr int32_t kQueueVersion = 1;
constexpr int32_t kUsageVersion = 2;
constexpr int32_t kExtendedVersion = 3;

using UsageRecord = std::array<uint32_t, 13>;
using GetUsage = int (*)(int drm_fd, void* device, uint32_t* record);
using GetQueues = int (*)(int drm_fd, uint32_t* record);

// Chosen by gfxbusy_init alone; none of them when it failed.
KernelFunction<GetUsage> get_usage;
KernelFunction<GetUsage> get_usage_ext;
KernelFunction<GetQueues> get_queues;

bool choose_version()
{
    get_usage.choose("gfx_get_usage_info");
    if (get_usage) {
        gfxbusy_apiversion = kUsageVersion;
        lib_print_func("gfxbusy_init  use GFXBUSY_VERION_1.\n ");
        return true;
    }
    get_queues.choose("qvGetHwqInfo");
    if (!get_queues) {
        lib_print_func("gfx_xxx interface functions init fail. \n ");
        return false;
    }
    gfxbusy_apiversion = kQueueVersion;
    lib_print_func("gfxbusy_init  use GFXBUSY_VERION_0.\n ");
    return true;
}

void take_extended_usage(GpuBusyInfo& info)
{
    const GetUsage get = get_usage_ext.get();
    if (get == nullptr) {
        return;
    }
    UsageRecord record{kExtendedVersion};
    get(__perf_event_fd, pdev, record.data());
    info.words[2] = record[2];
    info.words[4] = record[4];
    info.words[5] = record[5];
    if (current_chip_id == DEVICE_ID_QV_M40) {
        info.words[7] = record[7];
        info.words[8] = record[8];
        info.words[9] = record[9];
    } else {
        info.words[7] = record[3];
    }
}

void take_first_words(const UsageRecord& record, GpuBusyInfo& info)
{
    info.words[2] = record[0];
    info.words[4] = record[1];
    info.words[7] = record[2];
}

void take_usage(GpuBusyInfo& info)
{
    if (const GetUsage get = get_usage.get()) {
        UsageRecord record{};
        get(__perf_event_fd, pdev, record.data());
        take_first_words(record, info);
    }
}

void take_queues(GpuBusyInfo& info)
{
    if (const GetQueues get = get_queues.get()) {
        UsageRecord record{};
        get(__perf_event_fd, record.data());
        take_first_words(record, info);
    }
}

}  // namespace
}  // namespace nimba

int32_t gfxbusy_init(void)
{
    if (!nimba::choose_version()) {
        nimba::get_usage_ext = {};
        return -1;
    }
    nimba::get_usage_ext.choose("gfx_get_usage_info_ext");
    if (nimba::get_usage_ext) {
        gfxbusy_apiversion = nimba::kExtendedVersion;
        lib_print_func("gfxbusy_init  use GFXBUSY_VERION_EXT_1.\n ");
    }
    return 0;
}

int32_t get_gpubusy_info(GpuBusyInfo* info)
{
    switch (gfxbusy_apiversion) {
        case nimba::kExtendedVersion:
            nimba::take_extended_usage(*info);
            break;
        case nimba::kUsageVersion:
            nimba::take_usage(*info);
            break;
        case nimba::kQueueVersion:
            nimba::take_queues(*info);
            break;
        default:
            break;
    }
    return 0;
}
