// SPDX-License-Identifier: MIT
// The settings, segments, sensors and counters of the library that does as it is told: its adapters
// have two segments, no node gives a setting, and every other number is 7.
#include "nimba_mgmt_interface.h"
#include "stub.hpp"

#include <cstdint>

using stub::enter;

namespace {

constexpr int32_t kNumber = 7;

int32_t put_segments(SegmentInfo& info)
{
    for (const int segment : {0, 1}) {
        info.used_size[segment] = kNumber;
        info.total_size[segment] = kNumber;
    }
    return 1;
}

}  // namespace

int32_t gpuinfo_select_new_chip(find_adapter* /*rec*/)
{
    enter("gpuinfo_select_new_chip");
    return 0;
}

int32_t gpuinfo_set_enable_usage(const char* /*text*/)
{
    enter("gpuinfo_set_enable_usage");
    return 0;
}

int32_t gpuinfo_get_jwinfoFD_value_int(int32_t /*index*/)
{
    enter("gpuinfo_get_jwinfoFD_value_int");
    return kNumber;
}

int32_t gpuinfo_get_hwmonFD_value_int(int32_t /*index*/, uint32_t* count)
{
    enter("gpuinfo_get_hwmonFD_value_int");
    *count = 1;
    return kNumber;
}

int32_t gpuinfo_get_temparature_value_int(uint32_t* count)
{
    enter("gpuinfo_get_temparature_value_int");
    *count = 1;
    return kNumber;
}

void gpuinfo_set_misc_ctl_flag(int32_t /*set*/, int32_t /*clear*/)
{
    enter("gpuinfo_set_misc_ctl_flag");
}

int32_t get_data_from_dvfs_register(DvfsRegisterState* /*state*/, uint32_t* valid)
{
    enter("get_data_from_dvfs_register");
    *valid = 0;
    return 0;
}

int32_t set_data_to_dvfs_register(const DvfsRegisterState* /*state*/)
{
    enter("set_data_to_dvfs_register");
    return 0;
}

int32_t gpuinfo_get_data_from_dvfs_register(DvfsRegisterState* /*state*/)
{
    enter("gpuinfo_get_data_from_dvfs_register");
    return 0;
}

int32_t segment_init(find_adapter* /*rec*/)
{
    enter("segment_init");
    return 1;
}

int32_t get_segment_info(SegmentInfo* info)
{
    enter("get_segment_info");
    return put_segments(*info);
}

int32_t gpuinfo_get_segment_info(SegmentInfo* info)
{
    enter("gpuinfo_get_segment_info");
    return put_segments(*info);
}

int32_t fps_init(void)
{
    enter("fps_init");
    return 0;
}

int32_t gpuinfo_get_fps_count(uint32_t* /*flip_count*/, int64_t* /*time_stamp*/, int64_t* /*blits*/)
{
    enter("gpuinfo_get_fps_count");
    return 0;
}

int32_t get_fps_info(FpsInfo* info)
{
    enter("get_fps_info");
    *info = {kNumber, kNumber, kNumber, kNumber};
    return 0;
}

int32_t bandwidth_init(void)
{
    enter("bandwidth_init");
    return 0;
}

int32_t get_bandwidth_info(BandwidthInfo* info)
{
    enter("get_bandwidth_info");
    info->words[0] = kNumber;
    return 0;
}

int32_t gfxbusy_init(void)
{
    enter("gfxbusy_init");
    return 0;
}

int32_t get_gpubusy_info(GpuBusyInfo* info)
{
    enter("get_gpubusy_info");
    info->words[0] = kNumber;
    return 0;
}
