# SPDX-License-Identifier: MIT
"""A library that is configured for the device's own identifiers."""

from __future__ import annotations

import unittest

from nimba_mgmt import Clocks

from machine import BUS_IDS, CONFIGURED, FIRST, NIMBA, adapter, adapters, load_driver


class Identifiers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        load_driver(chips=0)

    def test_the_devices_own_identifiers_are_a_chip_of_the_family(self):
        found = adapters(library=CONFIGURED)
        self.assertEqual([entry.bus_id for entry in found], list(BUS_IDS))
        identities = {(entry.vendor_id, entry.chip_id) for entry in found}
        self.assertEqual(identities, {(0x1234, 0x11E8)})
        names = {entry.name.partition(":")[2] for entry in found}
        self.assertEqual(names, {"Nimba-K1" if NIMBA else "QV M-30"})

    def test_it_asks_the_familys_nodes(self):
        with adapter(FIRST, library=CONFIGURED) as gpu:
            self.assertEqual(gpu.clocks(), Clocks(640, 410, 935))
            self.assertEqual(len(gpu.allocations()), 3)
            self.assertEqual(gpu.segments().source.value, "node" if NIMBA else "heaps")
            self.assertEqual(gpu.summary().display_ports, 2)
            self.assertEqual(gpu.summary().memory_data_rate, 1870 if NIMBA else 3200)

    def test_a_library_for_other_identifiers_finds_another_vendors_gpu(self):
        (found,) = adapters()
        self.assertEqual((found.foreign, found.vendor_id, found.chip_id), (True, 0x1234, 0x11E8))
