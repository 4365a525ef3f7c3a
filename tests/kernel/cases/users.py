# SPDX-License-Identifier: MIT
"""What an ordinary user gets, to whom debugfs is closed and attributes are read-only."""

from __future__ import annotations

import json
import subprocess
import sys
import unittest
from pathlib import Path

from machine import BOUND, FIRST, as_nobody, load_driver, smi, smi_json, told

ASK = """
import json
import nimba_mgmt
from nimba_mgmt import Adapter, CallFailed, InfoNode

def refused(query):
    try:
        query()
    except CallFailed:
        return True
    return False

with Adapter("0000:00:04.0", deadline=120) as gpu:
    state = gpu.set_dvfs(gfx_clock=700)
    print(json.dumps({
        "temperature": gpu.temperature(),
        "clock": state.gfx_clock,
        "flag": gpu.misc_ctl_flag(set=1),
        "usage": gpu.info(InfoNode.ENABLE_USAGE),
        "driver": str(gpu.summary_ext2().driver_version),
        "va": gpu.identity.va_driver,
        "refused": [refused(query) for query in
                    (gpu.allocations, gpu.device_summary, gpu.processes, gpu.page_tables)],
    }))
"""


class OrdinaryUser(unittest.TestCase):
    def setUp(self):
        load_driver()

    def open_render_nodes(self):
        for node in Path("/dev/dri").glob("renderD*"):
            node.chmod(0o666)

    def test_without_access_to_drm_nodes_there_is_no_adapter(self):
        ended = smi("list", **as_nobody())
        self.assertEqual(ended.returncode, 6)
        self.assertIn("/dev/dri/", ended.stderr)

    def test_what_the_library_tells_and_what_it_refuses(self):
        self.open_render_nodes()
        command = [sys.executable, "-c", ASK]
        ended = subprocess.run(
            command, capture_output=True, text=True, timeout=BOUND, **as_nobody()
        )
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertEqual(
            json.loads(ended.stdout),
            {
                "temperature": 47,
                "clock": 640,
                "flag": 16,
                "usage": 0,
                "driver": "2.1b.3c",
                "va": False,  # the node is in debugfs
                "refused": [True, True, True, True],
            },
        )
        self.assertEqual((told(0)["accepted"], told(0)["rejected"]), ("0", "0"))

    def test_what_nimba_smi_shows_and_what_it_refuses(self):
        self.open_render_nodes()
        # The status says that the kind of the driver could not be read.
        self.assertEqual(len(smi_json("list", status=6, **as_nobody())["adapters"]), 3)
        (sensors,) = smi_json("sensors", "-i", FIRST, **as_nobody())["adapters"]
        self.assertEqual((sensors["temperature_celsius"], sensors["fan0"]), (47, 1650))
        ended = smi("ps", "-i", FIRST, **as_nobody())
        self.assertEqual(ended.returncode, 6)
        ended = smi("dvfs", "set", "gfx_clock=700", "-i", FIRST, **as_nobody())
        self.assertEqual(ended.returncode, 6)
        self.assertEqual((told(0)["accepted"], told(0)["rejected"]), ("0", "0"))

    def test_doctor_says_what_this_user_lacks(self):
        self.open_render_nodes()
        document = json.loads(smi("doctor", "--json", **as_nobody()).stdout)
        results = {check["id"]: check["result"] for check in document["checks"]}
        self.assertEqual(results["drm_access"], "ok")
        self.assertNotEqual(results["debugfs"], "ok")
        self.assertNotEqual(results["permissions"], "ok")
