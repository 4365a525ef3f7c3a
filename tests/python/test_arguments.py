# SPDX-License-Identifier: MIT
"""What users hand to the package that is not as it should be, or in another way."""

import inspect
import math
import os
import resource
import shutil
import unittest
from pathlib import Path

import nimba_mgmt
from nimba_mgmt import Adapter, DvfsState, LibraryNotFound, NimbaError, Summary, SummaryExt2

from support import STAND_IN, StandIn, descriptors


class Index:
    """A whole number of another library."""

    def __index__(self) -> int:
        return 7


class Arguments(StandIn):
    def test_a_slot_can_be_a_text(self):
        with Adapter("0", library=STAND_IN) as gpu:
            self.assertEqual(gpu.identity.slot, 0)

    def test_a_deadline_that_nothing_can_wait_for_is_refused_and_the_adapter_stays_open(self):
        gpu = self.adapter(deadline=5)
        for seconds in (0, -1, math.nan, math.inf, 1_000_001):
            with self.subTest(seconds=seconds):
                with self.assertRaisesRegex(ValueError, "above 0 and up to 1000000 seconds"):
                    gpu.deadline = seconds
                with self.assertRaises(ValueError):
                    nimba_mgmt.adapters(library=STAND_IN, deadline=seconds)
                with self.assertRaises(ValueError):
                    Adapter(0, library=STAND_IN, deadline=seconds)
        for other in (None, "5"):
            with self.subTest(other=other), self.assertRaises(TypeError):
                gpu.deadline = other
        self.assertEqual(gpu.deadline, 5)
        gpu.deadline = 1_000_000
        self.assertEqual(gpu.temperature(), 61)

    def test_the_library_can_be_a_path_and_a_path_is_a_file(self):
        name = Path("my library.so")
        shutil.copy(STAND_IN, self.directory / name)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(self.directory)
        with Adapter(0, library=name) as gpu:
            self.assertEqual(gpu.temperature(), 61)
        with self.assertRaises(LibraryNotFound) as raised:
            nimba_mgmt.adapters(library=str(name))
        self.assertEqual(
            str(raised.exception),
            "cannot load my library.so: cannot open shared object file: No such file or directory",
        )
        self.addCleanup(nimba_mgmt.use_library, None)
        nimba_mgmt.use_library(name)
        version = nimba_mgmt.library_version()
        self.assertEqual(version.file, os.path.realpath(self.directory / name))

    def test_what_is_no_whole_number_is_no_setting_and_the_adapter_stays_open(self):
        gpu = self.adapter()
        for value in (1.0, 1.5, "performance", None):
            with self.subTest(value=value), self.assertRaises(TypeError) as raised:
                gpu.set_dvfs(level=value)
            self.assertEqual(str(raised.exception), f"level is a whole number, not {value!r}")
        self.assertEqual(gpu.temperature(), 61)

    def test_a_whole_number_of_another_library_is_taken(self):
        gpu = self.adapter()
        with self.assertRaises(nimba_mgmt.FunctionMissing) as raised:
            gpu.set_dvfs(level=Index())
        self.assertEqual(raised.exception.call, "get_data_from_dvfs_register")

    def test_a_process_that_has_no_descriptors_left_says_so_and_loses_none(self):
        gpu = self.adapter()
        before = descriptors()
        limits = resource.getrlimit(resource.RLIMIT_NOFILE)
        self.addCleanup(resource.setrlimit, resource.RLIMIT_NOFILE, limits)
        lowest = os.dup(0)
        os.close(lowest)
        for free in range(4):
            resource.setrlimit(resource.RLIMIT_NOFILE, (lowest + free, limits[1]))
            with self.subTest(free=free), self.assertRaisesRegex(NimbaError, "Too many open files"):
                Adapter(0, library=STAND_IN)
        resource.setrlimit(resource.RLIMIT_NOFILE, limits)
        self.assertEqual(descriptors(), before)
        self.assertEqual(gpu.temperature(), 61)


class Help(unittest.TestCase):
    def test_a_record_shows_plain_types(self):
        parameters = inspect.signature(SummaryExt2).parameters
        self.assertEqual(str(parameters["usage_3d"]), "usage_3d: Optional[int]")
        self.assertEqual(str(parameters["firmware_name"]), "firmware_name: str")
        self.assertNotIn("At(", str(inspect.signature(DvfsState)))

    def test_the_documentation_of_a_record_is_not_indented_but_for_its_fields(self):
        lines = inspect.getdoc(SummaryExt2).splitlines()
        self.assertEqual(
            lines[2:5],
            [
                "What cannot be read is 0, an empty text or, where None is told of, None.",
                "",
                "Fields:",
            ],
        )
        self.assertIn("    display_ports: display outputs.", inspect.getdoc(Summary).splitlines())


if __name__ == "__main__":
    unittest.main()
