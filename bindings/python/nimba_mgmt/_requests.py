# SPDX-License-Identifier: MIT
"""What a worker can be asked for, by the name of the library's function."""

from __future__ import annotations

import ctypes
from collections.abc import Callable
from ctypes import byref, c_int32, c_uint32
from typing import Any

from ._errors import CallFailed
from ._layout import encode_into, structure_of
from ._memory_records import (
    AllocationPage,
    DeviceContexts,
    DeviceSummary,
    LeakReport,
    PageTableEntry,
    Preference,
    VmAllocation,
)
from ._records import (
    Bandwidth,
    Clocks,
    DvfsState,
    EngineBusy,
    FrameRate,
    SegmentInfo,
    Summary,
    SummaryExt2,
)
from ._session import UNREAD, Answer, Session, cleared, marked, twice

_UNWRITTEN = 0xFFFFFFFF


def _find_adapter(session: Session) -> Answer:
    session.discover()
    return Answer(payload=bytes(session.found) + bytes(session.identity))


def _global_init(session: Session, slot: int) -> Answer:
    return Answer(session.enter(slot))


def _global_exit(session: Session) -> Answer:
    session.leave()
    return Answer()


def _summary(session: Session) -> Answer:
    adapter = byref(session.found)
    return Answer(
        payload=twice(Summary, lambda out: session.call("get_adapter_summary", out, adapter))
    )


def _summary_ext2(session: Session) -> Answer:
    summary = cleared(SummaryExt2)
    session.call("get_adapter_summary_ext2", byref(summary), byref(session.found))
    return Answer(payload=bytes(summary))


def _temperature(session: Session) -> Answer:
    count = c_uint32()
    value = session.call("gpuinfo_get_temparature_value_int", byref(count))
    return Answer(value if count.value == 1 else None)


def _hwmon(session: Session, node: int) -> Answer:
    count = c_uint32()
    value = session.call("gpuinfo_get_hwmonFD_value_int", node, byref(count))
    return Answer(value if count.value > 0 else None)


def _info(session: Session, node: int) -> Answer:
    return Answer(session.call("gpuinfo_get_jwinfoFD_value_int", node))


def _misc_ctl_flag(session: Session, set: int, clear: int) -> Answer:
    session.call("gpuinfo_set_misc_ctl_flag", set, clear)
    return Answer()


def _clocks(session: Session) -> Answer:
    clocks = cleared(Clocks)
    session.call("get_dvfs_info", byref(clocks))
    return Answer(payload=bytes(clocks))


def _dvfs(session: Session) -> Answer:
    def read(state: Any) -> None:
        session.call("get_data_from_dvfs_register", state, byref(c_uint32()))

    return Answer(payload=twice(DvfsState, read))


def _set_dvfs(session: Session, fields: dict[str, int]) -> Answer:
    # What differs from what is read here is written: untold fields are equal, being 0 in both.
    state = cleared(DvfsState)
    session.call("get_data_from_dvfs_register", byref(state), byref(c_uint32()))
    encode_into(state, DvfsState, fields)
    session.call("set_data_to_dvfs_register", byref(state))
    return _dvfs(session)


def _segments(session: Session) -> Answer:
    chosen = session.call("segment_init", byref(session.found)) > 0
    info = cleared(SegmentInfo)
    session.require("get_segment_info", byref(info))
    node = marked(SegmentInfo, 0xFF)  # what the node does not tell stays that
    in_node = chosen and session.call("gpuinfo_get_segment_info", byref(node)) > 0
    if not in_node:
        return Answer({"source": "heaps" if chosen else "allocations", "count": 5}, bytes(info))
    count = [*node.total_size, _UNWRITTEN].index(_UNWRITTEN)
    return Answer({"source": "node", "count": count}, bytes(info))


def _allocations(session: Session) -> Answer:
    page = cleared(AllocationPage)
    size = ctypes.sizeof(page.records) // len(page.records)
    images = []
    while True:
        session.require("get_allocation_raw_list", byref(page), byref(session.found))
        images.append(bytes(page.records)[: page.trasfer_cnt * size])
        if page.more_flag != 1:
            return Answer(payload=b"".join(images))
        page.page_index += 1


def _device_summary(session: Session) -> Answer:
    summary = cleared(DeviceSummary)
    session.require("get_device_allocation_summary_ext1", byref(summary))
    return Answer(payload=bytes(summary))


def _device_contexts(session: Session) -> Answer:
    contexts = cleared(DeviceContexts)
    session.require("get_device_pid_maps", byref(contexts))
    return Answer(payload=bytes(contexts))


def _leaks(session: Session) -> Answer:
    report = cleared(LeakReport)
    report.groups[0].sum_count = -1  # no report has it
    session.call("get_memleak_info", byref(report))
    if report.groups[0].sum_count == -1:
        raise CallFailed("get_memleak_info", 0, UNREAD)
    return Answer(payload=bytes(report))


def _page_tables(session: Session) -> Answer:
    count = c_uint32()
    session.call("get_pagetable_data", None, byref(count))
    if session.library.number("Get_Local_Data_Status", c_int32) != 0:
        raise CallFailed("get_pagetable_data", 0, UNREAD)
    return _copied_out(session, "get_pagetable_data", PageTableEntry, count)


def _vm_allocations(session: Session, read: bool) -> Answer:
    count = c_uint32()
    if read:
        session.call("get_pagetable_data", None, byref(count))
    if session.library.number("Get_Local_Data_Status", c_int32) != 0:
        raise CallFailed("get_pagetable_data", 0, UNREAD)
    session.call("get_allocation_data", None, byref(count))
    return _copied_out(session, "get_allocation_data", VmAllocation, count)


def _copied_out(session: Session, call: str, record: type[Any], count: c_uint32) -> Answer:
    array = (structure_of(record) * count.value)()
    if count.value:
        session.call(call, array, None)
    return Answer(payload=bytes(array))


def _frame_rate(session: Session) -> Answer:
    if "fps_init" not in session.prepared:
        session.prepare("fps_init")
        return Answer(False)
    rates = marked(FrameRate)
    told = session.call("get_fps_info", byref(rates)) == 0
    return Answer(told, bytes(rates))


def _bandwidth(session: Session) -> Answer:
    session.prepare("bandwidth_init")
    bandwidth = marked(Bandwidth)
    session.call("get_bandwidth_info", byref(bandwidth))
    return Answer(payload=bytes(bandwidth))


def _engine_busy(session: Session) -> Answer:
    session.prepare("gfxbusy_init")
    busy = marked(EngineBusy)
    session.call("get_gpubusy_info", byref(busy))
    return Answer(payload=bytes(busy))


def _load_preferences(session: Session) -> int:
    """Loads the list, as every change needs, and returns the number of its records."""
    count = c_int32()
    session.call("get_gpu_preference", None, byref(count))
    if not session.library.number("UTIL_CONFIG_PATH", ctypes.c_char * 512):
        raise CallFailed("get_gpu_preference", 0, "HOME tells no directory")
    return count.value


def _preferences(session: Session) -> Answer:
    count = c_int32(_load_preferences(session))
    records = (structure_of(Preference) * max(1, count.value))()
    session.call("get_gpu_preference", records, byref(count))
    size = ctypes.sizeof(structure_of(Preference))
    return Answer(payload=bytes(records)[: count.value * size])


def _change_preference(call: str) -> Callable[..., Answer]:
    def change(session: Session, fields: dict[str, Any]) -> Answer:
        _load_preferences(session)
        node = cleared(Preference)
        encode_into(node, Preference, fields)
        session.call(call, byref(node))
        return Answer()

    return change


REQUESTS: dict[str, Callable[..., Answer]] = {
    "gfx_find_adapter": _find_adapter,
    "gfx_global_init": _global_init,
    "gfx_global_exit": _global_exit,
    "get_adapter_summary": _summary,
    "get_adapter_summary_ext2": _summary_ext2,
    "gpuinfo_get_temparature_value_int": _temperature,
    "gpuinfo_get_hwmonFD_value_int": _hwmon,
    "gpuinfo_get_jwinfoFD_value_int": _info,
    "gpuinfo_set_misc_ctl_flag": _misc_ctl_flag,
    "get_dvfs_info": _clocks,
    "get_data_from_dvfs_register": _dvfs,
    "set_data_to_dvfs_register": _set_dvfs,
    "get_segment_info": _segments,
    "get_allocation_raw_list": _allocations,
    "get_device_allocation_summary_ext1": _device_summary,
    "get_device_pid_maps": _device_contexts,
    "get_memleak_info": _leaks,
    "get_pagetable_data": _page_tables,
    "get_allocation_data": _vm_allocations,
    "get_fps_info": _frame_rate,
    "get_bandwidth_info": _bandwidth,
    "get_gpubusy_info": _engine_busy,
    "get_gpu_preference": _preferences,
    "set_gpu_preference": _change_preference("set_gpu_preference"),
    "remove_gpu_preference": _change_preference("remove_gpu_preference"),
}
