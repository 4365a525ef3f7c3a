# SPDX-License-Identifier: MIT
"""The examples of the README, as they stand there, and the overview of the adapters."""

import json
import os
import re
import subprocess
import unittest
from typing import BinaryIO

from support import LIBRARY, SOURCE, STAND_IN, on, python, run

README = (SOURCE / "bindings/python/README.md").read_text()
BOUND = 60
EXAMPLES = re.findall(r"```python\n(.*?)```", README, re.S)


class Examples(unittest.TestCase):
    def shown_by(self, example: int, live: bool = False) -> list[str]:
        ended = run(on("readme.toml", *python("-c", EXAMPLES[example]), live=live))
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        return ended.stdout.splitlines()

    def test_there_are_three(self):
        self.assertEqual(len(EXAMPLES), 3)

    def test_adapters_are_listed(self):
        self.assertEqual(
            self.shown_by(0),
            [
                "0000:01:00.0 Gpu0:Nimba-K1 driver 1.2.a",
                "  temperature 50 clocks Clocks(engine=550, video=350, memory=1000)",
                "0000:02:00.0 Gpu2:Nvidia-GPU is another vendor's",
            ],
        )

    def test_holders_of_memory_are_told(self):
        self.assertEqual(self.shown_by(1), ["/usr/bin/viewer 4096 KiB"])

    def test_the_driver_is_set_for_speed(self):
        self.assertEqual(self.shown_by(2, live=True), ["level PERFORMANCE engine 750"])


class Trial(unittest.TestCase):
    def test_the_commands_show_a_simulated_machine(self):
        (commands,) = re.findall(r"```sh\n(.*?)```", README, re.S)
        for name, place in (("$PWD/build/release/lib", os.path.dirname(LIBRARY)),
                            ("build/release/bin", os.environ["NIMBA_BIN"])):  # fmt: skip
            self.assertIn(name, commands)
            commands = commands.replace(name, place)
        ended = run(["bash", "-ec", commands], cwd=SOURCE)
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertEqual(
            re.findall("^0.*", ended.stdout, re.M),
            [
                "0000:01:00.0  Gpu0:NimbaK2 in slot 0",
                "0000:02:00.0  Gpu1:QV M-40 in slot 1",
                "0001:03:00.0  Gpu2:Nimba-GT-K3 in slot 2",
            ],
        )


class Overview(unittest.TestCase):
    def overview(self, machine: str, *arguments: str) -> tuple[int, str, str]:
        ended = run(on(machine, *python("-m", "nimba_mgmt", *arguments)))
        return ended.returncode, ended.stdout, ended.stderr

    def test_the_adapters_are_shown(self):
        self.assertEqual(
            self.overview("readme.toml"),
            (
                0,
                "0000:01:00.0  Gpu0:Nimba-K1 in slot 0\n"
                "  versions     driver 1.2.a, firmware 8.f.0.1c\n"
                "  temperature  50\n"
                "  memory used  6\n"
                "  clocks       engine 550, video 350, memory 1000\n"
                "0000:02:00.0  Gpu2:Nvidia-GPU (of another vendor)\n",
                "",
            ),
        )

    def test_the_same_is_there_as_json(self):
        status, text, errors = self.overview("readme.toml", "--json")
        self.assertEqual((status, errors), (0, ""))
        document = json.loads(text)
        self.assertEqual(document["library"]["interface"], [0, 22])
        first, second = document["adapters"]
        self.assertEqual((first["slot"], first["bus_id"]), (0, "0000:01:00.0"))
        self.assertEqual(
            first["reading"],
            {
                "driver_version": "1.2.a",
                "firmware_version": "8.f.0.1c",
                "temperature": 50,
                "memory_usage": 6,
                "clocks": {"engine": 550, "video": 350, "memory": 1000},
            },
        )
        self.assertEqual((second["slot"], second["reading"]), (None, None))

    def test_an_adapter_that_cannot_be_initialised_is_shown_all_the_same(self):
        status, text, errors = self.overview("no-library")
        self.assertEqual((status, errors), (0, ""))
        self.assertIn("0000:01:00.0  Gpu0:QV M-30 in slot 0\n  versions     driver 1.2.a", text)

    def test_no_adapter_has_a_status_of_its_own(self):
        self.assertEqual(
            self.overview("no-gpu"), (3, "", "nimba_mgmt: no Nimba or QV adapter found\n")
        )

    def test_no_library_is_told(self):
        status, text, errors = self.overview("no-gpu", "--library", "/nowhere.so")
        self.assertEqual((status, text), (1, ""))
        self.assertTrue(errors.startswith("nimba_mgmt: cannot load /nowhere.so: "), errors)

    def printed_to(self, output: BinaryIO) -> tuple[int, str]:
        command = on("readme.toml", *python("-m", "nimba_mgmt"))
        ended = subprocess.run(
            command, stdout=output, stderr=subprocess.PIPE, text=True, timeout=BOUND
        )
        return ended.returncode, ended.stderr

    def test_an_output_that_takes_nothing_is_told(self):
        with open("/dev/full", "wb") as full:
            self.assertEqual(
                self.printed_to(full),
                (1, "nimba_mgmt: standard output: No space left on device\n"),
            )

    def test_an_output_that_nobody_reads_needs_no_message(self):
        reader, writer = os.pipe()
        os.close(reader)
        with open(writer, "wb") as unread:
            self.assertEqual(self.printed_to(unread), (1, ""))

    def test_what_cannot_be_read_is_told_and_the_rest_is_shown(self):
        status, text, errors = self.overview("no-gpu", "--library", STAND_IN)
        self.assertEqual(status, 1)
        self.assertEqual(text, "0000:03:00.0  Gpu0:Nimba-K1 in slot 0\n")
        self.assertEqual(
            errors, "nimba_mgmt: 0000:03:00.0: the library has no function get_dvfs_info\n"
        )


if __name__ == "__main__":
    unittest.main()
