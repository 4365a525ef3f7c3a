/* SPDX-License-Identifier: MIT */
/* How the stand-ins for kernel-interface libraries ask the simulated driver behind a DRM descriptor
 * for its counters; C11 and C++20. */
#ifndef NIMBA_SIM_KERNEL_INTERFACE_IOCTL_H
#define NIMBA_SIM_KERNEL_INTERFACE_IOCTL_H

#include <stdint.h>

#include <linux/ioctl.h>

struct nimba_sim_counters {
    int64_t time; /* of the last flip, in nanoseconds since the machine began */
    int64_t flips;
    uint32_t hardware[12];
    uint32_t usage[13];
    uint32_t unused;
};

/* The last of the numbers that DRM leaves to each driver. */
#define NIMBA_SIM_IOCTL_COUNTERS _IOR('d', 0x9f, struct nimba_sim_counters)

#endif
