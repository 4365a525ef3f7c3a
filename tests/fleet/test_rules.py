# SPDX-License-Identifier: MIT
"""What is in packaging/prometheus, as promtool sees it."""

import json
import re
import subprocess
import unittest
from functools import cache
from itertools import combinations

from queries import complaints, parse, samples
from support import BOUND, PACKAGING, SOURCE, panels, program

RULES = (PACKAGING / "nimba.rules.yml").read_text()
ALERTS = re.findall(r"- alert: (\w+)", RULES)
DASHBOARD = json.loads((PACKAGING / "nimba-dashboard.json").read_text())


def promtool(*arguments: str) -> str:
    ended = subprocess.run(
        ["promtool", *arguments], capture_output=True, text=True, timeout=BOUND, cwd=PACKAGING
    )
    assert ended.returncode == 0, ended.stdout + ended.stderr
    return ended.stdout + ended.stderr


@cache
def options_of(command: str) -> set[str]:
    """The options of a command of nimba-smi, as it tells them."""
    told = subprocess.run(
        [program("nimba-smi"), command, "--help"],
        check=True,
        stdout=subprocess.PIPE,
        text=True,
        timeout=BOUND,
    ).stdout
    listed = re.findall(r"^  (-\S+)", told, re.MULTILINE)
    return {option for some in listed for option in some.split(",")}


def documented_options_of(command: str) -> set[str]:
    page = (SOURCE / "docs" / "man" / f"nimba-smi-{command}.1.scd").read_text()
    listed = re.findall(r"^\*-.*", page, re.MULTILINE)
    return {option for some in listed for option in re.findall(r"\*(-[\w-]+)\*", some)}


class Rules(unittest.TestCase):
    def test_promtool_accepts_rules_and_configuration(self):
        self.assertIn("15 rules found", promtool("check", "rules", "nimba.rules.yml"))
        self.assertIn("is valid", promtool("check", "config", "prometheus.yml"))

    def test_each_alert_fires_and_does_not_as_its_unit_test_says(self):
        self.assertIn("SUCCESS", promtool("test", "rules", "nimba.rules.test.yml"))

    def test_each_alert_has_cases_that_fire_and_cases_that_do_not(self):
        cases = re.findall(
            r"- alertname: (\w+)\n\s+eval_time: \w+.*\n(\s+exp_alerts:)?",
            (PACKAGING / "nimba.rules.test.yml").read_text(),
        )
        self.assertEqual(len(ALERTS), 15)
        self.assertEqual({name for name, fires in cases if fires}, set(ALERTS))
        self.assertEqual({name for name, fires in cases if not fires}, set(ALERTS))

    def test_each_alert_tells_commands_with_options_that_there_are(self):
        for rule in RULES.split("- alert: ")[1:]:
            said = " ".join(rule.partition("description: >-")[2].split())
            text = re.sub(r"\{\{.*?\}\}", "FIGURE", said)
            commands = re.findall(r'"nimba-smi ([^"]*)"', text)
            self.assertTrue(commands, rule)
            for command in commands:
                with self.subTest(rule.split()[0], command=command):
                    name, *arguments = command.split()
                    known = options_of(name) & documented_options_of(name)
                    told = {each for each in arguments if each.startswith("-")}
                    self.assertLessEqual(told, known)
            for service in re.findall(r'"systemctl \w+ ([^"]*)"', text):
                unit = SOURCE / "packaging" / "systemd" / f"{service}.service"
                self.assertTrue(unit.exists(), unit)

    def test_each_alert_is_in_the_table_of_the_document(self):
        page = (SOURCE / "docs" / "fleet.md").read_text()
        self.assertEqual(re.findall(r"^\| `(Nimba\w+)` \|", page, re.MULTILINE), ALERTS)


    def test_the_document_drops_what_the_farms_drop(self):
        dropping = re.compile(r"^    metric_relabel_configs:\n(?:      .*\n)+", re.MULTILINE)
        page = (SOURCE / "docs" / "fleet.md").read_text()
        farms = (PACKAGING / "prometheus.yml").read_text().partition("job_name: nimba-farm")[2]
        self.assertEqual(dropping.findall(page), dropping.findall(farms))


class Dashboard(unittest.TestCase):
    def test_panels_have_numbers_titles_and_the_chosen_source(self):
        numbers = [panel["id"] for panel in DASHBOARD["panels"]]
        self.assertEqual(len(numbers), len(set(numbers)))
        for panel in panels(DASHBOARD):
            with self.subTest(panel["title"]):
                self.assertEqual(panel["datasource"]["uid"], "${datasource}")
                self.assertTrue(panel["targets"])
                refs = [target["refId"] for target in panel["targets"]]
                self.assertEqual(len(refs), len(set(refs)))

    def test_panels_are_in_the_grid_and_do_not_overlap(self):
        places = [panel["gridPos"] for panel in DASHBOARD["panels"]]
        for place in places:
            self.assertLessEqual(place["x"] + place["w"], 24)
        for a, b in combinations(places, 2):
            apart = (
                a["x"] + a["w"] <= b["x"]
                or b["x"] + b["w"] <= a["x"]
                or a["y"] + a["h"] <= b["y"]
                or b["y"] + b["h"] <= a["y"]
            )
            self.assertTrue(apart, f"{a} {b}")

    def test_every_query_selects_the_chosen_machines(self):
        for panel in panels(DASHBOARD):
            for target in panel["targets"]:
                for metric, labels in parse(target["expr"]).metrics:
                    self.assertIn("instance", labels, f"{panel['title']}: {metric}")


class Queries(unittest.TestCase):
    KNOWN = samples('# HELP a x\na{gpu="0",text="}, not=\\"a label\\""} 1\nb 2\n')

    def test_samples_have_their_labels_and_the_targets(self):
        self.assertEqual(
            self.KNOWN, {"a": {"gpu", "text", "job", "instance"}, "b": {"job", "instance"}}
        )

    def test_queries_of_what_there_is_are_accepted(self):
        query = 'sum by (gpu) (rate(a{gpu=~".+", job!="x"}[5m] offset 30m)) / on (job) b > 2e3'
        self.assertEqual(complaints(query, self.KNOWN, ["gpu"]), [])

    def test_a_metric_that_there_is_not_is_told(self):
        self.assertEqual(complaints("a or c", self.KNOWN), ["no metric c"])

    def test_a_label_that_a_metric_has_not_is_told(self):
        self.assertEqual(complaints('b{gpu="0"}', self.KNOWN), ["no label gpu of b"])
        self.assertEqual(
            complaints("sum by (slot) (a)", self.KNOWN), ["no label slot in sum by (slot) (a)"]
        )
        self.assertEqual(complaints("b", self.KNOWN, ["gpu"]), ["no label gpu in b"])

    def test_a_query_without_any_metric_is_told(self):
        self.assertEqual(complaints("vector(0)", self.KNOWN), ["no metric in vector(0)"])


if __name__ == "__main__":
    unittest.main()
