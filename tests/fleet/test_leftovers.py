# SPDX-License-Identifier: MIT
"""A test that is killed, or fails, leaves no process and no directory behind."""

import os
import signal
import subprocess
import sys
import unittest
import uuid
from pathlib import Path

from support import BOUND, until

# Tells its directory and that of the simulated machine when all is running.
PROGRAM = """
import signal
from support import Exporter, Prometheus, Workplace
with Workplace() as place:
    exporter = Exporter(place, "steady-adapter", "127.0.2.1")
    prometheus = Prometheus(place, {"nimba": [exporter]})
    print(place.directory, exporter.bed, flush=True)
    input()
    raise AssertionError("that fails")
"""


class Leftovers(unittest.TestCase):
    def setUp(self):
        self.mark = f"NIMBA_FLEET_TEST={uuid.uuid4()}"
        name, _, value = self.mark.partition("=")
        self.process = self.enterContext(
            subprocess.Popen(
                [sys.executable, "-c", PROGRAM],
                stdin=subprocess.PIPE,
                stdout=subprocess.PIPE,
                stderr=subprocess.PIPE,
                text=True,
                cwd=Path(__file__).parent,
                env={**os.environ, name: value},
            )
        )
        self.addCleanup(self.process.kill)
        told = self.process.stdout.readline().split()
        self.directories = [Path(told[0]), Path(told[1]).parent]
        self.assertTrue(all(directory.is_dir() for directory in self.directories))
        # Itself, who watches, Prometheus, nimba-sim, nimba-smi and its workers.
        self.assertGreaterEqual(len(self.left()), 6)

    def test_one_that_fails(self):
        _, errors = self.process.communicate("\n", timeout=BOUND)
        self.assertEqual(self.process.returncode, 1)
        self.assertTrue(errors.endswith("AssertionError: that fails\n"), errors)
        self.assert_nothing_is_left()

    def test_one_that_is_killed(self):
        self.process.send_signal(signal.SIGKILL)
        self.assertEqual(self.process.wait(BOUND), -signal.SIGKILL)
        self.assert_nothing_is_left()

    def assert_nothing_is_left(self):
        until(lambda: not self.left(), self.left)
        self.assertEqual([each for each in self.directories if each.exists()], [])

    def left(self) -> list[str]:
        """The processes of the test."""
        found = []
        for process in Path("/proc").glob("[0-9]*"):
            try:
                if self.mark.encode() in (process / "environ").read_bytes().split(b"\0"):
                    found.append((process / "cmdline").read_text())
            except OSError:
                continue
        return found


if __name__ == "__main__":
    unittest.main()
