# SPDX-License-Identifier: MIT
"""scripts/demo, with the programs that are built."""

import re
import subprocess
import tempfile
import unittest
from pathlib import Path

from support import BOUND, SOURCE, live_drivers_work

SCRAPE = r"""
\$ nimba-sim run --machine steady-desktop -- nimba-smi export --listen 127\.0\.0\.1:0 &
nimba-smi: serving (http://127\.0\.0\.1:[0-9]+/metrics)
\$ curl -s (\S+) \| grep \^nimba_temperature
nimba_temperature_celsius\{gpu="0000:01:00\.0",slot="0"\} 54
"""


class Demo(unittest.TestCase):
    def test_it_comes_to_its_end_and_shows_the_exporters_address_and_a_scrape(self):
        if not live_drivers_work():
            self.skipTest("needs live drivers: no FUSE file system can be mounted here")
        with tempfile.TemporaryDirectory() as directory:
            ended = subprocess.run(
                [SOURCE / "scripts" / "demo"],
                stdin=subprocess.DEVNULL,
                capture_output=True,
                text=True,
                cwd=directory,
                timeout=3 * BOUND,
            )
            self.assertEqual(ended.returncode, 0, ended.stderr + ended.stdout)
            scrape = re.search(SCRAPE, ended.stdout)
            assert scrape, ended.stdout
            self.assertEqual(scrape[1], scrape[2])
            self.assertIn("$ nimba-sim run --machine steady-desktop -- nimba-smi\n", ended.stdout)
            left = {path.name for path in Path(directory).iterdir()}
            self.assertEqual(left, {"leaking.html", "leaking.tar.zst"})


if __name__ == "__main__":
    unittest.main()
