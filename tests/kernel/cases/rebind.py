# SPDX-License-Identifier: MIT
"""A driver that is unbound and bound again under a view that stays open."""

from __future__ import annotations

import os
import pty
import signal
import subprocess
import threading
import unittest

from machine import (
    BOUND,
    BUS_IDS,
    FIRST,
    STAGE,
    bind,
    card_of,
    load_driver,
    plain,
    unbind,
    wait_for,
)


class Terminal:
    """A program on a terminal of its own, and all that it has written."""

    def __init__(self, *command: str) -> None:
        master, slave = pty.openpty()
        self._master = master
        self._output = b""
        self.process = subprocess.Popen(
            command, stdin=slave, stdout=slave, stderr=slave, start_new_session=True
        )
        os.close(slave)
        self._reader = threading.Thread(target=self._read)
        self._reader.start()

    def _read(self) -> None:
        while True:
            try:
                piece = os.read(self._master, 65536)
            except OSError:  # the terminal's other end is closed
                return
            self._output += piece

    def shown(self) -> str:
        return plain(self._output.decode(errors="replace"))

    def mark(self) -> int:
        """A place in the output, for shown_since."""
        return len(self._output)

    def shown_since(self, mark: int) -> str:
        return plain(self._output[mark:].decode(errors="replace"))

    def type(self, keys: str) -> None:
        os.write(self._master, keys.encode())

    def close(self) -> int:
        try:
            status = self.process.wait(BOUND)
        finally:
            if self.process.poll() is None:
                os.killpg(self.process.pid, signal.SIGKILL)
                self.process.wait()
            self._reader.join()
            os.close(self._master)
        return status


def rmmod() -> subprocess.CompletedProcess[str]:
    return subprocess.run(
        ["rmmod", "nimba_reference"], capture_output=True, text=True, timeout=BOUND
    )


class Rebind(unittest.TestCase):
    def setUp(self):
        load_driver()

    def test_the_module_stays_while_a_drm_node_is_open(self):
        descriptor = os.open(f"/dev/dri/card{card_of(FIRST)}", os.O_RDWR)
        refused = rmmod()
        os.close(descriptor)
        self.assertEqual(refused.returncode, 1)
        self.assertIn("is in use", refused.stderr)
        self.assertEqual(rmmod().returncode, 0)

    def test_top_goes_on_while_the_driver_goes_and_comes_as_another_card(self):
        for other in BUS_IDS[1:]:
            unbind(other)
        command = (str(STAGE / "bin/nimba-smi"), "top", "--interval", "0.2", "--ascii")
        top = Terminal(*command, "--timeout", str(BOUND))
        try:
            wait_for(lambda: FIRST in top.shown())
            self.assertEqual(card_of(FIRST), 0)
            self.assertIn("is in use", rmmod().stderr)
            held = os.open("/dev/dri/card0", os.O_RDWR)  # its number stays taken
            self.addCleanup(os.close, held)
            mark = top.mark()
            unbind(FIRST)
            wait_for(lambda: "gone" in top.shown_since(mark))
            mark = top.mark()
            bind(FIRST)
            wait_for(lambda: "back" in top.shown_since(mark))  # in the place of "gone"
            self.assertEqual(card_of(FIRST), 1)
            top.type("q")
        except BaseException:
            print(top.shown()[-4000:])
            top.process.kill()
            raise
        finally:
            status = top.close()
        self.assertEqual(status, 0)

    def test_top_finds_an_adapter_again_that_came_back_in_another_slot(self):
        top = Terminal(
            str(STAGE / "bin/nimba-smi"), "top", "-i", FIRST, "--interval", "0.2", "--ascii"
        )
        try:
            wait_for(lambda: FIRST in top.shown())
            held = os.open("/dev/dri/card0", os.O_RDWR)
            self.addCleanup(os.close, held)
            mark = top.mark()
            unbind(FIRST)
            wait_for(lambda: "gone" in top.shown_since(mark))
            mark = top.mark()
            bind(FIRST)
            wait_for(lambda: "back" in top.shown_since(mark))
            top.type("q")
        except BaseException:
            top.process.kill()
            raise
        finally:
            status = top.close()
        self.assertEqual(status, 0)
