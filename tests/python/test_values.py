# SPDX-License-Identifier: MIT
"""What records become in Python, from their bytes."""

import dataclasses
import pickle
import struct
import unittest
from ctypes import c_uint32
from typing import Annotated

import nimba_mgmt
from nimba_mgmt import (
    Allocation,
    CallFailed,
    DeadlineExceeded,
    DeviceContext,
    DisplayType,
    DvfsState,
    FrameRate,
    Resolution,
    Summary,
    SummaryExt2,
    VersionMismatch,
    WorkerDied,
)
from nimba_mgmt._layout import At, c_record, decode, decode_all


class Decoding(unittest.TestCase):
    def test_versions_and_resolutions_are_unpacked(self):
        image = bytearray(232)
        struct.pack_into("<QQ32s", image, 0, 0x1_0002_000A, 0x0008_000F_0000_001C, b"Firmware\0x")
        struct.pack_into("<QQ", image, 64, 3840 << 48 | 2160 << 32 | 60, 0)
        summary = decode(SummaryExt2, bytes(image))
        self.assertEqual(str(summary.driver_version), "1.2.a")
        self.assertEqual(summary.driver_version.raw, 4295098378)
        self.assertEqual(summary.firmware_version.parts, (8, 15, 0, 28))
        self.assertEqual(str(summary.firmware_version), "8.f.0.1c")
        self.assertEqual(summary.firmware_name, "Firmware")
        self.assertEqual(summary.max_resolution_hdmi_dp, Resolution(3840, 2160, 60))
        self.assertEqual(str(summary.max_resolution_hdmi_dp), "3840x2160@60")
        self.assertIsNone(summary.max_resolution_vga)

    def test_a_summary_that_tells_nothing_has_no_versions(self):
        summary = decode(SummaryExt2, bytes(232))
        self.assertIsNone(summary.driver_version)
        self.assertIsNone(summary.firmware_version)
        self.assertEqual(summary.firmware_name, "")

    def test_usage_that_is_not_told_is_none_and_zero_is_zero(self):
        image = bytearray(232)
        struct.pack_into("<5I", image, 80, 0xFFFFFFFF, 0, 0xFFFFFFFF, 7, 0xFFFFFFFF)
        summary = decode(SummaryExt2, bytes(image))
        self.assertEqual(
            (summary.memory_usage, summary.usage_3d, summary.usage_video, summary.usage_vpp),
            (None, 0, None, 7),
        )
        self.assertIsNone(summary.temperature)

    def test_display_types_are_flags_and_unknown_ones_are_kept(self):
        image = bytearray(48)
        struct.pack_into("<I", image, 28, 4 + 8 + 64)
        types = decode(Summary, bytes(image)).display_types
        self.assertIn(DisplayType.HDMI, types)
        self.assertIn(DisplayType.DP, types)
        self.assertNotIn(DisplayType.VGA, types)
        self.assertEqual(int(types), 76)

    def test_what_a_call_left_as_it_was_is_none(self):
        first = bytes(40) + b"\xa5" * 8
        second = bytes(40) + b"\x5a" * 8
        summary = decode(Summary, first, second)
        self.assertEqual(summary.pcie_lanes, 0)
        self.assertIsNone(summary.memory_type)
        self.assertIsNone(summary.memory_bit_width)

    def test_a_value_that_looks_like_the_first_mark_is_a_value(self):
        image = bytearray(b"\xa5" * 108)
        again = bytearray(b"\x5a" * 108)
        struct.pack_into("<h", again, 4, -23131)  # 0xA5A5, as before
        state = decode(DvfsState, bytes(image), bytes(again))
        self.assertEqual(state.power_gating_3d, -23131)
        self.assertIsNone(state.clock_gating_3d)
        self.assertIsNone(state.level)

    def test_a_level_without_a_name_is_its_number(self):
        image = bytearray(108)
        struct.pack_into("<I", image, 104, 9)
        self.assertEqual(decode(DvfsState, bytes(image), bytes(image)).level, 9)

    def test_rates_that_are_not_written_are_none(self):
        image = struct.pack("<f", 60.0) + b"\xa5" * 8 + struct.pack("<f", 59.5)
        self.assertEqual(decode(FrameRate, image), FrameRate(60.0, None, None, 59.5))

    def test_sizes_of_two_gibibytes_and_more_have_no_sign(self):
        image = bytearray(184)
        struct.pack_into("<i", image, 28, -0x80000000)
        struct.pack_into("<i", image, 92 + 52, -1)
        first, second = decode_all(Allocation, bytes(image))
        self.assertEqual(first.size, 2147483648)
        self.assertEqual(second.segment, -1)

    def test_names_of_processes_keep_bytes_that_are_no_text(self):
        image = struct.pack("<ii64s", 7, 8, b"caf\xc3\xa9 \xff")
        self.assertEqual(decode(DeviceContext, image).name, "caf\u00e9 \udcff")


class Records(unittest.TestCase):
    def test_records_cannot_be_changed_and_can_be_compared(self):
        rate = FrameRate(1.0, None, None, 2.0)
        with self.assertRaises(dataclasses.FrozenInstanceError):
            rate.flips = 3.0
        self.assertEqual(rate, FrameRate(1.0, None, None, 2.0))

    def test_a_record_whose_fields_do_not_fit_is_refused(self):
        @dataclasses.dataclass(frozen=True)
        class Odd:
            """A field at byte 2, which C would move to byte 4."""

            field: Annotated[int, At(2, c_uint32, "a word")]

        with self.assertRaisesRegex(TypeError, "odd.field is not at byte 2"):
            c_record("odd", 8)(Odd)


class Errors(unittest.TestCase):
    def test_errors_tell_what_went_wrong(self):
        self.assertEqual(
            str(CallFailed("get_segment_info", -1)), "get_segment_info failed with status -1"
        )
        self.assertEqual(
            str(WorkerDied("gfx_global_init", "signal SIGABRT", "abort")),
            "gfx_global_init: the worker died of signal SIGABRT: abort",
        )
        self.assertEqual(
            str(VersionMismatch(22, 1 << 16)),
            "the library's interface version is 1.0, this package needs 0.22",
        )
        self.assertEqual(str(DeadlineExceeded("dlopen", 0.5)), "dlopen took longer than 0.5 s")

    def test_errors_can_be_pickled(self):
        error = pickle.loads(pickle.dumps(CallFailed("a", -1, "b")))
        self.assertEqual((error.call, error.status, error.reason), ("a", -1, "b"))

    def test_every_error_is_a_nimba_error(self):
        for name in nimba_mgmt.__all__:
            kind = getattr(nimba_mgmt, name)
            if isinstance(kind, type) and issubclass(kind, Exception):
                self.assertTrue(issubclass(kind, nimba_mgmt.NimbaError), name)


if __name__ == "__main__":
    unittest.main()
