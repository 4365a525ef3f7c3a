# SPDX-License-Identifier: MIT
"""What can be asked of the adapters of the machine steady.toml."""

import time
import unittest

import nimba_mgmt
from nimba_mgmt import (
    Adapter,
    AdapterInfo,
    Bandwidth,
    Clocks,
    DeviceContext,
    DeviceMemory,
    DisplayType,
    DvfsLevel,
    EngineBusy,
    HwmonNode,
    InfoNode,
    Luid,
    NoAdapter,
    PageTableKind,
    Resolution,
    Segment,
    Segments,
    SegmentSource,
    VmAllocation,
)

from support import needs_live_drivers


class Discovery(unittest.TestCase):
    def test_adapters_and_another_vendors_gpu_are_listed(self):
        self.assertEqual(
            nimba_mgmt.adapters(),
            [
                AdapterInfo(
                    0, "Gpu0:Nimba-K1", "0000:01:00.0", 0x4E4D, 0x1001, 0, True, Luid(0, 0x10000)
                ),
                AdapterInfo(
                    1, "Gpu1:QV M-20", "0000:03:00.0", 0x5156, 0x2020, 1, False, Luid(0, 0x30000)
                ),
                AdapterInfo(
                    None, "Gpu2:Nvidia-GPU", "0000:04:00.0", 0x10DE, 0x2684, 2, False,
                    Luid(0, 0x40000),
                ),
            ],
        )  # fmt: skip

    def test_another_vendors_gpu_cannot_be_opened(self):
        with self.assertRaisesRegex(NoAdapter, "another vendor's"):
            Adapter("0000:04:00.0")


class NimbaAdapter(unittest.TestCase):
    def setUp(self):
        self.gpu = self.enterContext(Adapter("0000:01:00.0"))

    def test_the_summary_has_no_memory_modules(self):
        summary = self.gpu.summary()
        self.assertEqual(
            (summary.engine_clock, summary.video_clock, summary.memory_clock), (550, 350, 1000)
        )
        self.assertEqual((summary.core_clock, summary.memory_data_rate), (600, 2000))
        self.assertEqual((summary.frame_buffer_size, summary.memory_channels), (3814, 2))
        self.assertEqual(summary.display_ports, 3)
        self.assertEqual(
            summary.display_types, DisplayType.VGA | DisplayType.HDMI | DisplayType.DP
        )
        self.assertIsNone(summary.memory_type)
        self.assertIsNone(summary.memory_bit_width)

    def test_the_extended_summary_is_unpacked(self):
        summary = self.gpu.summary_ext2()
        self.assertEqual(str(summary.driver_version), "1.2.a")
        self.assertEqual(str(summary.firmware_version), "8.f.0.1c")
        self.assertEqual(summary.firmware_name, "Simulated adapter")
        self.assertEqual((summary.pixel_fillrate, summary.texture_fillrate), (9600, 19200))
        self.assertEqual(summary.memory_clock, 1000)
        self.assertEqual(summary.max_resolution_hdmi_dp, Resolution(3840, 2160, 60))
        self.assertEqual(summary.max_resolution_vga, Resolution(1920, 1080, 75))
        self.assertEqual((summary.memory_usage, summary.temperature), (2, 50))
        self.assertEqual(summary.pcie_generation, 4)

    def test_use_is_told_while_the_adapter_is_open(self):
        needs_live_drivers()
        summary = self.gpu.summary_ext2()
        self.assertEqual((summary.usage_3d, summary.usage_video, summary.usage_vpp), (50, 25, 13))
        self.assertEqual(self.gpu.info(InfoNode.ENGINE_3D_USAGE), 50)
        self.assertEqual(
            self.gpu.engine_busy(),
            EngineBusy((None, None, 50, None, 25, 20, None, 13, None, None)),
        )

    def test_sensors_and_nodes_are_numbers(self):
        self.assertEqual(self.gpu.temperature(), 50)
        self.assertEqual(self.gpu.hwmon(HwmonNode.FAN0_INPUT), 1600)
        self.assertEqual(self.gpu.info(InfoNode.FB_SIZE), 3814)
        self.assertEqual(self.gpu.info(InfoNode.CORECLK), 600)
        self.assertEqual(self.gpu.clocks(), Clocks(550, 350, 1000))
        with self.assertRaises(ValueError):
            self.gpu.info(30)

    def test_the_settings_are_told(self):
        state = self.gpu.dvfs()
        self.assertEqual((state.power_mode, state.mode), (1, 1))
        self.assertEqual((state.power_gating_vcp, state.clock_gating_vpp), (100, 16))
        self.assertEqual(
            (state.vcp1_check_size, state.gfx_high_threshold, state.vpp_low_threshold),
            (64, 80, 30),
        )
        self.assertEqual((state.gfx_clock, state.gfx_voltage), (550, 800))
        self.assertEqual((state.video_clock, state.memory_clock), (350, 1000))
        self.assertIs(state.level, DvfsLevel.BALANCE)

    def test_segments_come_from_the_node(self):
        self.assertEqual(
            self.gpu.segments(),
            Segments(
                SegmentSource.NODE, 1000000, (Segment(0, 104, 4000), Segment(1, 0, 2000))
            ),
        )

    def test_allocations_are_listed(self):
        picture, font = self.gpu.allocations()
        self.assertEqual((picture.handle, picture.device, picture.size), (0x10, 1, 4194304))
        self.assertEqual((picture.width, picture.height, picture.bit_count), (1024, 1024, 32))
        self.assertEqual((font.handle, font.segment, font.allocation_type), (0x11, 1, 1))
        self.assertEqual((font.gpu_address, font.offset), (0x440000, 0x1440000))

    def test_devices_and_their_processes_are_listed(self):
        self.assertEqual(
            self.gpu.device_summary(),
            [DeviceMemory(1, (4194304, 0, 0, 0, 0)), DeviceMemory(2, (0, 65536, 0, 0, 0))],
        )
        self.assertEqual(
            self.gpu.processes(),
            [
                DeviceContext(4100001, 1, "/usr/bin/viewer"),
                DeviceContext(4100002, 2, "/usr/games/maze"),
            ],
        )

    def test_allocations_that_stay_are_hit_in_every_snapshot(self):
        first, second = self.gpu.leaks(interval=0, count=2)
        self.assertEqual([(group.group_size, group.hits) for group in first], [(1, 1), (1, 1)])
        self.assertEqual([(group.group_size, group.hits) for group in second], [(1, 2), (1, 2)])

    def test_page_tables_are_listed(self):
        entries = self.gpu.page_tables()
        self.assertEqual(len(entries), 8)
        last = entries[-1]
        self.assertEqual((last.pid, last.address, last.segment), (4100002, 21233664, 1))
        self.assertEqual((last.level, last.index), (2, 4))
        self.assertEqual((last.parent_level, last.parent_index), (2, 2050))
        self.assertIs(last.kind, PageTableKind.SUB_TABLE)

    def test_allocations_in_address_spaces_are_listed(self):
        expected = [
            VmAllocation(4100001, 0x10, 4194304, 0x100000000),
            VmAllocation(4100002, 0x11, 65536, 0x100440000),
        ]
        self.assertEqual(self.gpu.vm_allocations(again=False), [])
        self.assertEqual(self.gpu.vm_allocations(), expected)
        self.assertEqual(self.gpu.vm_allocations(again=False), expected)

    def test_bandwidth_has_all_words(self):
        self.assertEqual(
            self.gpu.bandwidth(),
            Bandwidth((4000, 3000, 2000, 1500, 1200, 800, 600, 400, 300, 200, 100, 51)),
        )

    def test_frames_are_counted_by_the_kernel_interface_library(self):
        self.assertIsNone(self.gpu.frame_rate())
        end = time.monotonic() + 20
        rate = self.gpu.frame_rate()
        while rate is None and time.monotonic() < end:
            rate = self.gpu.frame_rate()
        self.assertGreater(rate.flips, 0)
        self.assertIsNone(rate.blits)
        self.assertIsNone(rate.flips_blits)


class QvAdapter(unittest.TestCase):
    def setUp(self):
        self.gpu = self.enterContext(Adapter(1))

    def test_the_summary_has_the_memory_modules(self):
        summary = self.gpu.summary()
        self.assertEqual((summary.memory_type, summary.memory_bit_width), (4, 128))
        self.assertEqual(summary.memory_data_rate, 3200)

    def test_segments_come_from_the_heaps(self):
        self.assertEqual(
            self.gpu.segments(),
            Segments(
                SegmentSource.HEAPS,
                1048576,
                (
                    Segment(0, 0, 0),
                    Segment(1, 64, 2048),
                    Segment(2, 16, 1024),
                    Segment(3, 0, 1024),
                    Segment(4, 0, None),
                ),
            ),
        )

    def test_bandwidth_has_the_words_of_an_m20(self):
        self.assertEqual(
            self.gpu.bandwidth(),
            Bandwidth((4000, 3000, 2000, 1500, None, None, None, None, 800, 600, None, None)),
        )

    def test_there_are_no_allocations(self):
        self.assertEqual(self.gpu.allocations(), [])
        self.assertEqual(self.gpu.device_summary(), [])
        self.assertEqual(self.gpu.processes(), [])
        self.assertEqual(list(self.gpu.leaks(count=1)), [()])


class TwoAdapters(unittest.TestCase):
    def test_two_adapters_are_open_at_the_same_time(self):
        with Adapter(0) as first, Adapter(1) as second:
            self.assertEqual(len(first.allocations()), 2)
            self.assertEqual(second.allocations(), [])
            self.assertEqual(first.temperature(), 50)

    def test_a_call_that_cannot_be_made_leaves_the_others(self):
        with Adapter(0) as gpu:
            with self.assertRaises(TypeError):
                gpu.set_dvfs(video_clock=1)
            self.assertEqual(gpu.temperature(), 50)


if __name__ == "__main__":
    unittest.main()
