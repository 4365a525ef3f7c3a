# SPDX-License-Identifier: MIT
"""What the tests share. The build tells in the environment where its parts are:

NIMBA_BIN, NIMBA_LIBRARY, NIMBA_STAND_IN and NIMBA_VERSION.
"""

from __future__ import annotations

import gc
import json
import os
import select
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from typing import Any
from unittest import mock

from nimba_mgmt import Adapter

SOURCE = Path(__file__).resolve().parents[2]
sys.path.append(str(SOURCE / "tests" / "support"))

from simulated import BOUND, live_drivers_work, program

MACHINES = Path(__file__).resolve().parent / "machines"
STAND_IN = os.environ["NIMBA_STAND_IN"]
LIBRARY = os.environ["NIMBA_LIBRARY"]

# A call that the stand-in has.
TEMPERATURE = "gpuinfo_get_temparature_value_int"


def python(*arguments: str) -> list[str]:
    """A command that runs this Python."""
    return [sys.executable, *arguments]


def on(machine: str | Path, *command: str, live: bool = False) -> list[str]:
    """A command that runs another one on a machine: a name, or a file of MACHINES."""
    file = MACHINES / machine
    drivers = () if live_drivers_work() else ("--drivers", "plain")
    if live and drivers:
        raise unittest.SkipTest("needs live drivers: no FUSE file system can be mounted here")
    name = str(file) if file.exists() else str(machine)
    return [program("nimba-sim"), "run", *drivers, "--machine", name, "--", *command]


def run(command: list[str], **options: Any) -> subprocess.CompletedProcess[str]:
    """Runs a command to its end, which is waited for no longer than a minute."""
    environment = {**os.environ, "PYTHONDONTWRITEBYTECODE": "1", **options.pop("env", {})}
    return subprocess.run(
        command, capture_output=True, text=True, timeout=BOUND, env=environment, **options
    )


def told(code: str, machine: str | Path = "", *, live: bool = False, **env: str) -> Any:
    """The JSON value that a Python program prints, on a machine if one is given."""
    command = python("-c", f"import json, nimba_mgmt\n{code}")
    ended = run(on(machine, *command, live=live) if machine else command, env=env)
    if ended.returncode != 0 or ended.stderr:
        raise AssertionError(f"status {ended.returncode}\n{ended.stderr}")
    return json.loads(ended.stdout)


def ended_soon(pid: int) -> bool:
    """Whether a process has ended, or does so within 20 seconds. It need not be a child."""
    try:
        descriptor = os.pidfd_open(pid)
    except ProcessLookupError:
        return True
    try:
        poll = select.poll()
        poll.register(descriptor, select.POLLIN)
        return bool(poll.poll(20_000))
    finally:
        os.close(descriptor)


def descriptors() -> int:
    return len(os.listdir("/proc/self/fd"))


def children() -> str:
    return Path(f"/proc/self/task/{os.getpid()}/children").read_text()


class StandIn(unittest.TestCase):
    """Tests with the stand-in library, which must leave neither process nor descriptor behind."""

    def setUp(self):
        self.directory = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.enterContext(mock.patch.dict(os.environ))
        gc.collect()
        before = descriptors()
        self.addCleanup(lambda: self.assertEqual(descriptors(), before))
        self.addCleanup(lambda: self.assertEqual(children(), ""))
        self.addCleanup(gc.collect)

    def tell(self, fault: str) -> None:
        os.environ["STAND_IN"] = fault

    def adapter(self, **options) -> Adapter:
        gpu = Adapter(0, library=STAND_IN, **options)
        self.addCleanup(gpu.close)
        return gpu

    def log_calls(self) -> Path:
        log = self.directory / "log"
        os.environ["STAND_IN_LOG"] = str(log)
        return log


def needs_live_drivers() -> None:
    """In a test that runs on a machine: skips it where the drivers' nodes are plain files."""
    run_directory = os.path.dirname(os.environ["UMOCKDEV_DIR"])
    if f" {run_directory}/" not in Path("/proc/self/mountinfo").read_text():
        raise unittest.SkipTest("needs live drivers: no FUSE file system can be mounted here")


def sim(*arguments: str) -> str:
    """In a test that runs on a machine: runs nimba-sim and gives what it prints."""
    command = [program("nimba-sim"), *arguments]
    return subprocess.run(
        command, check=True, capture_output=True, text=True, timeout=BOUND
    ).stdout
