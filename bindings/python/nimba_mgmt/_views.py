# SPDX-License-Identifier: MIT
"""What is made of several records of the library: adapters, segments, versions."""

from __future__ import annotations

import ctypes
from dataclasses import dataclass

from ._layout import decode, structure_of
from ._records import FindAdapter, FindAdapterExt1, Luid, SegmentInfo
from ._values import SegmentSource

_FOREIGN_SLOT = 2
_HEAPS = 4


@dataclass(frozen=True)
class AdapterInfo:
    """An adapter that discovery found, or the GPU of another vendor.

    slot: its number, 0 to 2; None for the GPU of another vendor, which cannot be opened.
    name: as the library calls it, such as "Gpu0:Nimba-K1"; None as for chip_id.
    bus_id: PCI address, such as "0000:01:00.0".
    vendor_id, chip_id: PCI vendor and device; chip_id is None for an adapter whose slot a GPU of
        another vendor has overwritten.
    card: N of /dev/dri/cardN; None: not told.
    va_driver: whether the driver says that it is a VA driver.
    luid: the locally unique identifier.
    """

    slot: int | None
    name: str | None
    bus_id: str
    vendor_id: int
    chip_id: int | None
    card: int | None
    va_driver: bool
    luid: Luid

    @property
    def foreign(self) -> bool:
        """Whether it is the GPU of another vendor."""
        return self.slot is None


@dataclass(frozen=True)
class Segment:
    """A memory segment: how much is used of it, and its size, which is None where not told."""

    index: int
    used: int
    total: int | None


@dataclass(frozen=True)
class Segments:
    """The memory segments.

    source: where they were read. NODE: all segments; to 4 those from 5 on are added, too. HEAPS:
        heaps 0 to 3 with their use by allocations, and as 4 the use by allocations of all
        segments from 4 on. ALLOCATIONS: their use alone.
    unit: the bytes that 1 stands for: 10**6 with NODE, whose own unit is 1000 bytes; else 2**20.
    segments: the segments, by index.
    """

    source: SegmentSource
    unit: int
    segments: tuple[Segment, ...]


@dataclass(frozen=True)
class LibraryVersion:
    """The library that was loaded.

    interface: the version of its interface, major and minor number.
    version: the version in the name of its file, or None.
    file: its file, without links.
    """

    interface: tuple[int, int]
    version: str | None
    file: str


def adapters_in(image: bytes) -> list[AdapterInfo]:
    """The adapters of a find_adapter record, behind which its extended one stands."""
    size = ctypes.sizeof(structure_of(FindAdapter))
    found = decode(FindAdapter, image[:size])
    identity = decode(FindAdapterExt1, image[size:])
    foreign_found = identity.other_vendor_chip_num == 1
    header = found.header
    names = (header.chip_name_0, header.chip_name_1, header.chip_name_2)

    def card(slot: int) -> int | None:
        return header.drm_card_idx[slot] if header.drm_card_idx[slot] >= 0 else None

    adapters = []
    for slot in range(min(max(header.chip_num, 0), len(names))):
        overwritten = foreign_found and slot == _FOREIGN_SLOT
        handles = found.gpu_infos[slot]
        adapters.append(
            AdapterInfo(
                slot=slot,
                name=None if overwritten else names[slot],
                bus_id=handles.bus_id,
                vendor_id=handles.vendor_id,
                chip_id=None if overwritten else header.chip_id[slot],
                card=None if overwritten else card(slot),
                va_driver=header.is_va_driver[slot] == 1,
                luid=_luid(handles.bus_id) if overwritten else identity.luid[slot],
            )
        )
    if foreign_found:
        adapters.append(
            AdapterInfo(
                slot=None,
                name=names[_FOREIGN_SLOT],
                bus_id=str(identity.location[_FOREIGN_SLOT]),
                vendor_id=identity.vendor_id[_FOREIGN_SLOT],
                chip_id=header.chip_id[_FOREIGN_SLOT],
                card=card(_FOREIGN_SLOT),
                va_driver=False,
                luid=identity.luid[_FOREIGN_SLOT],
            )
        )
    return adapters


def segments_in(image: bytes, source: str, count: int) -> Segments:
    """The first `count` segments of a SegmentInfo record that was read from `source`."""
    info = decode(SegmentInfo, image)
    kind = SegmentSource(source)
    sized = {SegmentSource.NODE: count, SegmentSource.HEAPS: _HEAPS, SegmentSource.ALLOCATIONS: 0}
    return Segments(
        kind,
        10**6 if kind is SegmentSource.NODE else 1 << 20,
        tuple(
            Segment(i, info.used_size[i], info.total_size[i] if i < sized[kind] else None)
            for i in range(count)
        ),
    )


def _luid(bus_id: str) -> Luid:
    domain, bus, rest = bus_id.split(":")
    device, function = rest.split(".")
    high = int(bus, 16) << 16 | int(device, 16) << 8 | int(function, 16)
    return Luid(int(domain, 16), high)
