# SPDX-License-Identifier: MIT
"""What a worker has: the library, what discovery found, and the state of its counters."""

from __future__ import annotations

import ctypes
from collections.abc import Callable
from ctypes import byref
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from ._errors import CallFailed
from ._layout import MARKS, structure_of
from ._library import Library
from ._records import FindAdapter, FindAdapterExt1

# Why a call failed that reads the nodes of the driver.
UNREAD = "the driver could not be read"

_FOREIGN_SLOT = 2


@dataclass(frozen=True)
class Answer:
    """What a request gives: a plain value, and the bytes of records."""

    value: Any = None
    payload: bytes = b""


class Session:
    """The library and what it was asked for so far."""

    def __init__(self, library: Library) -> None:
        self.library = library
        # Both live as long as the library: it keeps pointers into the first.
        self.found: Any = structure_of(FindAdapter)()
        self.identity: Any = structure_of(FindAdapterExt1)()
        self.prepared: set[str] = set()  # the *_init functions that have succeeded
        self.entered = False

    def call(self, name: str, *arguments: Any) -> int:
        """Calls a function of the library and gives what it returns."""
        return int(self.library.function(name)(*arguments))

    def require(self, name: str, *arguments: Any) -> None:
        """Calls a function whose negative status is a failure to read the driver."""
        status = self.call(name, *arguments)
        if status < 0:
            raise CallFailed(name, status, UNREAD)

    def prepare(self, name: str) -> None:
        """Calls an *_init function unless it has succeeded before."""
        if name not in self.prepared:
            status = self.call(name)
            if status < 0:
                raise CallFailed(name, status, "the kernel-interface library does not tell")
            self.prepared.add(name)

    def discover(self) -> None:
        """Finds the adapters. What is not told is then -1, or 0 where that tells as much."""
        header = self.found.header
        header.vendor_id_filter = 0xFFFF
        for slot in range(len(self.found.gpu_infos)):
            header.drm_card_idx[slot] = -1
            self.found.gpu_infos[slot].jw_info_dir_fd = -1
            self.found.gpu_infos[slot].hwmon_dir_fd = -1
        self.call("gfx_find_adapter", byref(self.found))
        if not self.library.number("gpuinfo_control_enable", ctypes.c_uint8):
            if self.call("gpuinfo_nimba_init") == 0:
                raise CallFailed("gfx_find_adapter", 0, "libdrm cannot be loaded")
        self.call("gfx_find_adapter_ext1", byref(self.identity))

    def enter(self, slot: int) -> int:
        """Makes the slot's adapter current and returns what gfx_global_init does."""
        self.found.chip_id_idx = slot
        if slot == _FOREIGN_SLOT and self.identity.other_vendor_chip_num == 1:
            self._tell_third_adapter(slot)
        self.prepared.clear()
        self.entered = True
        return self.call("gfx_global_init", byref(self.found))

    def leave(self) -> None:
        """Ends what enter has begun."""
        if self.entered:
            self.entered = False
            self.call("gfx_global_exit", self.found.chip_id_idx)

    def _tell_third_adapter(self, slot: int) -> None:
        """A GPU of another vendor has overwritten chip and card of the third adapter."""
        directory = Path("/sys/bus/pci/devices", self.found.gpu_infos[slot].busid.decode())
        try:
            chip = int((directory / "device").read_text(), 16)
            card = min(int(node.name[4:]) for node in (directory / "drm").glob("card[0-9]*")
                       if node.name[4:].isdigit())  # fmt: skip
        except (OSError, ValueError):
            return
        self.found.header.chip_id[slot] = chip
        self.found.header.drm_card_idx[slot] = card


def cleared(record: type[Any]) -> Any:
    """A structure that is all zero."""
    return structure_of(record)()


def marked(record: type[Any], mark: int = MARKS[0]) -> Any:
    """A structure whose every byte is the mark."""
    structure = structure_of(record)
    return structure.from_buffer_copy(bytes([mark]) * ctypes.sizeof(structure))


def twice(record: type[Any], read: Callable[[Any], object]) -> bytes:
    """The bytes of two structures with different marks, each after `read` has filled it."""
    images = []
    for mark in MARKS:
        structure = marked(record, mark)
        read(byref(structure))
        images.append(bytes(structure))
    return b"".join(images)
