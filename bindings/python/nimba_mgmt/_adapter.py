# SPDX-License-Identifier: MIT
"""An adapter that is open."""

from __future__ import annotations

import ctypes
import operator
import time
from collections.abc import Iterator
from types import TracebackType
from typing import Any, NoReturn

from ._discovery import DEADLINE, LibraryName, open_worker
from ._errors import AdapterBusy, AdapterClosed, CallFailed, NoAdapter, WorkerDied
from ._layout import decode, decode_all, layout_of, structure_of
from ._memory_records import (
    Allocation,
    DeviceContext,
    DeviceContexts,
    DeviceMemory,
    DeviceSummary,
    LeakReport,
    PageTableEntry,
    VmAllocation,
)
from ._process import Worker, checked_deadline
from ._records import (
    Bandwidth,
    Clocks,
    DvfsState,
    EngineBusy,
    FrameRate,
    Summary,
    SummaryExt2,
)
from ._values import HwmonNode, InfoNode
from ._views import AdapterInfo, Segments, adapters_in, segments_in

_READ_ONLY = {"video_clock", "memory_clock"}
_RANGES = {
    ctypes.c_uint32: (0, 0xFFFFFFFF),
    ctypes.c_int32: (-0x80000000, 0x7FFFFFFF),
    ctypes.c_int16: (-0x8000, 0xFFFF),  # the driver shows gating as 16 bits without a sign
}


class Adapter:
    """An adapter, from its initialisation to close().

    which: a slot, 0 to 2, also as text; a bus id such as "0000:01:00.0" or "01:00.0"; or what
        adapters() lists.
    library: the file of the library, or a name for the dynamic loader; a path object is a file.
    deadline: seconds that a call may take, which can be set later, too. Drivers with tens of
        thousands of allocations or large page tables need more than the usual 10.
    partial: also open an adapter whose kernel-interface library is missing or useless; what needs
        that then raises CallFailed, and `complete` is False.
    debug: what the library writes on its standard output and error goes to this process's standard
        error. What it hands to its print callback is logged at level DEBUG of the logger
        "nimba_mgmt" in any case.

    The library runs in a process of its own, one for each Adapter. While an adapter is open the
    driver accounts for the use of its engines; closing it ends that, also for whoever else has
    opened the same adapter. Threads may share an Adapter: their calls wait for each other. A child
    process cannot use its parent's. The handler of a signal may close an Adapter at any time, which
    gives a call that it interrupts up to two seconds; what else it asks raises AdapterBusy then.

    Raises NoAdapter, CallFailed (unless partial), LibraryNotFound, VersionMismatch. Every call may
    raise WorkerDied or DeadlineExceeded, after which the adapter is closed and open() opens it
    again; AdapterClosed; and FunctionMissing with an older library. What the driver lacks otherwise
    reads as told at each call.
    """

    def __init__(
        self,
        which: int | str | AdapterInfo,
        *,
        library: LibraryName | None = None,
        deadline: float = DEADLINE,
        partial: bool = False,
        debug: bool = False,
    ) -> None:
        self.deadline = deadline
        self._which = which.bus_id if isinstance(which, AdapterInfo) else which
        self._library = library
        self._partial = partial
        self._debug = debug
        self._worker: Worker | None = None
        self.open()

    def open(self) -> None:
        """Opens the adapter, again if it was closed or its worker has ended. Raises as Adapter."""
        self.close()
        worker = open_worker(self._library, self.deadline, self._debug)
        try:
            found = worker.call("gfx_find_adapter", self.deadline).payload
            self._identity = _choose(adapters_in(found), self._which)
            slot = self._identity.slot
            status = worker.call("gfx_global_init", self.deadline, slot=slot).value
            if status < 0 and not self._partial:
                raise CallFailed("gfx_global_init", status, "no useful kernel-interface library")
            self.complete = status >= 0
        except BaseException:
            worker.close()
            raise
        self._worker = worker

    def close(self) -> None:
        """Ends the use of the adapter; does nothing when it is closed."""
        worker, self._worker = self._worker, None
        if worker is None or not worker.alive:
            return
        try:
            worker.call("gfx_global_exit", self.deadline)
        except (WorkerDied, AdapterBusy, AdapterClosed):
            pass  # the worker is gone, or leaves the adapter when it ends
        finally:
            worker.close()

    @property
    def deadline(self) -> float:
        """The seconds that a call may take; more than 0. Others raise ValueError when it is set."""
        return self._deadline

    @deadline.setter
    def deadline(self, seconds: float) -> None:
        self._deadline = checked_deadline(seconds)

    @property
    def closed(self) -> bool:
        """Whether open() is needed before the next call."""
        return self._worker is None or not self._worker.alive

    @property
    def identity(self) -> AdapterInfo:
        """What discovery told of the adapter when it was opened."""
        return self._identity

    def __enter__(self) -> Adapter:
        return self

    def __exit__(
        self,
        kind: type[BaseException] | None,
        error: BaseException | None,
        traceback: TracebackType | None,
    ) -> None:
        self.close()

    def __repr__(self) -> str:
        state = "closed" if self.closed else "open"
        return f"<nimba_mgmt.Adapter {self.identity.bus_id} {state}>"

    def __reduce__(self) -> NoReturn:
        raise TypeError("an Adapter can be neither copied nor pickled; its identity can")

    def summary(self) -> Summary:
        """Clocks, memory, display outputs and PCIe link.

        What cannot change is read once. Clocks and sizes are in the driver's units.
        Source: the info directory, /proc/gpuinfo_<card>, the PCI device, dmidecode.
        """
        payload = self._call("get_adapter_summary").payload
        size = len(payload) // 2
        return decode(Summary, payload[:size], payload[size:])

    def summary_ext2(self) -> SummaryExt2:
        """Versions, fill rates, resolutions, use and temperature, in the driver's units.

        Source: /proc/gpuinfo_<card>; without it all is 0, empty or None.
        """
        return decode(SummaryExt2, self._call("get_adapter_summary_ext2").payload)

    def temperature(self) -> int | None:
        """The temperature in the driver's unit, degrees Celsius in a text such as "45 *C".

        None: not told. Source: "temp1_input" of the hwmon directory.
        """
        return _number(self._call("gpuinfo_get_temparature_value_int").value)

    def hwmon(self, node: HwmonNode) -> int | None:
        """The number that begins a node of the hwmon directory, in the driver's unit.

        None: there is no such node, or it is empty; 0 also without a number.
        """
        return _number(self._call("gpuinfo_get_hwmonFD_value_int", node=HwmonNode(node)).value)

    def info(self, node: InfoNode) -> int:
        """The decimal number that begins a node of the info directory, in the driver's unit.

        0 without the node or a number.
        """
        return int(self._call("gpuinfo_get_jwinfoFD_value_int", node=InfoNode(node)).value)

    def clocks(self) -> Clocks:
        """The clocks of engine, video and memory, in the driver's unit, as a rule MHz; 0: not told.

        Source: "eclk", "vclk" and "mclk" of the info directory.
        """
        return decode(Clocks, self._call("get_dvfs_info").payload)

    def dvfs(self) -> DvfsState:
        """The settings of power, clocks and voltage; None where the driver does not tell.

        Source: "power_mode", "pwm_wait_count", "dvfs_mode", "dvfs_control_params",
        "dvfs_clk_voltage", "vclk", "mclk" and "dvfs_level" of the info directory.
        """
        return _dvfs_in(self._call("get_data_from_dvfs_register").payload)

    def set_dvfs(self, **fields: int) -> DvfsState:
        """Sets fields of DvfsState, such as level=DvfsLevel.PERFORMANCE, and reads all again.

        Only what differs from the driver's is written. The driver does not tell of a value that it
        rejects: look at what is returned.
        Raises ValueError for a number that does not fit, and TypeError for what is no whole number
        and for a field that is none or that can only be read; then nothing is written.
        """
        numbers = {name: _dvfs_number(name, value) for name, value in fields.items()}
        return _dvfs_in(self._call("set_data_to_dvfs_register", fields=numbers).payload)

    def segments(self) -> Segments:
        """Use and size of the memory segments.

        Source: "segment_info" of the info directory, the driver's heaps, or the allocations.
        Raises CallFailed when none can be read.
        """
        reply = self._call("get_segment_info")
        return segments_in(reply.payload, reply.value["source"], reply.value["count"])

    def allocations(self) -> list[Allocation]:
        """The allocations of video memory, all of one reading, sorted by device.

        Source: <debug directory>/allocations/<entry>/info.
        Raises CallFailed when it cannot be read.
        """
        return decode_all(Allocation, self._call("get_allocation_raw_list").payload)

    def device_summary(self) -> list[DeviceMemory]:
        """The memory of up to 49 devices, by segment, in bytes.

        Source: as for allocations(). Raises CallFailed when it cannot be read.
        """
        payload = self._call("get_device_allocation_summary_ext1").payload
        entries = decode(DeviceSummary, payload).entries
        return [entry for entry in entries if entry.device or any(entry.segment_size)]

    def processes(self) -> list[DeviceContext]:
        """Up to 50 devices that processes have open, with the names of the processes.

        Source: <debug directory>/devices, /proc/<pid>/cmdline. Raises CallFailed when it cannot be
        read.
        """
        payload = self._call("get_device_pid_maps").payload
        entries = decode(DeviceContexts, payload).entries
        return [entry for entry in entries if entry.pid or entry.handle or entry.name]

    def leaks(
        self, *, interval: float = 1.0, count: int | None = None
    ) -> Iterator[tuple[Allocation, ...]]:
        """Takes `count` snapshots of the allocations, or for ever, `interval` seconds apart.

        Gives after each the 15 largest groups of allocations that are alike in width, height, size,
        format and type, largest first: one allocation of each, with the group's size in group_size
        and the snapshots in a row that it was in, in hits.
        Source: as for allocations().
        Raises CallFailed when it cannot be read; another call begins anew.
        """
        taken = 0
        while count is None or taken < count:
            if taken:
                time.sleep(interval)
            payload = self._call("get_memleak_info").payload
            yield tuple(group for group in decode(LeakReport, payload).groups if group.group_size)
            taken += 1

    def page_tables(self) -> list[PageTableEntry]:
        """The page tables of all processes that have a device open: entries device by device.

        They are those of DRM minor 0, whatever adapter this is. Source:
        /sys/kernel/debug/dri/0/qv/devices/<entry>/info and vm_info, ps.
        Raises CallFailed when it cannot be read.
        """
        return decode_all(PageTableEntry, self._call("get_pagetable_data").payload)

    def vm_allocations(self, *, again: bool = True) -> list[VmAllocation]:
        """The allocations in the address spaces of processes, of DRM minor 0.

        again: False: those that the last page_tables() read with the page tables.
        Source: /sys/kernel/debug/dri/0/qv/allocations/<handle>/vm_info.
        Raises CallFailed when it cannot be read.
        """
        return decode_all(VmAllocation, self._call("get_allocation_data", read=again).payload)

    def frame_rate(self) -> FrameRate | None:
        """Pictures per second since the call before.

        None: at the first call, and when no picture was shown since the call before. Source:
        "fps_count" and "rxa_blt_scn_cnt" of the info directory, or the kernel-interface library.
        """
        reply = self._call("get_fps_info")
        return decode(FrameRate, reply.payload) if reply.value else None

    def bandwidth(self) -> Bandwidth:
        """The kernel-interface library's hardware information, in its own units.

        Raises CallFailed when the library does not tell.
        """
        return decode(Bandwidth, self._call("get_bandwidth_info").payload)

    def engine_busy(self) -> EngineBusy:
        """How busy the engines are, in the kernel-interface library's own words, as a rule percent.

        Raises CallFailed when the library does not tell.
        """
        return decode(EngineBusy, self._call("get_gpubusy_info").payload)

    def misc_ctl_flag(self, *, set: int = 0, clear: int = 0) -> int:
        """Sets and clears bits of the driver's control flag and gives what it is then.

        A bit in both is set; without any the flag is only read. Source: "misc_ctl_flag" of the info
        directory; 0 without it.
        Raises ValueError for what does not fit in 32 bits.
        """
        for bits in (set, clear):
            if not 0 <= bits <= 0xFFFFFFFF:
                raise ValueError(f"{bits} does not fit in 32 bits")
        if set or clear:
            self._call("gpuinfo_set_misc_ctl_flag", set=_signed(set), clear=_signed(clear))
        return self.info(InfoNode.MISC_CTL_FLAG) & 0xFFFFFFFF

    def _call(self, call: str, **arguments: Any) -> Any:
        if self._worker is None:
            raise AdapterClosed(call)
        return self._worker.call(call, self.deadline, **arguments)


def _choose(found: list[AdapterInfo], which: int | str) -> AdapterInfo:
    wanted = str(which).lower()
    for adapter in found:
        bus_id = adapter.bus_id
        if wanted in (str(adapter.slot), bus_id, bus_id.partition(":")[2]):
            if adapter.foreign:
                raise NoAdapter(str(which), "that GPU is another vendor's")
            return adapter
    none_at_all = "no adapter was found at all (nimba-smi doctor tells why)"
    raise NoAdapter(str(which), "none is there" if found else none_at_all)


def _dvfs_number(name: str, value: int) -> int:
    place = layout_of(DvfsState).places.get(name)
    if place is None or name in _READ_ONLY:
        raise TypeError(f"{name} is no setting of DvfsState")
    try:
        number = operator.index(value)
    except TypeError:
        raise TypeError(f"{name} is a whole number, not {value!r}") from None
    least, greatest = _RANGES[place.kind]
    if not least <= number <= greatest:
        raise ValueError(f"{name} is from {least} to {greatest}, not {number}")
    return number


def _dvfs_in(payload: bytes) -> DvfsState:
    size = ctypes.sizeof(structure_of(DvfsState))
    return decode(DvfsState, payload[:size], payload[size:])


def _number(value: Any) -> int | None:
    return None if value is None else int(value)


def _signed(bits: int) -> int:
    return ctypes.c_int32(bits).value
