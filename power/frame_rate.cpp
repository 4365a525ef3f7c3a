// SPDX-License-Identifier: MIT
// Frames per second, from counts of frames and the times of the last.
#include "core/current_adapter.hpp"
#include "core/node_access.hpp"
#include "nimba_mgmt_interface.h"
#include "power/kernel_function.hpp"

int32_t use_IOCTL_get_fps = 0;

namespace nimba {
namespace {

// What "gfx_flip_count" fills.
struct FlipSample {
    int64_t time = 0;  // nanoseconds
    int64_t flips = 0;
};

struct FrameSample {
    FlipSample flip;
    int64_t blits = 0;  // of the nodes alone
};

// The samples that rates are computed from: that of fps_init, which alone writes it, and that of
// the last rate. Nothing else resets them.
FrameSample first_sample;
FrameSample last_sample;

using FlipCount = int (*)(int drm_fd, void* device, FlipSample* sample);

FlipCount find_flip_count()
{
    return find_kernel_function<FlipCount>("gfx_flip_count");
}

bool library_counts_frames()
{
    return find_flip_count() != nullptr &&
           find_kernel_function<void (*)()>("gfx_get_struct_size") != nullptr;
}

// What cannot be read stays as it is.
void take_sample(FrameSample& sample)
{
    if (use_IOCTL_get_fps != 0) {
        if (const FlipCount flip_count = find_flip_count()) {
            flip_count(__perf_event_fd, pdev, &sample.flip);
        }
        return;
    }
    auto flips = static_cast<uint32_t>(sample.flip.flips);
    gpuinfo_get_fps_count(&flips, &sample.flip.time, &sample.blits);
    sample.flip.flips = flips;
}

float as_float(int64_t value)
{
    return static_cast<float>(static_cast<uint64_t>(value));
}

// Counts wrap before they are converted, times are converted before they are subtracted.
float count_between(int64_t later, int64_t earlier)
{
    return static_cast<float>(static_cast<uint64_t>(later) - static_cast<uint64_t>(earlier));
}

// In this order, 60 in a second are 60 exactly.
float per_second(float count, const FrameSample& later, const FrameSample& earlier)
{
    constexpr float kNanoseconds = 1e9F;
    return count * (kNanoseconds / (as_float(later.flip.time) - as_float(earlier.flip.time)));
}

float flips_between(const FrameSample& later, const FrameSample& earlier)
{
    return count_between(later.flip.flips, earlier.flip.flips);
}

float blits_between(const FrameSample& later, const FrameSample& earlier)
{
    return count_between(later.blits, earlier.blits);
}

void compute_rates(const FrameSample& sample, FpsInfo& info)
{
    info.flips = per_second(flips_between(sample, last_sample), sample, last_sample);
    float count = flips_between(sample, first_sample);
    if (use_IOCTL_get_fps == 0) {
        info.blits = per_second(blits_between(sample, last_sample), sample, last_sample);
        info.flips_blits = info.flips + info.blits;
        count += blits_between(sample, first_sample);
    }
    info.average_since = per_second(count, sample, first_sample);
}

}  // namespace
}  // namespace nimba

int32_t gpuinfo_get_fps_count(uint32_t* flip_count, int64_t* time_stamp, int64_t* blit_count)
{
    const int directory = nimba::info_directory();
    // The interface's 64-bit integers are long here; the formats are the driver's.
    long long time = *time_stamp;
    long long blits = *blit_count;
    nimba::scanf_node_at(directory, "fps_count", "%u %lld", flip_count, &time);
    const int conversions = nimba::scanf_node_at(directory, "rxa_blt_scn_cnt", "%lld", &blits);
    *time_stamp = time;
    *blit_count = blits;
    return conversions;
}

int32_t fps_init(void)
{
    use_IOCTL_get_fps = nimba::library_counts_frames() ? 1 : 0;
    nimba::take_sample(nimba::first_sample);
    nimba::last_sample = nimba::first_sample;
    return 0;
}

int32_t get_fps_info(FpsInfo* info)
{
    nimba::FrameSample sample = nimba::last_sample;
    nimba::take_sample(sample);
    if (sample.flip.time == nimba::last_sample.flip.time) {
        return -1;
    }
    nimba::compute_rates(sample, *info);
    nimba::last_sample = sample;
    return 0;
}
