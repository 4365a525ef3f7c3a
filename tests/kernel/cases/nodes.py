# SPDX-License-Identifier: MIT
"""What real nodes do: sizes of 0, texts longer than a page, refused commands."""

from __future__ import annotations

import errno
import os
import threading
import unittest
from pathlib import Path

from nimba_mgmt import CallFailed, DvfsLevel

from machine import (
    DEVICES,
    FIRST,
    INFO,
    adapter,
    card_of,
    control,
    debug_directory,
    load_driver,
    smi,
    smi_json,
    told,
)

PAGE = 4096

MALFORMED = (
    ("power_mode", "2\n"),
    ("power_mode", "0x2"),
    ("power_mode", "0x02\n"),
    ("pwm_wait_count", "0 3 10\n"),
    ("pwm_wait_count", "0 0 10000\n"),
    ("pwm_wait_count", "0 0 10\n0 1 10\n"),
    ("dvfs_mode", "0x3\n"),
    ("dvfs_control_params", "4 0 10\n"),
    ("dvfs_control_params", "0 3 10\n"),
    ("dvfs_clk_voltage", "c 0 99\n"),
    ("dvfs_clk_voltage", "v 0 1301\n"),
    ("dvfs_clk_voltage", "c 1 500\n"),
    ("dvfs_level", "fast\n"),
    ("dvfs_level", "balance"),
    ("misc_ctl_flag", "0x10\n"),
    ("enable_usage", "2"),
    ("enable_perf", "on"),
)

# Each setting once, with another value than it has.
CHANGES = {
    "power_mode": 5,
    "power_gating_3d": 0x71,
    "clock_gating_3d": 0x21,
    "power_gating_vcp": 0x72,
    "clock_gating_vcp": 0x22,
    "power_gating_vpp": 0x73,
    "clock_gating_vpp": 0x23,
    "mode": 2,
    "gfx_check_size": 0x80,
    "gfx_high_threshold": 0x90,
    "gfx_low_threshold": 0x30,
    "vcp0_check_size": 0x81,
    "vcp0_high_threshold": 0x91,
    "vcp0_low_threshold": 0x31,
    "vcp1_check_size": 0x82,
    "vcp1_high_threshold": 0x92,
    "vcp1_low_threshold": 0x32,
    "vpp_check_size": 0x83,
    "vpp_high_threshold": 0x93,
    "vpp_low_threshold": 0x33,
    "gfx_clock": 1000,
    "gfx_voltage": 900,
    "level": DvfsLevel.PERFORMANCE,
}


def writes(number: int = 0) -> tuple[int, int]:
    counts = told(number)
    return int(counts["accepted"]), int(counts["rejected"])


class Nodes(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        load_driver()
        cls.gpu = cls.enterClassContext(adapter(FIRST))

    def test_nodes_with_a_size_of_0_are_read_to_their_end(self):
        debug = debug_directory(FIRST)
        nodes = [
            debug / "info",
            debug / "allocations/a1/info",
            debug / "devices/00000001/info",
            Path(f"/proc/gpuinfo_{card_of(FIRST)}"),
        ]
        self.assertEqual([node.stat().st_size for node in nodes], [0, 0, 0, 0])
        self.assertEqual([node.read_text() == "" for node in nodes], [False] * 4)
        (first,) = (entry for entry in self.gpu.allocations() if entry.handle == 0xA1)
        self.assertEqual((first.width, first.shared), (1920, 9))  # the third line, and the last

    def test_an_empty_node_is_no_record(self):
        control(0, "allocate handle=0xe0 pid=0")
        found = {record.handle for record in self.gpu.vm_allocations()}
        control(0, "free handle=0xe0")
        self.assertEqual(found, {0xA1, 0xA2, 0x1B3})

    def test_a_dump_of_many_pages_is_read_in_pieces(self):
        control(0, "open handle=0x77 pid=3 tables=16 pages=512")
        try:
            node = debug_directory(FIRST).parent / "qv/devices/00000077/vm_info"
            descriptor = os.open(node, os.O_RDONLY)
            pieces = []
            while piece := os.read(descriptor, 1 << 20):
                pieces.append(len(piece))
            os.close(descriptor)
            self.assertEqual(len(node.read_text().splitlines()), 2 + 16 * 513)
            self.assertGreater(len(pieces), 50)
            self.assertLessEqual(max(pieces), PAGE)
            entries = [entry for entry in self.gpu.page_tables() if entry.pid == 3]
            document = smi_json("pagetable", "--pid", "3")
        finally:
            control(0, "close handle=0x77")
        self.assertEqual(len(entries), 2 + 16 * 513)
        last = entries[-1]
        self.assertEqual((last.index, last.parent_index, last.address), (511, 15, 0x2FFF000))
        self.assertEqual(document["schema"], "nimba-smi.pagetable.1")

    def test_allocations_may_come_and_go_while_they_are_listed(self):
        stop = threading.Event()

        def churn() -> None:
            while not stop.is_set():
                for handle in range(0x200, 0x208):
                    control(0, f"allocate handle={handle} device=1 size=4096")
                for handle in range(0x200, 0x208):
                    control(0, f"free handle={handle}")

        churning = threading.Thread(target=churn)
        churning.start()
        try:
            seen = set()
            for _ in range(20):
                try:
                    seen.update(entry.handle for entry in self.gpu.allocations())
                except CallFailed:
                    pass  # ten passes, and something went in each
        finally:
            stop.set()
            churning.join()
        self.assertLessEqual({0xA1, 0xA2, 0x1B3}, seen)
        self.assertLessEqual(seen, {0xA1, 0xA2, 0x1B3, *range(0x200, 0x208)})
        self.assertEqual(len(self.gpu.allocations()), 3)


class Commands(unittest.TestCase):
    def setUp(self):
        load_driver()

    def test_every_setting_can_be_written(self):
        with adapter(FIRST) as gpu:
            before = writes()
            state = gpu.set_dvfs(**CHANGES)
            after = writes()
        self.assertEqual({name: getattr(state, name) for name in CHANGES}, CHANGES)
        self.assertEqual((after[0] - before[0], after[1] - before[1]), (len(CHANGES), 0))

    def test_a_rejected_write_is_seen_at_the_close_and_changes_nothing(self):
        node = DEVICES / FIRST / INFO / "dvfs_clk_voltage"
        stream = open(node, "w")
        stream.write("c 0 5000\n")  # stays in the buffer
        with self.assertRaises(OSError) as caught:
            stream.close()
        self.assertEqual(caught.exception.errno, errno.EINVAL)
        with adapter(FIRST) as gpu:
            before = writes()
            state = gpu.set_dvfs(gfx_clock=5000, power_mode=7)
            after = writes()
        self.assertEqual((state.gfx_clock, state.power_mode), (640, 7))
        self.assertEqual((after[0] - before[0], after[1] - before[1]), (1, 1))

    def test_nimba_smi_tells_of_a_rejected_write(self):
        document = smi_json("dvfs", "set", "gfx_clock=5000", "-i", FIRST, status=9)
        (field,) = document["fields"]
        self.assertEqual((field["result"], field["before"], field["after"]), ("rejected", 640, 640))
        document = smi_json("dvfs", "set", "gfx_clock=800", "-i", FIRST)
        self.assertEqual(document["fields"][0]["result"], "accepted")
        self.assertEqual(smi("flag", "set", "0x20", "-i", FIRST).returncode, 0)

    def test_a_malformed_command_gets_einval(self):
        accepted = []
        before = writes()
        for node, text in MALFORMED:
            descriptor = os.open(DEVICES / FIRST / INFO / node, os.O_WRONLY)
            try:
                os.write(descriptor, text.encode())
                accepted.append((node, text))
            except OSError as error:
                self.assertEqual(error.errno, errno.EINVAL)
            finally:
                os.close(descriptor)
        after = writes()
        self.assertEqual(accepted, [])
        self.assertEqual((after[0] - before[0], after[1] - before[1]), (0, len(MALFORMED)))
