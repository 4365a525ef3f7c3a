# SPDX-License-Identifier: MIT
"""nimba-smi: every command that reads, once, with nothing amiss."""

from __future__ import annotations

import unittest

from machine import BUS_IDS, FIRST, NIMBA, control, load_driver, smi, smi_json

FIELDS = {
    "engine_clock": 640,
    "memory_data_rate": 1870 if NIMBA else 3200,
    "core_clock": 720,
    "display_ports": 2,
    "display_types": ["HDMI", "DP"],
    "memory_channels": 2,
    "pcie_lanes": 4,
    "memory_ddr_generation": None if NIMBA else 4,
    "memory_width_bits": None,
    "driver_version": "2.1b.3c",
    "firmware_version": "4.d.5.e6",
    "firmware_name": "Reference adapter",
    "max_resolution_hdmi_dp": {"width": 2560, "height": 1440, "refresh_hz": 75},
    "memory_usage": 21,
    "realtime_temperature": 61,
    "release_date_number": 20250102,
    "enable_usage": 1,
    "power_case": 6,
}


class ToolCase(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        load_driver()

    def one(self, *arguments: str):
        """What a command says of the first adapter, without errors."""
        document = smi_json(*arguments, "-i", FIRST)
        self.assertEqual(document["errors"], [])
        (adapter,) = document["adapters"]
        self.assertEqual(adapter["bus_id"], FIRST)
        return adapter


class EitherFamily(ToolCase):
    def test_info(self):
        fields = self.one("info")["fields"]
        values = {name: fields[name]["value"] for name in FIELDS}
        self.assertEqual(values, FIELDS)

    def test_usage(self):
        adapter = self.one("usage")
        engines = ("engine_3d_percent", "engine_vcp_percent", "engine_vpp_percent")
        self.assertEqual([adapter[name] for name in engines], [61, 36, 23])
        self.assertEqual(adapter["bandwidth_words"][0], 9100)
        busy = [None, None, 61, None, 36, 37, None, 23, None, None]
        self.assertEqual(adapter["busy_words"], busy)

    def test_mem(self):
        adapter = self.one("mem")
        self.assertEqual(adapter["source"], "node" if NIMBA else "heaps")
        mebibyte = 1 << 20
        expected = (
            {"used_bytes": 305000000, "total_bytes": 6441000000}
            if NIMBA
            else {"used_bytes": 359 * mebibyte, "total_bytes": 3584 * mebibyte}
        )
        self.assertEqual(adapter["sum"], expected)

    def test_ps_and_alloc(self):
        document = smi_json("ps", "-i", FIRST)
        self.assertEqual(document["errors"], [])
        self.assertEqual(document["total"]["allocations"], 3)
        self.assertEqual(document["total"]["bytes"], 8294400 + 262144 + 16384)
        document = smi_json("alloc", "-i", FIRST)
        self.assertEqual(document["all"], {"allocations": 3, "bytes": 8572928})

    def test_pagetable(self):
        document = smi_json("pagetable")
        self.assertEqual(document["errors"], [])
        self.assertEqual(sorted(process["pid"] for process in document["processes"]), [1, 2])


class AnyFamily(ToolCase):
    def test_list(self):
        document = smi_json("list")
        self.assertEqual(sorted(a["bus_id"] for a in document["adapters"]), list(BUS_IDS))
        self.assertEqual({a["driver"] for a in document["adapters"]}, {"va"})
        self.assertEqual((document["foreign_gpu"], document["errors"]), (None, []))

    def test_overview(self):
        document = smi_json()
        self.assertEqual((len(document["adapters"]), document["errors"]), (3, []))
        self.assertEqual({a["answered"] for a in document["adapters"]}, {True})
        told = {a["bus_id"]: a["sensors"]["temperature_celsius"] for a in document["adapters"]}
        self.assertEqual(told, dict(zip(BUS_IDS, (47, 48, 49))))

    def test_clocks(self):
        adapter = self.one("clocks")
        clocks = ("engine_clock", "video_clock", "memory_clock", "core_clock", "gfx_voltage")
        self.assertEqual([adapter[name] for name in clocks], [640, 410, 935, 720, 810])
        self.assertEqual(adapter["dvfs_level"], "balance")

    def test_sensors(self):
        adapter = self.one("sensors")
        sensors = ("temperature_celsius", "fan0", "fan1", "fan_speed")
        self.assertEqual([adapter[name] for name in sensors], [47, 1650, 1720, 1650])

    def test_leaks(self):
        control(0, "allocate handle=0xd0")
        document = smi_json("leaks", "-i", FIRST, "--interval", "0.01", "--count", "2")
        control(0, "free handle=0xd0")
        self.assertEqual(document["errors"], [])

    def test_settings_and_flag(self):
        fields = self.one("dvfs", "get")["fields"]
        self.assertEqual((fields["gfx_clock"], fields["vpp_low_threshold"]), (640, 0x23))
        self.assertEqual(smi_json("flag", "get", "-i", FIRST)["errors"], [])

    def test_doctor_finds_nothing_that_matters(self):
        document = smi_json("doctor")
        amiss = [check for check in document["checks"] if check["result"] != "ok"]
        self.assertEqual((amiss, document["summary"]), ([], "all that matters works"))

    def test_version(self):
        self.assertEqual(smi("version").returncode, 0)
