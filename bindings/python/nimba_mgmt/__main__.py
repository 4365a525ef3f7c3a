# SPDX-License-Identifier: MIT
"""A short overview of the adapters: python3 -m nimba_mgmt [--json] [--library FILE].

The exit status is 0; 1 when something could not be read or printed, which standard error then
tells; 3 when there is no adapter of the product.
"""

from __future__ import annotations

import argparse
import dataclasses
import json
import os
import sys
from typing import Any

from ._adapter import Adapter
from ._discovery import adapters, library_version, use_library
from ._errors import NimbaError
from ._version import __version__
from ._views import AdapterInfo

_FAILED = 1
_NO_ADAPTER = 3


def _read(found: AdapterInfo) -> dict[str, Any]:
    """What the overview tells of an adapter of the product."""
    with Adapter(found, partial=True) as gpu:
        clocks = gpu.clocks()
        summary = gpu.summary_ext2()
        return {
            "driver_version": _text(summary.driver_version),
            "firmware_version": _text(summary.firmware_version),
            "temperature": gpu.temperature(),
            "memory_usage": summary.memory_usage,
            "clocks": dataclasses.asdict(clocks),
        }


def _text(value: object) -> str | None:
    return None if value is None else str(value)


def _shown(value: object) -> str:
    """A text for any terminal; what the driver does not tell is a dash."""
    text = "-" if value is None else str(value)
    return "".join(c if c.isprintable() else "?" for c in text)


def _lines(found: AdapterInfo, reading: dict[str, Any] | None) -> list[str]:
    name = _shown(found.name)
    if found.foreign:
        return [f"{found.bus_id}  {name} (of another vendor)"]
    lines = [f"{found.bus_id}  {name} in slot {found.slot}"]
    if reading is not None:
        clocks = ", ".join(f"{name} {value}" for name, value in reading["clocks"].items())
        driver = _shown(reading["driver_version"])
        lines += [
            f"  versions     driver {driver}, firmware {_shown(reading['firmware_version'])}",
            f"  temperature  {_shown(reading['temperature'])}",
            f"  memory used  {_shown(reading['memory_usage'])}",
            f"  clocks       {clocks}",
        ]
    return lines


def _print(text: str) -> bool:
    """Prints all of it, or gives False."""
    try:
        print(text, end="", flush=True)
    except OSError as error:
        # What is left of it is not tried again when Python ends.
        nowhere = os.open(os.devnull, os.O_WRONLY)
        os.dup2(nowhere, sys.stdout.fileno())
        os.close(nowhere)
        if not isinstance(error, BrokenPipeError):
            print(f"nimba_mgmt: standard output: {error.strerror}", file=sys.stderr)
        return False
    return True


def main() -> int:
    """Prints the overview and gives the exit status."""
    parser = argparse.ArgumentParser(prog="python3 -m nimba_mgmt", description="Show the adapters.")
    parser.add_argument("--json", action="store_true", help="print a JSON document")
    parser.add_argument("--library", metavar="FILE", help="the management library to load")
    parser.add_argument("--version", action="version", version=__version__)
    options = parser.parse_args()
    use_library(options.library)

    failed = False
    readings: list[tuple[AdapterInfo, dict[str, Any] | None]] = []
    try:
        version = library_version()
        found = adapters()
    except NimbaError as error:
        print(f"nimba_mgmt: {error}", file=sys.stderr)
        return _FAILED
    for adapter in found:
        reading = None
        try:
            reading = None if adapter.foreign else _read(adapter)
        except NimbaError as error:
            failed = True
            print(f"nimba_mgmt: {adapter.bus_id}: {error}", file=sys.stderr)
        readings.append((adapter, reading))

    if options.json:
        told = [{**dataclasses.asdict(adapter), "reading": told} for adapter, told in readings]
        document = {"library": dataclasses.asdict(version), "adapters": told}
        text = json.dumps(document, indent=2) + "\n"
    else:
        text = "".join(f"{line}\n" for reading in readings for line in _lines(*reading))
    printed = _print(text)
    if all(adapter.foreign for adapter in found):
        print("nimba_mgmt: no Nimba or QV adapter found", file=sys.stderr)
        return _NO_ADAPTER
    return _FAILED if failed or not printed else 0


if __name__ == "__main__":
    sys.exit(main())
