# SPDX-License-Identifier: MIT
"""Every query once, on the first of three adapters, against what the driver's tables define."""

from __future__ import annotations

import subprocess
import unittest

from nimba_mgmt import (
    Allocation,
    Bandwidth,
    Clocks,
    DeviceContext,
    DeviceMemory,
    DisplayType,
    DvfsLevel,
    DvfsState,
    EngineBusy,
    HwmonNode,
    InfoNode,
    Luid,
    PageTableEntry,
    PageTableKind,
    Resolution,
    Segment,
    Segments,
    SegmentSource,
    VmAllocation,
    preferences,
)

from machine import (
    BUS_IDS,
    FIRST,
    NIMBA,
    STAGE,
    adapter,
    adapters,
    control,
    fork_workers,
    load_driver,
)

SETTINGS = DvfsState(
    power_mode=2,
    power_gating_3d=0x61,
    clock_gating_3d=0x11,
    power_gating_vcp=0x62,
    clock_gating_vcp=0x12,
    power_gating_vpp=0x63,
    clock_gating_vpp=0x13,
    mode=1,
    gfx_check_size=0x40,
    gfx_high_threshold=0x50,
    gfx_low_threshold=0x20,
    vcp0_check_size=0x41,
    vcp0_high_threshold=0x51,
    vcp0_low_threshold=0x21,
    vcp1_check_size=0x42,
    vcp1_high_threshold=0x52,
    vcp1_low_threshold=0x22,
    vpp_check_size=0x43,
    vpp_high_threshold=0x53,
    vpp_low_threshold=0x23,
    gfx_clock=640,
    video_clock=410,
    gfx_voltage=810,
    memory_clock=935,
    level=DvfsLevel.BALANCE,
)

INFO_NODES = {
    InfoNode.ENGINE_3D_USAGE: 61,
    InfoNode.ENGINE_VCP_USAGE: 36,
    InfoNode.ENGINE_VCP_INFO: 7,
    InfoNode.ENGINE_VPP_USAGE: 23,
    InfoNode.FAN_SPEED: 1650,
    InfoNode.VBIOS_VERSION: 812,
    InfoNode.PMP_VERSION: 4,
    InfoNode.RELEASE_DATE: 20250102,
    InfoNode.DRIVER_VERSION: 2130,
    InfoNode.MIU_CHANNEL_NUM: 2,
    InfoNode.SLICE_MASK: 5,
    InfoNode.FB_SIZE: 4096,
    InfoNode.FREE_FB_MEM: 3072,
    InfoNode.ECLK: 640,
    InfoNode.VCLK: 410,
    InfoNode.MCLK: 935,
    InfoNode.ENABLE_PERF: 0,
    InfoNode.ENABLE_USAGE: 1,
    InfoNode.FPS_COUNT: 120,
    InfoNode.RXA_BLT_SCN_CNT: 90,
    InfoNode.MISC_CTL_FLAG: 16,
    InfoNode.POWER_MODE: 0,  # these show texts
    InfoNode.POWER_CASE: 6,
    InfoNode.PWM_WAIT_COUNT: 0,
    InfoNode.DVFS_MODE: 0,
    InfoNode.DVFS_CONTROL_PARAMS: 0,
    InfoNode.DVFS_CLK_VOLTAGE: 0,
    InfoNode.DVFS_LEVEL: 0,
    InfoNode.SEGMENT_INFO: 0,
    InfoNode.CORECLK: 720,
}

NODE_SEGMENTS = Segments(
    SegmentSource.NODE, 10**6, (Segment(0, 272, 4294), Segment(1, 33, 2147))
)
# The heaps' own use and that by allocations.
HEAP_SEGMENTS = Segments(
    SegmentSource.HEAPS,
    1 << 20,
    (
        Segment(0, 7, 0),
        Segment(1, 256, 2048),
        Segment(2, 64, 1024),
        Segment(3, 32, 512),
        Segment(4, 0, None),
    ),
)


class Queries(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        load_driver()
        cls.gpu = cls.enterClassContext(adapter(FIRST))

    def test_discovery_finds_the_adapters_through_libdrm(self):
        found = adapters()
        self.assertEqual([entry.bus_id for entry in found], list(BUS_IDS))
        self.assertEqual(sorted(entry.slot for entry in found), [0, 1, 2])
        self.assertEqual([entry.card for entry in found], [0, 1, 2])
        self.assertEqual([entry.va_driver for entry in found], [True, True, True])
        self.assertEqual(
            [entry.luid for entry in found], [Luid(0, 0x400), Luid(0, 0x500), Luid(0, 0x600)]
        )
        vendor = 0x4E4D if NIMBA else 0x5156
        self.assertEqual([entry.vendor_id for entry in found], [vendor] * 3)
        chips = [0x1001, 0x1002, 0x1005] if NIMBA else [0x2030, 0x2020, 0x2040]
        self.assertEqual([entry.chip_id for entry in found], chips)
        names = ["Nimba-K1", "NimbaK2", "NimbaK5"] if NIMBA else ["QV M-30", "QV M-20", "QV M-40"]
        self.assertEqual([entry.name.partition(":")[2] for entry in found], names)

    def test_summary(self):
        summary = self.gpu.summary()
        self.assertEqual(
            (summary.engine_clock, summary.video_clock, summary.memory_clock, summary.core_clock),
            (640, 410, 935, 720),
        )
        self.assertEqual((summary.frame_buffer_size, summary.memory_channels), (4096, 2))
        self.assertEqual(summary.display_ports, 2)
        self.assertEqual(summary.display_types, DisplayType.HDMI | DisplayType.DP)
        self.assertEqual(summary.pcie_lanes, 4)
        memory = (summary.memory_data_rate, summary.memory_type, summary.memory_bit_width)
        self.assertEqual(memory, (1870, None, None) if NIMBA else (3200, 4, 0))

    def test_summary_ext2(self):
        summary = self.gpu.summary_ext2()
        self.assertEqual(str(summary.driver_version), "2.1b.3c")
        self.assertEqual(str(summary.firmware_version), "4.d.5.e6")
        self.assertEqual(summary.firmware_name, "Reference adapter")
        self.assertEqual((summary.pixel_fillrate, summary.texture_fillrate), (7200, 14400))
        self.assertEqual(summary.memory_clock, 935)
        self.assertEqual(summary.max_resolution_hdmi_dp, Resolution(2560, 1440, 75))
        self.assertEqual(summary.max_resolution_vga, Resolution(1600, 1200, 85))
        self.assertEqual(
            (summary.memory_usage, summary.usage_3d, summary.usage_video, summary.usage_vpp),
            (21, 31, 41, 51),
        )
        self.assertEqual((summary.temperature, summary.pcie_generation), (61, 3))

    def test_displays_are_drms_connectors_where_the_file_tells_none(self):
        control(1, "displays ports=0")
        with adapter(BUS_IDS[1]) as gpu:
            summary = gpu.summary()
        displays = (summary.display_ports, summary.display_types)
        every = DisplayType.VGA | DisplayType.HDMI | DisplayType.DP
        self.assertEqual(displays, (0, DisplayType(0)) if NIMBA else (3, every))

    def test_sensors(self):
        self.assertEqual(self.gpu.temperature(), 47)
        self.assertEqual(self.gpu.hwmon(HwmonNode.TEMP1_INPUT), 47)
        self.assertEqual(self.gpu.hwmon(HwmonNode.FAN0_INPUT), 1650)
        self.assertEqual(self.gpu.hwmon(HwmonNode.FAN1_INPUT), 1720)

    def test_info_nodes(self):
        self.assertEqual({node: self.gpu.info(node) for node in InfoNode}, INFO_NODES)

    def test_clocks(self):
        self.assertEqual(self.gpu.clocks(), Clocks(640, 410, 935))

    def test_settings(self):
        self.assertEqual(self.gpu.dvfs(), SETTINGS)

    def test_segments(self):
        self.assertEqual(self.gpu.segments(), NODE_SEGMENTS if NIMBA else HEAP_SEGMENTS)

    def test_allocations(self):
        found = sorted(self.gpu.allocations(), key=lambda allocation: allocation.handle)
        self.assertEqual([allocation.handle for allocation in found], [0xA1, 0xA2, 0x1B3])
        self.assertEqual(
            found[0],
            Allocation(
                handle=0xA1,
                device=1,
                width=1920,
                height=1080,
                pitch=7680,
                bit_count=32,
                secured=0,
                size=8294400,
                tile=1,
                cpu_visible=0,
                cache_type=2,
                pool_type=3,
                allocation_type=4,
                segment=0,
                hardware_format=5,
                compress_format=6,
                table_slot=7,
                gpu_address=0,  # the low 32 bits
                imported=8,
                offset=0x1000,
                shared=9,
                hits=1,
                group_size=1,
            ),
        )
        last = found[2]
        self.assertEqual((last.device, last.segment, last.gpu_address), (16, 1, 0x20000000))

    def test_memory_by_device(self):
        found = sorted(self.gpu.device_summary(), key=lambda memory: memory.device)
        self.assertEqual(
            found,
            [DeviceMemory(1, (8294400, 262144, 0, 0, 0)), DeviceMemory(16, (0, 16384, 0, 0, 0))],
        )

    def test_device_contexts(self):
        found = sorted(self.gpu.processes(), key=lambda context: context.handle)
        self.assertEqual(
            found,
            [
                DeviceContext(1, 1, "/bin/busybox"),
                DeviceContext(2, 16, ""),  # a kernel thread has no command line
                DeviceContext(0, 0x2000000, ""),
            ],
        )

    def test_leaks(self):
        reports = self.gpu.leaks(interval=0)
        self.assertEqual([group.group_size for group in next(reports)], [1, 1, 1])
        for handle in range(0xC0, 0xC4):
            control(0, f"allocate handle={handle}")
        groups = next(reports)
        for handle in range(0xC0, 0xC4):
            control(0, f"free handle={handle}")
        self.assertEqual([group.group_size for group in groups], [5, 1, 1])
        self.assertEqual((groups[0].width, groups[0].size, groups[0].hits), (256, 262144, 2))

    def test_page_tables_of_processes(self):
        entries = self.gpu.page_tables()
        by_process = {pid: [e for e in entries if e.pid == pid] for pid in {e.pid for e in entries}}
        counts = {pid: len(of_process) for pid, of_process in by_process.items()}
        self.assertEqual(counts, {1: 134, 2: 10})
        table, sub_table = PageTableKind.PAGE_TABLE, PageTableKind.SUB_TABLE
        self.assertEqual(
            by_process[2],
            [
                PageTableEntry(2, 0x10000000, 0, 0, 0, 0, 0, 0, 0, table),
                PageTableEntry(2, 0x10001000, 0, 0, 0, 1, 0, 0, 0, table),
                PageTableEntry(2, 0x10002000, 0, 0, 0, 2, 0, 0, 0, table),
                PageTableEntry(2, 0x10003000, 0, 0, 0, 2, 1, 0, 0, table),
                PageTableEntry(2, 0x1000000, 0, 0, 0, 2, 0, 2, 0, sub_table),
                PageTableEntry(2, 0x1001000, 1, 0, 0, 2, 1, 2, 0, sub_table),
                PageTableEntry(2, 0x1002000, 0, 0, 0, 2, 2, 2, 0, sub_table),
                PageTableEntry(2, 0x1200000, 0, 1, 0, 2, 0, 2, 1, sub_table),
                PageTableEntry(2, 0x1201000, 1, 1, 0, 2, 1, 2, 1, sub_table),
                PageTableEntry(2, 0x1202000, 0, 1, 0, 2, 2, 2, 1, sub_table),
            ],
        )

    def test_allocations_in_address_spaces(self):
        found = sorted(self.gpu.vm_allocations(), key=lambda allocation: allocation.handle)
        self.assertEqual(
            found,
            [
                VmAllocation(1, 0xA1, 8294400, 0x100000000),
                VmAllocation(1, 0xA2, 262144, 0x110000000),
                VmAllocation(2, 0x1B3, 16384, 0x120000000),
            ],
        )

    def test_frames_of_the_kernel_interface_library(self):
        control(0, "frames flips=120 time=2000000000 blits=90")
        self.assertIsNone(self.gpu.frame_rate())
        control(0, "frames flips=180 time=3000000000 blits=120")
        rate = self.gpu.frame_rate()
        control(0, "frames flips=120 time=2000000000 blits=90")
        self.assertEqual((rate.flips, rate.blits, rate.average), (60.0, None, 60.0))

    def test_bandwidth_through_an_ioctl(self):
        words = (9100, 8100, 7100, 6100, 5100, 4100, 3100, 2100, 1100, 910, 810, 711)
        self.assertEqual(self.gpu.bandwidth(), Bandwidth(words))

    def test_engine_use_through_an_ioctl(self):
        words = (None, None, 61, None, 36, 37, None, 23, None, None)
        self.assertEqual(self.gpu.engine_busy(), EngineBusy(words))

    def test_control_flag(self):
        self.assertEqual(self.gpu.misc_ctl_flag(set=0x5, clear=0x10), 0x5)
        self.assertEqual(self.gpu.misc_ctl_flag(set=0x10, clear=0x5), 0x10)

    def test_preferences(self):
        self.enterContext(fork_workers())
        preferences.set("/opt/games/maze", FIRST, gpu_name="first")
        self.assertEqual(preferences.get("maze").bus_id, FIRST)
        self.assertTrue(preferences.remove("maze"))
        self.assertIsNone(preferences.get("maze"))


class WithoutKernelInterface(unittest.TestCase):
    def test_frames_of_the_drivers_nodes(self):
        load_driver()
        name = "libnimbahwbridge_v2.so.0.0.0" if NIMBA else "libmv9hwbridge_v2.so.0.0.0"
        subprocess.run(["mount", "--bind", "/dev/null", STAGE / "lib" / name], check=True)
        self.addCleanup(subprocess.run, ["umount", STAGE / "lib" / name], check=True)
        with adapter(FIRST, partial=True) as gpu:
            self.assertFalse(gpu.complete)
            self.assertIsNone(gpu.frame_rate())
            control(0, "frames flips=180 time=3000000000 blits=120")
            rate = gpu.frame_rate()
        self.assertEqual((rate.flips, rate.blits, rate.flips_blits), (60.0, 30.0, 90.0))


class LegacyDriver(unittest.TestCase):
    def test_devices_of_a_legacy_driver_are_hexadecimal(self):
        load_driver(va=0)
        with adapter(FIRST) as gpu:
            self.assertFalse(gpu.identity.va_driver)
            self.assertEqual({entry.device for entry in gpu.allocations()}, {1, 16})
            handles = {context.handle for context in gpu.processes()}
        self.assertEqual(handles, {1, 16, 0x2000000})
