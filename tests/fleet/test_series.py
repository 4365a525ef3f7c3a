# SPDX-License-Identifier: MIT
"""The figures of docs/fleet.md are those that tests/fleet/measure makes of the same machines."""

import re
import subprocess
import sys
import unittest
from pathlib import Path

from support import BOUND, MACHINES, SOURCE, live_drivers_work

PAGE = (SOURCE / "docs" / "fleet.md").read_text()
MACHINE = r"^\|[^|`]*`(?:[^|`]*/)?([\w.-]+)`[^|]*\|((?: *[\d,]+(?: kB)? *\|){5})$"


def table(text: str) -> dict[str, list[int]]:
    """By machine: the series, of processes, of shapes, without processes; kB of a scrape."""
    rows = {}
    for machine, cells in re.findall(MACHINE, text, re.MULTILINE):
        *counts, size = (cell.strip() for cell in cells.rstrip("|").split("|"))
        kilobytes = int(size[:-3]) if size.endswith(" kB") else round(int(size) / 1000)
        rows[machine] = [*map(int, counts), kilobytes]
    return rows


class Series(unittest.TestCase):
    def test_the_document_has_what_the_simulated_machines_make(self):
        if not live_drivers_work():
            self.skipTest("needs live drivers: no FUSE file system can be mounted here")
        measured = subprocess.run(
            [sys.executable, "-W", "error", Path(__file__).with_name("measure"), "series"]
            + ["default", "showcase", MACHINES / "large.toml"],
            check=True,
            stdout=subprocess.PIPE,
            text=True,
            timeout=4 * BOUND,
        )
        told = table(PAGE)
        self.assertEqual(len(told), 3)
        for machine, row in table(measured.stdout).items():
            with self.subTest(machine):
                self.assertEqual(row[:-1], told[machine][:-1])
                # Durations have more digits, or fewer.
                self.assertAlmostEqual(row[-1], told[machine][-1], delta=1)

    def test_the_cost_of_a_thousand_is_computed_from_them(self):
        counts = {str(row[0]) for row in table(PAGE).values()}
        self.assertEqual(set(re.findall(r"\bS = (\d+)", PAGE)), counts)


if __name__ == "__main__":
    unittest.main()
