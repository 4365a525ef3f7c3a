# SPDX-License-Identifier: MIT
"""The machine as the cases use it: the reference driver, its devices, nimba-smi and other users."""

from __future__ import annotations

import json
import os
import re
import subprocess
import time
from collections.abc import Callable
from pathlib import Path
from typing import Any
from unittest import mock

import nimba_mgmt
from nimba_mgmt import Adapter, _process, _worker

FAMILY = os.environ["FAMILY"]
NIMBA = FAMILY == "nimba"
STAGE = Path("/mnt")
DEBUGFS = Path("/sys/kernel/debug")
CONTROL = DEBUGFS / "nimba_reference/control"
DEVICES = Path("/sys/bus/pci/devices")
DRIVER = Path("/sys/bus/pci/drivers/nimba_reference")
AUTOPROBE = Path("/sys/bus/pci/drivers_autoprobe")
BUS_IDS = ("0000:00:04.0", "0000:00:05.0", "0000:00:06.0")
FIRST = BUS_IDS[0]
INFO = "jw_info" if NIMBA else "qv_info"
DIRECTORY = "jw" if NIMBA else "qv"
CONFIGURED = STAGE / "configured" / f"{FAMILY}.so"
NOBODY = 65534

# What anything takes at most, emulated and in company.
BOUND = 180.0


class ForkedProcess:
    """A worker as a copy of this process, where nimba_mgmt starts Python: that takes seconds when it
    is emulated."""

    def __init__(self, command: list[str], *, stdin: int, stderr: int, **_: Any) -> None:
        self.returncode: int | None = None
        self.pid = os.fork()
        if self.pid == 0:
            try:
                _serve(stdin, stderr)
            finally:
                os._exit(0)

    def wait(self) -> int:
        if self.returncode is None:
            _, status = os.waitpid(self.pid, 0)
            self.returncode = os.waitstatus_to_exitcode(status)
        return self.returncode


def _serve(channel: int, said: int) -> None:
    os.setsid()
    os.dup2(channel, 0)
    os.dup2(os.open(os.devnull, os.O_WRONLY), 1)
    os.dup2(said, 2)
    os.closerange(3, 1024)
    _worker.main()


def fork_workers() -> Any:
    """While it is entered, workers are copies of this process."""
    return mock.patch.object(_process.subprocess, "Popen", ForkedProcess)


def adapter(which: str, **options: Any) -> Adapter:
    """An open adapter with a patient worker."""
    with fork_workers():
        return Adapter(which, deadline=BOUND, **options)


def reopen(gpu: Adapter) -> None:
    with fork_workers():
        gpu.open()


def adapters(**options: Any) -> list[nimba_mgmt.AdapterInfo]:
    """The adapters that the library finds, in the order of the bus."""
    with fork_workers():
        found = nimba_mgmt.adapters(deadline=BOUND, **options)
    return sorted(found, key=lambda entry: entry.bus_id)


def load_driver(**parameters: object) -> None:
    """Loads the driver, anew if it is there, with all devices bound in the order of the bus."""
    unload_driver()
    # The kernel's own order is another once a device has left and come back.
    AUTOPROBE.write_text("0")
    settings = [f"{name}={value}" for name, value in {"family": FAMILY, **parameters}.items()]
    command = ["insmod", str(STAGE / "nimba_reference.ko"), *settings]
    subprocess.run(command, check=True, capture_output=True, timeout=BOUND)
    for bus_id in BUS_IDS:
        bind(bus_id)
    AUTOPROBE.write_text("1")


def unload_driver() -> None:
    if DRIVER.exists():
        subprocess.run(["rmmod", "nimba_reference"], check=True, capture_output=True, timeout=BOUND)


def control(number: int, command: str) -> None:
    """One command to the driver: what tests/kernel/driver/control.c takes."""
    descriptor = os.open(CONTROL, os.O_WRONLY)
    try:
        os.write(descriptor, f"{number} {command}".encode())
    finally:
        os.close(descriptor)


def told(number: int) -> dict[str, str]:
    """What the driver tells of an adapter: its bus id, card, and counts of writes."""
    for line in CONTROL.read_text().splitlines():
        fields = dict(word.split("=") for word in line.split())
        if fields["adapter"] == str(number):
            return fields
    raise LookupError(f"no adapter {number}")


def card_of(bus_id: str) -> int:
    """The number of the card, as sysfs shows it."""
    (name,) = (entry.name for entry in (DEVICES / bus_id / "drm").glob("card*"))
    return int(name.removeprefix("card"))


def unbind(bus_id: str) -> None:
    (DRIVER / "unbind").write_text(bus_id)


def bind(bus_id: str) -> None:
    (DRIVER / "bind").write_text(bus_id)


def remove_device(bus_id: str) -> None:
    (DEVICES / bus_id / "remove").write_text("1")


def rescan() -> None:
    Path("/sys/bus/pci/rescan").write_text("1")


def debug_directory(bus_id: str) -> Path:
    return DEBUGFS / "dri" / str(card_of(bus_id)) / DIRECTORY


def smi(*arguments: str, **options: Any) -> subprocess.CompletedProcess[str]:
    """Runs nimba-smi to its end."""
    return subprocess.run(
        [str(STAGE / "bin/nimba-smi"), "--timeout", str(BOUND), *arguments],
        capture_output=True,
        text=True,
        timeout=BOUND,
        **options,
    )


def smi_json(*arguments: str, status: int = 0, **options: Any) -> Any:
    """The document that nimba-smi prints, with that exit status."""
    ended = smi(*arguments, "--json", **options)
    if ended.returncode != status:
        raise AssertionError(f"{arguments}: status {ended.returncode}: {ended.stderr}")
    return json.loads(ended.stdout)


def as_nobody() -> dict[str, Any]:
    """Options of a process that belongs to an ordinary user."""
    return {
        "user": NOBODY,
        "group": NOBODY,
        "extra_groups": [],
        "env": {**os.environ, "HOME": "/nonexistent"},
    }


def wait_for(condition: Callable[[], Any]) -> Any:
    """What the condition gives as soon as that is true."""
    end = time.monotonic() + BOUND
    while not (value := condition()):
        if time.monotonic() > end:
            raise AssertionError("it did not come true in time")
        time.sleep(0.02)
    return value


def plain(text: str) -> str:
    """A terminal's output without its control sequences."""
    return re.sub(r"\x1b(\[[0-9;?]*[ -/]*[@-~]|[()].|[=>78])", " ", text)
