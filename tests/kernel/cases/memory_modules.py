# SPDX-License-Identifier: MIT
"""The machine's memory, as dmidecode reads the SMBIOS tables of a virtual machine."""

from __future__ import annotations

import ctypes
import subprocess
import unittest

from machine import BOUND, STAGE


class MemoryModules(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.library = ctypes.CDLL(str(STAGE / "lib/libnimba_mgmt_interface.so"))

    def test_dmidecode_finds_the_machines_device(self):
        listed = subprocess.run(
            ["dmidecode", "-t", "memory"], capture_output=True, text=True, check=True, timeout=BOUND
        ).stdout
        self.assertEqual(listed.count("Memory Device\n"), 1)
        self.assertIn("Total Width: Unknown", listed)
        self.assertIn("Type: RAM", listed)
        self.assertIn("Configured Memory Speed: 3200 MT/s", listed)

    def test_an_unknown_width_is_0(self):
        self.assertEqual(self.library.runShellCommand_getBitWidth(), 0)

    def test_an_unknown_type_is_4(self):
        self.assertEqual(self.library.runShellCommand_getMemoryTYpe(), 4)

    def test_a_command_is_run_by_the_shell_and_cut_to_the_buffer(self):
        buffer = ctypes.create_string_buffer(5)
        length = self.library.runShellCommand(b"echo a long line", buffer, 5)
        self.assertEqual((length, buffer.raw), (4, b"a lo\0"))
