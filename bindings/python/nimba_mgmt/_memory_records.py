# SPDX-License-Identifier: MIT
"""The records of the library's allocations, page tables and preferences, each of them once."""

from __future__ import annotations

from ctypes import c_char, c_int32, c_int64, c_uint8, c_uint16, c_uint32
from dataclasses import dataclass
from typing import Annotated

from ._layout import At, c_record
from ._values import PageTableKind


@c_record("_GFX_ALLOCATION_INFO", 92)
@dataclass(frozen=True)
class Allocation:
    """An allocation of video memory, from <debug directory>/allocations/<entry>/info.

    A field whose key the driver does not show is 0.
    """

    handle: Annotated[int, At(0, c_int32, "the driver may give it out again")]
    device: Annotated[int, At(4, c_int32, "its owner: DeviceContext.handle")]
    width: Annotated[int, At(8, c_int32, "width", "pixels")]
    height: Annotated[int, At(12, c_int32, "height", "pixels")]
    pitch: Annotated[int, At(16, c_int32, "from row to row", "bytes")]
    bit_count: Annotated[int, At(20, c_int32, "of a pixel", "bits", "bit_cnt")]
    secured: Annotated[int, At(24, c_int32, "not 0: protected")]
    size: Annotated[int, At(28, c_uint32, "the low 32 bits", "bytes")]
    tile: Annotated[int, At(32, c_int32, "tiling mode")]
    cpu_visible: Annotated[int, At(36, c_int32, "not 0: the CPU sees it")]
    cache_type: Annotated[int, At(40, c_int32, "the driver's code")]
    pool_type: Annotated[int, At(44, c_int32, "the driver's code")]
    allocation_type: Annotated[int, At(48, c_int32, "the driver's code", c_name="at_type")]
    segment: Annotated[int, At(52, c_int32, "memory segment; negative: none", c_name="segmentid")]
    hardware_format: Annotated[int, At(56, c_int32, "pixel format", c_name="hw_format")]
    compress_format: Annotated[int, At(60, c_int32, "the driver's code")]
    table_slot: Annotated[int, At(64, c_int32, "of compression", c_name="bl_slot_index")]
    gpu_address: Annotated[int, At(68, c_uint32, "the low 32 bits", c_name="gpu_virt_addr")]
    imported: Annotated[int, At(72, c_int32, "not 0: from elsewhere")]
    offset: Annotated[int, At(76, c_uint32, "the low 32 bits", "bytes", "fb_offset")]
    shared: Annotated[int, At(80, c_int32, "not 0: shared", c_name="share")]
    hits: Annotated[
        int, At(84, c_int32, "in a leak report: snapshots in a row; else 1", c_name="hit_count")
    ]
    group_size: Annotated[
        int, At(88, c_int32, "in a leak report: allocations alike; else 1", c_name="sum_count")
    ]


@c_record("_GFX_ALLOCATION_RAW_LIST", 1856)
@dataclass(frozen=True)
class AllocationPage:
    """A block of the raw list."""

    page_index: Annotated[int, At(0, c_int32, "which block")]
    total_count: Annotated[int, At(4, c_int32, "records in all", c_name="total_cnt")]
    transfer_count: Annotated[int, At(8, c_int32, "records in it", c_name="trasfer_cnt")]
    more: Annotated[int, At(12, c_int32, "1: records remain", c_name="more_flag")]
    records: Annotated[tuple[Allocation, ...], At(16, Allocation, "records", count=20)]


@c_record("gfx_device_allocation", 24)
@dataclass(frozen=True)
class NarrowDeviceMemory:
    """The memory of one device, in 32 bits."""

    device: Annotated[int, At(0, c_int32, "DeviceContext.handle")]
    segment_size: Annotated[tuple[int, ...], At(4, c_uint32, "by segment", "bytes", count=5)]


@c_record("_GFX_DEVICE_ALLOCATION_SUMMARY", 1200)
@dataclass(frozen=True)
class NarrowDeviceSummary:
    """The memory of the devices, in 32 bits."""

    entries: Annotated[
        tuple[NarrowDeviceMemory, ...], At(0, NarrowDeviceMemory, "devices", count=50)
    ]


@c_record("gfx_device_allocation_ext1", 48)
@dataclass(frozen=True)
class DeviceMemory:
    """The memory of one device."""

    device: Annotated[int, At(0, c_int32, "DeviceContext.handle")]
    segment_size: Annotated[
        tuple[int, ...], At(8, c_int64, "segments 0 to 3, and all from 4 on", "bytes", count=5)
    ]


@c_record("_GFX_DEVICE_ALLOCATION_SUMMARY_EXT1", 2400)
@dataclass(frozen=True)
class DeviceSummary:
    """The memory of the devices."""

    entries: Annotated[tuple[DeviceMemory, ...], At(0, DeviceMemory, "devices", count=50)]


@c_record("gfx_device_pid", 72)
@dataclass(frozen=True)
class DeviceContext:
    """A device that a process has open."""

    pid: Annotated[int, At(0, c_int32, "process id")]
    handle: Annotated[int, At(4, c_int32, "the device of its allocations")]
    name: Annotated[
        str,
        At(8, c_char, "of the process, its own bytes as in file names",
           c_name="process_name", count=64),
    ]  # fmt: skip


@c_record("_GFX_DEVICE_PID_MAP", 3600)
@dataclass(frozen=True)
class DeviceContexts:
    """The open device contexts."""

    entries: Annotated[tuple[DeviceContext, ...], At(0, DeviceContext, "contexts", count=50)]


@c_record("_GFX_MEMLEAK_INFO", 1380)
@dataclass(frozen=True)
class LeakReport:
    """The largest groups of like allocations, largest first."""

    groups: Annotated[tuple[Allocation, ...], At(0, Allocation, "one of each group", count=15)]


@c_record("_PAGETABLE_DATA", 48)
@dataclass(frozen=True)
class PageTableEntry:
    """An entry of a page table or of a sub-table."""

    pid: Annotated[int, At(0, c_int64, "process id")]
    address: Annotated[int, At(8, c_int64, "at most 0x7FFFFFFF", c_name="addr")]
    snoop: Annotated[int, At(16, c_uint16, "0 for a page-table entry", c_name="Snoop")]
    segment: Annotated[int, At(18, c_uint16, "memory segment; likewise", c_name="Segment")]
    large_page: Annotated[int, At(20, c_uint16, "likewise", c_name="LargePage")]
    level: Annotated[int, At(24, c_int32, "0, the root's, to 2")]
    index: Annotated[int, At(28, c_int32, "number of the entry")]
    parent_level: Annotated[int, At(32, c_int32, "of the owning page-table entry; 0: none")]
    parent_index: Annotated[int, At(36, c_int32, "likewise")]
    kind: Annotated[
        PageTableKind, At(40, c_int32, "page table or sub-table", convert=PageTableKind)
    ]


@c_record("_ALLOCATION_DATA", 56)
@dataclass(frozen=True)
class VmAllocation:
    """An allocation in the address space of a process."""

    pid: Annotated[int, At(0, c_int32, "process id", c_name="device_pid")]
    handle: Annotated[int, At(8, c_int64, "the allocation's", c_name="allocation_handle")]
    size: Annotated[int, At(16, c_int64, "size", "bytes")]
    gpu_address: Annotated[int, At(24, c_int64, "GPU virtual address", c_name="gpu_va")]


@c_record("_UTIL_GPU_PREFERENCE_NODE", 1116)
@dataclass(frozen=True)
class Preference:
    """Which GPU an application should use."""

    application: Annotated[str, At(0, c_char, "its file name: the key", "", "FileName", 64)]
    path: Annotated[str, At(64, c_char, "full path", "", "FullPath", 512)]
    value: Annotated[int, At(576, c_int32, "the preference value", c_name="GpuPrefer")]
    gpu_name: Annotated[str, At(580, c_char, "of the GPU", "", "PreferGpuName", 16)]
    domain: Annotated[int, At(596, c_uint16, "the GPU's PCI domain")]
    bus: Annotated[int, At(598, c_uint8, "PCI bus")]
    device: Annotated[int, At(599, c_uint8, "PCI device")]
    function: Annotated[int, At(600, c_uint8, "PCI function")]

    @property
    def bus_id(self) -> str:
        """The GPU's PCI address, as in AdapterInfo.bus_id."""
        return f"{self.domain:04x}:{self.bus:02x}:{self.device:02x}.{self.function}"
