// SPDX-License-Identifier: MIT
// What the real libdrm finds on the shipped machines.
#include "nimba_mgmt_interface.h"
#include "sim_run.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>

namespace nimba::sim::test {
namespace {

// "4e4d:1001"; a board vendor may have chosen other identifiers than the header's defaults.
std::string id(uint16_t vendor, uint16_t device)
{
    return fmt::format("{:04x}:{:04x}", vendor, device);
}

void expect_listed(const std::string& machine, const std::string& expected)
{
    const Result result = run_on(machine, LIST_DRM);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, expected);
}

TEST(DrmDevices, DefaultMachineHasAnAdapterAndAnNvidiaGpu)
{
    expect_listed(
        "default",
        "2 devices\n"
        "pci 0000:01:00.0 " +
            id(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1) +
            "\n"
            "  /dev/dri/card0: jw 1.0.0, 20240101, Simulated graphics adapter\n"
            "  /dev/dri/renderD128: jw 1.0.0, 20240101, Simulated graphics adapter\n"
            "pci 0000:02:00.0 10de:2684\n"
            "  /dev/dri/card1: nvidia-drm 1.0.0, 20240101, Simulated graphics adapter\n"
            "  /dev/dri/renderD129: nvidia-drm 1.0.0, 20240101, Simulated graphics adapter\n");
}

TEST(DrmDevices, TwoQvAdapters)
{
    expect_listed("two-qv",
                  "2 devices\n"
                  "pci 0000:01:00.0 " +
                      id(QV_VENDOR_ID, DEVICE_ID_QV_M30) +
                      "\n"
                      "  /dev/dri/card0: qv 1.0.0, 20240101, Simulated graphics adapter\n"
                      "  /dev/dri/renderD128: qv 1.0.0, 20240101, Simulated graphics adapter\n"
                      "pci 0000:03:00.0 " +
                      id(QV_VENDOR_ID, DEVICE_ID_QV_M20) +
                      "\n"
                      "  /dev/dri/card1: qv 1.0.0, 20240101, Simulated graphics adapter\n"
                      "  /dev/dri/renderD129: qv 1.0.0, 20240101, Simulated graphics adapter\n");
}

TEST(DrmDevices, ManyDevicesAreListedByCardNumber)
{
    expect_listed(
        "many-devices",
        "6 devices\n"
        "bus type 2\n"
        "  /dev/dri/card0: simple-framebuffer.0 1.0.0, 20240101, Simulated graphics adapter\n"
        "pci 0000:01:00.0 " +
            id(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K6) +
            "\n"
            "  /dev/dri/card1: jw 1.0.0, 20240101, Simulated graphics adapter\n"
            "  /dev/dri/renderD129: jw 1.0.0, 20240101, Simulated graphics adapter\n"
            "pci 0000:02:00.0 1002:744c\n"
            "  /dev/dri/card2: amdgpu 1.0.0, 20240101, Simulated graphics adapter\n"
            "  /dev/dri/renderD130: amdgpu 1.0.0, 20240101, Simulated graphics adapter\n"
            "pci 0000:03:00.0 " +
            id(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K2) +
            "\n"
            "  /dev/dri/card3: jw 1.0.0, 20240101, Simulated graphics adapter\n"
            "  /dev/dri/renderD131: jw 1.0.0, 20240101, Simulated graphics adapter\n"
            "pci 0000:04:00.0 " +
            id(QV_VENDOR_ID, DEVICE_ID_QV_M40) +
            "\n"
            "  /dev/dri/card4: qv 1.0.0, 20240101, Simulated graphics adapter\n"
            "  /dev/dri/renderD132: qv 1.0.0, 20240101, Simulated graphics adapter\n"
            "pci 0000:41:00.0 10de:2684\n"
            "  /dev/dri/card10: nvidia-drm 1.0.0, 20240101, Simulated graphics adapter\n"
            "  /dev/dri/renderD138: nvidia-drm 1.0.0, 20240101, Simulated graphics adapter\n");
}

TEST(DrmDevices, NoGpuMeansNoDevice)
{
    expect_listed("no-gpu", "0 devices\n");
}

TEST(DrmDevices, ForeignOnlyMachineHasNoAdapter)
{
    expect_listed(
        "foreign-only",
        "1 devices\n"
        "pci 0000:01:00.0 10de:2684\n"
        "  /dev/dri/card0: nvidia-drm 1.0.0, 20240101, Simulated graphics adapter\n"
        "  /dev/dri/renderD128: nvidia-drm 1.0.0, 20240101, Simulated graphics adapter\n");
}

TEST(DrmDevices, DriverWithoutVersionOpensAndRefuses)
{
    expect_listed("no-version",
                  "2 devices\n"
                  "pci 0000:01:00.0 " +
                      id(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1) +
                      "\n"
                      "  /dev/dri/card0: version: No such device\n"
                      "  /dev/dri/renderD128: version: No such device\n"
                      "pci 0000:02:00.0 " +
                      id(QV_VENDOR_ID, DEVICE_ID_QV_M30) +
                      "\n"
                      "  /dev/dri/card1: qv 1.0.0, 20240101, Simulated graphics adapter\n"
                      "  /dev/dri/renderD129: qv 1.0.0, 20240101, Simulated graphics adapter\n");
}

TEST(DrmDevices, ClosedNodesAreListedButOpenForNobody)
{
    expect_listed("closed-nodes",
                  "1 devices\n"
                  "pci 0000:01:00.0 " +
                      id(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1) +
                      "\n"
                      "  /dev/dri/card0: open: Input/output error\n"
                      "  /dev/dri/renderD128: open: Input/output error\n");
}

TEST(DrmDevices, ControlNodeStandsBesideAClosedPrimaryNode)
{
    expect_listed("control-only",
                  "1 devices\n"
                  "pci 0000:01:00.0 " +
                      id(QV_VENDOR_ID, DEVICE_ID_QV_M20) +
                      "\n"
                      "  /dev/dri/card0: open: Input/output error\n"
                      "  /dev/dri/controlD64: qv 1.0.0, 20240101, Simulated graphics adapter\n");
}

}  // namespace
}  // namespace nimba::sim::test
