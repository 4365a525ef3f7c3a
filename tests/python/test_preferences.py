# SPDX-License-Identifier: MIT
"""The file of preferences, with the built library and a home directory of each test's own."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path
from unittest import mock

import nimba_mgmt
from nimba_mgmt import AdapterInfo, CallFailed, Luid, Preference, preferences

from support import LIBRARY, STAND_IN, on, python, run

FILE = ".local/share/wmt_gfx_util.ini"

HEAD = "; wmt_gfx_util.ini\n\n"
MAZE = """\
[maze]
FullPath = /usr/games/maze
PreferGpuName = Gpu1:QV M-20
PreferGpuBusID = 0000:03:00.0
GpuPrefer = 1


"""


def section(number: int) -> str:
    """An entry as the library writes it."""
    return (
        f"[app{number}]\nFullPath = /opt/app{number}\nPreferGpuName = Gpu0:Nimba-K1\n"
        f"PreferGpuBusID = 0000:01:00.0\nGpuPrefer = {number}\n\n\n"
    )


class Preferences(unittest.TestCase):
    def setUp(self):
        self.home = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.enterContext(mock.patch.dict(os.environ, HOME=str(self.home)))
        self.addCleanup(nimba_mgmt.use_library, None)
        nimba_mgmt.use_library(LIBRARY)
        self.file = self.home / FILE

    def write(self, text: str) -> None:
        self.file.parent.mkdir(parents=True)
        self.file.write_text(text)

    def test_without_a_file_there_are_none(self):
        self.assertEqual(preferences.list(), ())
        self.assertIsNone(preferences.get("maze"))
        self.assertFalse(preferences.remove("maze"))
        self.assertFalse(self.file.exists())

    def test_a_preference_is_set_and_told(self):
        gpu = AdapterInfo(
            1, "Gpu1:QV M-20", "0000:03:00.0", 0x5156, 0x2020, 1, False, Luid(0, 0x30000)
        )
        told = preferences.set("/usr/games/maze", gpu)
        expected = Preference("maze", "/usr/games/maze", 1, "Gpu1:QV M-20", 0, 3, 0, 0)
        self.assertEqual(told, expected)
        self.assertEqual(told.bus_id, "0000:03:00.0")
        self.assertEqual(self.file.read_text(), HEAD + MAZE)
        self.assertEqual(self.file.parent.stat().st_mode & 0o777, 0o700)
        self.assertEqual(preferences.get("maze"), expected)
        self.assertEqual(preferences.get(Path("/elsewhere/maze")), expected)
        self.assertEqual(preferences.list(), (expected,))

    def test_a_preference_is_replaced(self):
        self.write(MAZE)
        preferences.set("/opt/maze", "0001:8f:1f.7", gpu_name="other", value=-2)
        self.assertEqual(
            preferences.list(), (Preference("maze", "/opt/maze", -2, "other", 1, 0x8F, 0x1F, 7),)
        )

    def test_the_same_preference_again_is_no_failure(self):
        self.write(MAZE)
        preferences.set("/usr/games/maze", "0000:03:00.0", gpu_name="Gpu1:QV M-20")
        self.assertEqual(self.file.read_text(), MAZE)

    def test_a_long_name_of_a_gpu_is_cut(self):
        gpu = AdapterInfo(
            0, "Gpu0:Nimba-GT-K3t", "0000:01:00.0", 0x4E4D, 0x1013, 0, True, Luid(0, 0x10000)
        )
        self.assertEqual(preferences.set("/opt/maze", gpu).gpu_name, "Gpu0:Nimba-GT-K")

    def test_of_a_hundred_entries_none_is_lost(self):
        for at in (0, 49, 99):
            with self.subTest(at=at), tempfile.TemporaryDirectory() as home:
                os.environ["HOME"] = home
                self.file = Path(home) / FILE
                self.write("".join(section(number) for number in range(100)))
                others = [section(number) for number in range(100) if number != at]

                preferences.set("/usr/games/maze", "0000:03:00.0", gpu_name="Gpu1:QV M-20")
                self.assertEqual(len(preferences.list()), 101)
                self.assertTrue(preferences.remove(f"app{at}"))
                self.assertEqual(self.file.read_text(), HEAD + "".join(others) + MAZE)
                preferences.set(f"/opt/app{99 - at}", "0000:01:00.0",
                                gpu_name="Gpu0:Nimba-K1", value=7)  # fmt: skip
                changed = section(99 - at).replace(f"GpuPrefer = {99 - at}", "GpuPrefer = 7")
                before = HEAD + "".join(others) + MAZE
                self.assertEqual(
                    self.file.read_text(), before.replace(section(99 - at), changed)
                )
                self.assertTrue(preferences.remove("/anywhere/maze"))
                self.assertFalse(preferences.remove("/anywhere/maze"))

    def test_changes_at_the_same_time_wait_for_each_other(self):
        program = (
            "import nimba_mgmt, sys; nimba_mgmt.use_library(sys.argv[2]);"
            "nimba_mgmt.preferences.set(sys.argv[1], '0000:01:00.0')"
        )
        callers = [
            subprocess.Popen(python("-c", program, f"/opt/app{number}", LIBRARY))
            for number in range(6)
        ]
        self.assertEqual([caller.wait(60) for caller in callers], [0] * 6)
        self.assertEqual(
            sorted(entry.application for entry in preferences.list()),
            ["app0", "app1", "app2", "app3", "app4", "app5"],
        )

    def test_a_value_is_a_whole_number(self):
        with self.assertRaises(TypeError):
            preferences.set("/opt/ab", "0000:01:00.0", value=1.0)
        self.assertFalse(self.file.exists())

    def test_what_the_file_cannot_hold_is_refused(self):
        self.write(MAZE)
        for application, gpu, options in (
            ("/opt/", "0000:01:00.0", {}),
            ("/opt/a;b", "0000:01:00.0", {}),
            ("/opt/a]b", "0000:01:00.0", {}),
            ("/opt/a\nb", "0000:01:00.0", {}),
            ("/opt/a\0b", "0000:01:00.0", {}),
            (" /opt/ab", "0000:01:00.0", {}),
            ("/opt/" + "a" * 64, "0000:01:00.0", {}),
            ("/" + "a/" * 255 + "a", "0000:01:00.0", {}),
            ("/opt/ab", "0000:01:00", {}),
            ("/opt/ab", "10000:01:00.0", {}),
            ("/opt/ab", "0000:100:00.0", {}),
            ("/opt/ab", "0000:01:100.0", {}),
            ("/opt/ab", "0000:01:00.8", {}),
            ("/opt/ab", "0000:-1:00.0", {}),
            ("/opt/ab", "0000:01:00.0", {"gpu_name": "sixteen letters."}),
            ("/opt/ab", "0000:01:00.0", {"gpu_name": "a;"}),
            ("/opt/ab", "0000:01:00.0", {"value": 0x80000000}),
        ):
            with self.subTest(application=application, gpu=gpu, **options):
                with self.assertRaises(ValueError):
                    preferences.set(application, gpu, **options)
        self.assertEqual(self.file.read_text(), MAZE)

    def test_names_at_their_limits_survive(self):
        path = "/opt/" + "a" * 442 + "/" + "b" * 63
        entry = preferences.set(path, "ffff:ff:ff.7", gpu_name="fifteen letters")
        self.assertEqual(len(entry.path), 511)
        self.assertEqual(preferences.list(), (entry,))

    def test_a_name_that_is_no_text_survives(self):
        entry = preferences.set("/opt/caf\u00e9 \udcff", "0000:01:00.0")
        self.assertEqual(self.file.read_bytes().splitlines()[2], b"[caf\xc3\xa9 \xff]")
        self.assertEqual(preferences.list(), (entry,))

    def test_a_file_that_cannot_be_read_is_not_replaced(self):
        self.write(MAZE)
        self.file.unlink()
        self.file.mkdir()
        with self.assertRaises((OSError, CallFailed)):
            preferences.set("/opt/ab", "0000:01:00.0")
        self.assertTrue(self.file.is_dir())

    def test_a_change_that_cannot_be_written_is_an_exception_and_loses_nothing(self):
        self.write(HEAD + MAZE)
        program = """
import nimba_mgmt, resource, sys
resource.setrlimit(resource.RLIMIT_FSIZE, (200, 200))
try:
    nimba_mgmt.preferences.set("/opt/ab", "0000:01:00.0", library=sys.argv[1])
except nimba_mgmt.CallFailed as error:
    print(error)
"""
        ended = run(python("-c", program, LIBRARY))
        self.assertEqual(
            (ended.stdout, ended.stderr),
            (f"set_gpu_preference failed with status 0: {self.file} does not hold what it should"
             " now\n", ""),
        )  # fmt: skip
        self.assertEqual(self.file.read_text(), HEAD + MAZE)

    def test_without_a_home_there_are_no_preferences(self):
        os.environ["HOME"] = ""
        with self.assertRaises(CallFailed) as raised:
            preferences.list()
        self.assertEqual(raised.exception.reason, "HOME tells no directory")

    def test_an_open_adapter_does_not_matter(self):
        self.write(MAZE)
        program = (
            "import nimba_mgmt\n"
            "with nimba_mgmt.Adapter(0) as gpu:\n"
            "    nimba_mgmt.preferences.set('/opt/app7', '0000:01:00.0',"
            " gpu_name='Gpu0:Nimba-K1', value=7)\n"
        )
        ended = run(on("default", *python("-c", program)))
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertEqual(self.file.read_text(), HEAD + MAZE + section(7))

    def test_a_library_without_preferences_is_an_exception(self):
        with self.assertRaises(nimba_mgmt.FunctionMissing):
            preferences.list(library=STAND_IN)


if __name__ == "__main__":
    unittest.main()
