# SPDX-License-Identifier: MIT
"""Which library is used, and what adapters it finds."""

from __future__ import annotations

import os
import re

from ._process import Worker
from ._views import AdapterInfo, LibraryVersion, adapters_in

# How a library is named: its file, or a name for the dynamic loader. A path object is a file.
LibraryName = str | os.PathLike[str]

# Seconds that a call may take where nothing else is said.
DEADLINE = 10.0

_default_library: LibraryName | None = None


def use_library(file: LibraryName | None) -> None:
    """Sets the library that is loaded where no other is named.

    file: a file, or a name for the dynamic loader; a path object is a file. None, as in the
        beginning, is libnimba_mgmt_interface.so, as the dynamic loader finds it.
    """
    global _default_library
    _default_library = file


def open_worker(library: LibraryName | None, deadline: float, debug: bool) -> Worker:
    """A worker with that library, or the one that is used where none is named."""
    chosen = library or _default_library
    name = chosen if chosen is None or isinstance(chosen, str) else os.path.abspath(chosen)
    return Worker(name, deadline, debug)


def library_version(*, library: LibraryName | None = None) -> LibraryVersion:
    """Tells of the library: the version of its interface, and its file.

    Raises LibraryNotFound, VersionMismatch (another major version), WorkerDied, DeadlineExceeded.
    """
    worker = open_worker(library, DEADLINE, False)
    try:
        told = worker.interface.value
    finally:
        worker.close()
    match = re.search(r"\.so\.([0-9.]+)$", told["file"])
    version = told["version"]
    return LibraryVersion(
        (version >> 16, version & 0xFFFF), match[1] if match else None, told["file"]
    )


def adapters(
    *, library: LibraryName | None = None, deadline: float = DEADLINE
) -> list[AdapterInfo]:
    """Lists up to three adapters of the product and at most one GPU of another vendor.

    Nothing is changed on the machine. Source: libdrm, /sys/bus/pci/devices/<bus id>, the node
    "info" of the driver's debug directory.
    Raises LibraryNotFound, VersionMismatch, CallFailed (without libdrm), WorkerDied,
    DeadlineExceeded.
    """
    worker = open_worker(library, deadline, False)
    try:
        return adapters_in(worker.call("gfx_find_adapter").payload)
    finally:
        worker.close()
