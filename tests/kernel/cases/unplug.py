# SPDX-License-Identifier: MIT
"""An adapter that leaves the bus while it is in use, and comes back."""

from __future__ import annotations

import errno
import fcntl
import os
import threading
import unittest

from nimba_mgmt import CallFailed, Clocks, DvfsState, InfoNode

from machine import (
    BUS_IDS,
    DEVICES,
    FIRST,
    INFO,
    adapter,
    adapters,
    card_of,
    debug_directory,
    load_driver,
    remove_device,
    reopen,
    rescan,
    smi_json,
)

# DRM_IOCTL_GET_MAGIC, which writes one number.
GET_MAGIC = 0x80046402


def reading_error(descriptor: int) -> int:
    try:
        os.pread(descriptor, 64, 0)
    except OSError as error:
        return error.errno
    return 0


class Unplug(unittest.TestCase):
    def setUp(self):
        load_driver()
        self.addCleanup(rescan)

    def held(self, path: object, flags: int = os.O_RDONLY) -> int:
        descriptor = os.open(path, flags)
        self.addCleanup(os.close, descriptor)
        return descriptor

    def test_descriptors_that_are_held_fail_with_eio_and_enodev(self):
        card = card_of(FIRST)
        attribute = self.held(DEVICES / FIRST / INFO / "eclk")
        debug = self.held(debug_directory(FIRST) / "allocations/a1/info")
        dump = self.held(debug_directory(FIRST).parent / "qv/devices/00000001/vm_info")
        proc = self.held(f"/proc/gpuinfo_{card}")
        node = self.held(f"/dev/dri/card{card}", os.O_RDWR)
        info = self.held(DEVICES / FIRST / INFO, os.O_RDONLY | os.O_DIRECTORY)
        self.assertEqual([reading_error(d) for d in (attribute, debug, dump, proc)], [0] * 4)
        remove_device(FIRST)
        self.assertEqual(reading_error(attribute), errno.ENODEV)
        self.assertEqual([reading_error(d) for d in (debug, dump, proc)], [errno.EIO] * 3)
        with self.assertRaises(OSError) as caught:
            fcntl.ioctl(node, GET_MAGIC, bytes(4))
        self.assertEqual(caught.exception.errno, errno.ENODEV)
        with self.assertRaises(FileNotFoundError):
            os.open("eclk", os.O_RDONLY, dir_fd=info)

    def test_an_adapter_that_left_reads_as_untold_and_one_that_came_back_as_before(self):
        gone = self.enterContext(adapter(FIRST))
        self.assertEqual(gone.clocks(), Clocks(640, 410, 935))
        remove_device(FIRST)
        self.assertIsNone(gone.temperature())
        self.assertEqual(gone.clocks(), Clocks(0, 0, 0))
        self.assertEqual(gone.info(InfoNode.FB_SIZE), 0)
        self.assertEqual(gone.dvfs(), DvfsState(*[None] * 21, 0, None, 0, None))
        self.assertIsNone(gone.summary_ext2().temperature)
        for query in (gone.allocations, gone.processes, gone.device_summary, gone.segments,
                      gone.bandwidth):
            self.assertRaises(CallFailed, query)
        self.assertEqual(gone.misc_ctl_flag(set=1), 0)
        left = [entry.bus_id for entry in adapters()]
        self.assertEqual(left, list(BUS_IDS[1:]))

        rescan()
        self.assertEqual(card_of(FIRST), 3)  # the old card is still open
        with adapter(FIRST) as back:
            self.assertEqual(back.identity.card, 3)
            self.assertEqual(back.clocks(), Clocks(640, 410, 935))
            self.assertEqual(len(back.allocations()), 3)
            self.assertEqual(back.temperature(), 47)
        self.assertEqual(gone.clocks(), Clocks(0, 0, 0))
        reopen(gone)
        self.assertEqual(gone.clocks(), Clocks(640, 410, 935))

    def test_the_card_number_comes_back_when_nobody_held_the_card(self):
        remove_device(BUS_IDS[1])
        document = smi_json("list")
        self.assertEqual(len(document["adapters"]), 2)
        rescan()
        self.assertEqual(card_of(BUS_IDS[1]), 1)
        document = smi_json("list")
        self.assertEqual(sorted(a["bus_id"] for a in document["adapters"]), list(BUS_IDS))

    def test_queries_end_while_the_adapter_leaves_and_returns(self):
        stop = threading.Event()
        rounds = 0

        def plug() -> None:
            nonlocal rounds
            while not stop.is_set():
                remove_device(FIRST)
                rescan()
                rounds += 1

        plugging = threading.Thread(target=plug)
        seen = set()
        with adapter(FIRST) as gpu:
            plugging.start()
            try:
                while rounds < 5:
                    seen.add(gpu.clocks())
                    gpu.dvfs()
                    gpu.summary_ext2()
                    for query in (gpu.allocations, gpu.processes, gpu.page_tables, gpu.segments):
                        try:
                            query()
                        except CallFailed:
                            pass
            finally:
                stop.set()
                plugging.join()
        # The adapter's directory is that of its first stay, and goes node by node between the reads.
        for clocks in seen:
            self.assertIn(clocks.engine, (640, 0))
            self.assertIn(clocks.video, (410, 0))
            self.assertIn(clocks.memory, (935, 0))
        with adapter(FIRST) as gpu:
            self.assertEqual(gpu.clocks(), Clocks(640, 410, 935))
