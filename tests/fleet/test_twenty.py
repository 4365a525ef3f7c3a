# SPDX-License-Identifier: MIT
"""One Prometheus that scrapes twenty exporters on twenty simulated machines."""

import unittest

from support import Exporter, Prometheus, Workplace, until

COUNT = 20

MACHINE = """description = "The machine number {number} of a farm"

[[process]]
pid = 4100001
name = "/usr/bin/solver"

[[adapter]]
chip = "nimba-k5"
bus_id = "0000:01:00.0"
card = 0

[[adapter.segment]]
total = 8000000000
used = {number}000000

[[adapter.segment]]
total = 4000000000

[[adapter.context]]
pid = 4100001
handle = 1

[[adapter.allocation]]
size = 500000000
segmentid = 1
"""
SECOND_ADAPTER = """
[[adapter]]
chip = "qv-m20"
bus_id = "0000:02:00.0"
card = 1
segment = []
"""

VALUES = {
    'sum(up{job="nimba-farm"})': 20,
    "count(nimba_exporter_info)": 20,
    # Every fifth machine has two.
    "sum(nimba_adapters)": 24,
    "sum(nimba_adapter_up)": 24,
    'count(nimba_adapter_info{gpu="0000:02:00.0"})': 4,
    # 1 + 2 + ... + 20 megabytes, and 500 on each.
    'sum(nimba_memory_segment_used_bytes{segment="0"})': 210_000_000,
    'sum(nimba_memory_segment_used_bytes{segment="1"})': 10_000_000_000,
    'sum(nimba_memory_segment_total_bytes{segment="0"})': 160_000_000_000,
    'nimba_memory_segment_used_bytes{instance="127.0.1.7", segment="0"}': 7_000_000,
    'sum(nimba_allocations{gpu="0000:01:00.0"})': 20,
    "min(nimba_collector_success)": 1,
    # The farm's job drops what is of a process, and of shapes all but the bytes.
    "count(nimba_process_memory_bytes)": None,
    "count(nimba_page_table_entries)": None,
    "count(nimba_page_table_address_spaces)": 20,
    "count(nimba_leak_group_allocations)": None,
    "count(nimba_leak_group_oldest_scrapes)": None,
    "sum(nimba_leak_group_bytes)": 10_000_000_000,
}


class Twenty(unittest.TestCase):
    def test_all_are_up_and_their_sums_are_right(self):
        place = self.enterContext(Workplace())
        exporters = []
        for number in range(1, COUNT + 1):
            machine = place.directory / f"{number}.toml"
            text = MACHINE.format(number=number)
            machine.write_text(text + SECOND_ADAPTER if number % 5 == 0 else text)
            exporters.append(Exporter(place, machine, f"127.0.1.{number}"))
        prometheus = Prometheus(place, {"nimba-farm": exporters})
        until(
            lambda: prometheus.value("count(nimba_scrape_duration_seconds)") == COUNT,
            lambda: prometheus.series("up"),
        )
        for query, expected in VALUES.items():
            with self.subTest(query):
                prometheus.expect(query, expected)


if __name__ == "__main__":
    unittest.main()
