# SPDX-License-Identifier: MIT
"""Three adapters, two of them, and one."""

from __future__ import annotations

import unittest
from contextlib import ExitStack

from nimba_mgmt import Clocks

from machine import BUS_IDS, adapter, adapters, bind, load_driver, smi_json, unbind


class SeveralAdapters(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        load_driver()

    def test_three_adapters_are_open_together_and_each_tells_its_own(self):
        with ExitStack() as stack:
            open_ones = [stack.enter_context(adapter(bus_id)) for bus_id in BUS_IDS]
            self.assertEqual(
                [gpu.clocks() for gpu in open_ones],
                [Clocks(640, 410, 935), Clocks(650, 420, 945), Clocks(660, 430, 955)],
            )
            self.assertEqual([gpu.temperature() for gpu in open_ones], [47, 48, 49])
            self.assertEqual([gpu.summary_ext2().temperature for gpu in open_ones], [61, 62, 63])
            self.assertEqual([gpu.bandwidth().words[0] for gpu in open_ones], [9100, 9101, 9102])
            self.assertEqual([len(gpu.allocations()) for gpu in open_ones], [3, 3, 3])

    def test_those_that_are_bound_are_listed(self):
        listed = []
        unbind(BUS_IDS[1])
        listed.append([entry.bus_id for entry in adapters()])
        documents = [smi_json("list")]
        unbind(BUS_IDS[0])
        listed.append([entry.bus_id for entry in adapters()])
        unbind(BUS_IDS[2])
        listed.append([entry.bus_id for entry in adapters()])
        for bus_id in BUS_IDS:
            bind(bus_id)
        listed.append([entry.bus_id for entry in adapters()])
        documents.append(smi_json("list"))
        self.assertEqual(
            listed, [[BUS_IDS[0], BUS_IDS[2]], [BUS_IDS[2]], [], list(BUS_IDS)]
        )
        self.assertEqual([len(document["adapters"]) for document in documents], [2, 3])
