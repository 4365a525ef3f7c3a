# SPDX-License-Identifier: MIT
"""A Prometheus that scrapes exporters on six simulated machines.

test_prometheus.py [--seconds N]: it scrapes for so long, else a minute, before anything is asked.
"""

import argparse
import json
import re
import subprocess
import sys
import unittest
from functools import partial

from queries import complaints, samples
from support import BOUND, MACHINES, PACKAGING, Exporter, Prometheus, Workplace
from support import live_drivers_work, panels, slowly_leaking, until

# Where the machines are: instances, as Prometheus names them.
STAYING = STEADY, HEAPS, LEAKING, WORKING, HOSTILE = [f"127.0.0.{host}" for host in range(2, 7)]
LEAVING = "127.0.0.7"

# Of all machines.
ADAPTERS = 7

_options = argparse.ArgumentParser()
_options.add_argument("--seconds", type=int, default=60)

# What tests/fleet/machines/steady.toml says; "@" is the machine.
STEADY_VALUES = {
    "nimba_adapters{@}": 1,
    "nimba_adapter_up{@}": 1,
    'nimba_adapter_info{@, name="Gpu0:Nimba-K6", card="0", vendor_id="0x4e4d", '
    'driver_version="1.2.a", firmware_version="8.f.0.1c", firmware_name="K6 desktop board", '
    'pcie_generation="4", pcie_lanes="8"}': 1,
    'nimba_clock_driver_units{@, clock="engine"}': 550,
    'nimba_clock_driver_units{@, clock="video"}': 350,
    'nimba_clock_driver_units{@, clock="memory"}': 1000,
    'nimba_clock_driver_units{@, clock="core"}': 600,
    "nimba_voltage_driver_units{@}": 800,
    "nimba_temperature_celsius{@}": 50,
    'nimba_fan_driver_units{@, fan="fan0"}': 1600,
    'nimba_dvfs_level{@, level="balance"}': 1,
    'nimba_dvfs_level{@, level="performance"}': 0,
    "nimba_memory_total_bytes{@}": 12_000_000_000,
    "nimba_memory_used_bytes{@}": 1_976_000_000,
    'nimba_memory_segment_used_bytes{@, segment="0"}': 1_264_000_000,
    'nimba_memory_segment_used_bytes{@, segment="1"}': 712_000_000,
    'nimba_memory_segment_total_bytes{@, segment="1"}': 4_000_000_000,
    'nimba_allocations{@, segment="0"}': 2,
    'nimba_allocation_bytes{@, segment="0"}': 264_000_000,
    "nimba_device_contexts{@}": 2,
    'nimba_process_memory_bytes{@, process="/usr/bin/compositor", device="0x11"}': 8_000_000,
    'nimba_process_memory_bytes{@, pid="4100002", process="/usr/games/maze"}': 768_000_000,
    'nimba_process_allocations{@, process="/usr/games/maze"}': 2,
    'nimba_page_table_entries{@, process="/usr/games/maze", level="2", kind="table"}': 3,
    'nimba_leak_group_allocations{@, size="512000000"}': 1,
    'nimba_leak_group_bytes{@, size="512000000"}': 512_000_000,
    "nimba_page_table_address_spaces{@}": 2,
    "nimba_page_table_allocations{@}": 3,
    'nimba_engine_busy_ratio{@, engine="3d"}': 0.4,
    'nimba_bandwidth_word{@, word="0"}': 4000,
    'nimba_bandwidth_word{@, word="10"}': 100,
    "min(nimba_collector_success{@})": 1,
    'nimba_workers_replaced_total{@, gpu="0000:01:00.0"}': 0,
}
OTHER_VALUES = {
    f'nimba_memory_segment_total_bytes{{instance="{HEAPS}", heap="heap_local"}}': 1_073_741_824,
    f'nimba_memory_segment_used_bytes{{instance="{HEAPS}", heap="heap_local"}}': 134_217_728,
    f'nimba_memory_segment_total_bytes{{instance="{HEAPS}", heap="heap_invalid"}}': 0,
    f'sum(nimba_adapters{{instance!="{LEAVING}"}})': 6,
    f'count(up{{job="nimba", instance!="{LEAVING}"}} == 1)': 5,
}

# Of tests/fleet/machines/hostile.toml. The library tells a name up to its first new line.
HOSTILE_NAMES = {
    ("4100001", '/tmp/a"b\\c'),
    ("4100002", '/tmp/"} 1\\x0a'),
    ("4100003", '/tmp/ночь,gpu="0"} 5 #'),
}


# How the queries of panels end that count what is wrong.
ELSE_ZERO = " or vector(0)"


class Scraped(unittest.TestCase):
    seconds = 60
    prometheus: Prometheus
    exporters: dict[str, Exporter]

    @classmethod
    def setUpClass(cls):
        if not live_drivers_work():
            raise unittest.SkipTest("needs live drivers: no FUSE file system can be mounted here")
        place = cls.enterClassContext(Workplace())
        machines = {
            STEADY: MACHINES / "steady.toml",
            HEAPS: "qv-m20-heaps",
            LEAKING: slowly_leaking(place),
            WORKING: "showcase",
            HOSTILE: MACHINES / "hostile.toml",
            LEAVING: "steady-adapter",
        }
        cls.exporters = {at: Exporter(place, machine, at) for at, machine in machines.items()}
        cls.prometheus = Prometheus(place, {"nimba": list(cls.exporters.values())})
        cls.seconds = max(cls.seconds, 2 * cls.prometheus.interval)
        fewest = f"min(count_over_time(nimba_adapters[{cls.seconds + BOUND}s]))"
        until(
            lambda: (cls.prometheus.value(fewest) or 0) >= cls.seconds // cls.prometheus.interval
            and cls.prometheus.value("count(nimba_frame_rate_average_hertz)") == ADAPTERS,
            lambda: cls.prometheus.series('{__name__=~"up|scrape_duration_seconds"}'),
            cls.seconds + BOUND,
        )

    def test_what_exporters_tell_is_free_of_complaints(self):
        for at in STAYING:
            ended = subprocess.run(
                ["promtool", "check", "metrics"],
                input=self.exporters[at].metrics(),
                capture_output=True,
                text=True,
                timeout=BOUND,
            )
            with self.subTest(at):
                self.assertEqual((ended.returncode, ended.stdout + ended.stderr), (0, ""))

    def test_queries_give_what_the_machine_file_says(self):
        for query, expected in STEADY_VALUES.items():
            with self.subTest(query):
                at_steady = query.replace("@", f'instance="{STEADY}"')
                self.prometheus.expect(at_steady, expected)
        for query, expected in OTHER_VALUES.items():
            with self.subTest(query):
                self.prometheus.expect(query, expected)

    def test_names_of_processes_are_what_they_are_however_they_look(self):
        for metric in ("nimba_process_memory_bytes", "nimba_page_table_entries"):
            with self.subTest(metric):
                query = f'{metric}{{instance="{HOSTILE}"}}'
                found = until(partial(self.prometheus.series, query), query)
                labels = [series["metric"] for series in found]
                self.assertEqual({(each["pid"], each["process"]) for each in labels}, HOSTILE_NAMES)

    def test_what_leaks_grows(self):
        leak = f'nimba_leak_group_allocations{{instance="{LEAKING}", width="128", height="64"}}'
        first = until(lambda: self.prometheus.value(leak), "a leak")
        until(lambda: (self.prometheus.value(leak) or 0) > first, lambda: f"more than {first}")

    def test_every_panel_of_the_dashboard_is_filled(self):
        for panel in panels(dashboard()):
            for target in panel["targets"]:
                query = self.without_variables(target["expr"])
                if query.endswith(ELSE_ZERO):
                    continue  # test_what_is_gone_is_told_until_it_is_back
                with self.subTest(panel["title"], query=query):
                    if target["range"]:
                        found = self.prometheus.series_since(query, self.seconds + 10, 2)
                        self.assertTrue(any(series["values"] for series in found))
                    else:
                        until(partial(self.prometheus.series, query), "a series")

    def test_queries_of_dashboard_and_rules_are_of_what_there_is(self):
        known = self.known()
        for panel in panels(dashboard()):
            for target in panel["targets"]:
                with self.subTest(panel["title"]):
                    legend = re.findall(r"\{\{(\w+)\}\}", target["legendFormat"])
                    query = self.without_variables(target["expr"])
                    self.assertEqual(complaints(query, known, legend), [])
        for variable in dashboard()["templating"]["list"]:
            if variable["type"] == "query":
                asked = re.fullmatch(r"label_values\((.+), (\w+)\)", variable["definition"])
                assert asked
                query = self.without_variables(asked[1])
                self.assertEqual(complaints(query, known, [asked[2]]), [])
        # The node exporter's, of a text file.
        known["node_textfile_mtime_seconds"] = {"job", "instance", "file"}
        for rule in self.prometheus.rules():
            with self.subTest(rule["name"]):
                told = " ".join(rule["annotations"].values())
                labels = re.findall(r"\$labels\.(\w+)", told)
                self.assertEqual(complaints(rule["query"], known, labels), [])

    def test_rules_are_evaluated_and_no_alert_is_false(self):
        until(
            lambda: all(rule["health"] == "ok" for rule in self.prometheus.rules()),
            self.prometheus.rules,
        )
        until(lambda: not self.alerts(), self.alerts)

    def test_what_is_gone_is_told_until_it_is_back(self):
        exporter = self.exporters[LEAVING]
        wrong = self.counts_of_what_is_wrong(LEAVING)
        self.assertEqual(set(wrong), {"Drivers gone", "Collectors failing", "Exporters down"})
        gone = f'nimba_adapter_up{{instance="{LEAVING}"}}'
        exporter.fault("gone")
        alert = {
            "alertname": "NimbaDriverGone",
            "severity": "critical",
            "job": "nimba",
            "instance": LEAVING,
            "gpu": "0000:01:00.0",
            "slot": "0",
        }
        until(lambda: self.prometheus.firing("NimbaDriverGone") == [alert], "gone")
        self.prometheus.expect(gone, 0)
        self.prometheus.expect(wrong["Drivers gone"], 1)
        until(lambda: self.prometheus.value(wrong["Collectors failing"]), "failing collectors")
        exporter.fault("--clear")
        until(lambda: not self.prometheus.firing("NimbaDriverGone"), "back")
        self.prometheus.expect(gone, 1)
        self.prometheus.expect(wrong["Drivers gone"], None)
        self.prometheus.expect(wrong["Collectors failing"], None)
        self.prometheus.expect(wrong["Exporters down"], None)
        self.assertEqual(exporter.end(), 0)
        down = {
            "alertname": "NimbaExporterDown",
            "severity": "critical",
            "job": "nimba",
            "instance": LEAVING,
        }
        until(lambda: down in self.prometheus.firing("NimbaExporterDown"), "down")
        self.prometheus.expect(wrong["Exporters down"], 1)

    def counts_of_what_is_wrong(self, at: str) -> dict[str, str]:
        """Queries of the dashboard, by title, that count it at a machine, and have no zero else."""
        return {
            panel["title"]: self.without_variables(query.removesuffix(ELSE_ZERO), at)
            for panel in panels(dashboard())
            for query in (target["expr"] for target in panel["targets"])
            if query.endswith(ELSE_ZERO)
        }

    def alerts(self) -> list[dict[str, str]]:
        """The labels of the alerts about machines of which nothing goes away."""
        return [
            alert["labels"]
            for rule in self.prometheus.rules()
            for alert in rule["alerts"]
            if alert["labels"]["instance"] != LEAVING
        ]

    def known(self) -> dict[str, set[str]]:
        """The metrics of these machines, and those that Prometheus keeps of each target."""
        known: dict[str, set[str]] = {}
        for at in STAYING:
            for name, labels in samples(self.exporters[at].metrics()).items():
                known.setdefault(name, set()).update(labels)
        for series in self.prometheus.series('{__name__=~"up|scrape_.+", job="nimba"}'):
            known[series["metric"].pop("__name__")] = set(series["metric"])
        return known

    def without_variables(self, query: str, instance: str = ".*") -> str:
        """The query with what Grafana puts in place of variables, for all adapters of machines."""
        rate_interval = f"{4 * self.prometheus.interval}s"
        texts = {"instance": instance, "gpu": ".*", "__rate_interval": rate_interval}
        for variable, text in texts.items():
            query = query.replace(f"${variable}", text)
        assert "$" not in query, query
        return query


def dashboard():
    return json.loads((PACKAGING / "nimba-dashboard.json").read_text())


if __name__ == "__main__":
    chosen, others = _options.parse_known_args()
    Scraped.seconds = chosen.seconds
    unittest.main(argv=[sys.argv[0], *others])
